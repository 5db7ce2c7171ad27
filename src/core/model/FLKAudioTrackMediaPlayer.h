#pragma once

#include <filesystem>
#include <memory>

#include "core/media/FLKAudioPlayer.h"
#include "core/scene/FLKAudioTrackPlayer.h"

// Plays an audio track's file through the media layer's audio player.
class FLKAudioTrackMediaPlayer : public FLKAudioTrackPlayer {
public:
    explicit FLKAudioTrackMediaPlayer(std::unique_ptr<FLKAudioPlayer> player) : player_(std::move(player)) {}
    // Null (and a log line naming the file and the reason) when the file cannot be played.
    static std::unique_ptr<FLKAudioTrackMediaPlayer> playerForURL(const std::filesystem::path& url);
    // Makes audio tracks open their files with this player; done once at start-up.
    static void install();

    void play() override { player_->play(); }
    void pause() override { player_->pause(); }
    bool isPlaying() const override { return player_->isPlaying(); }
    float volume() const override { return player_->volume(); }
    void setVolume(float volume) override { player_->setVolume(volume); }
    double currentTime() const override { return player_->currentTime(); }
    void setCurrentTime(double seconds) override { player_->setCurrentTime(seconds); }

    FLKAudioPlayer& audioPlayer() const { return *player_; }

private:
    const std::unique_ptr<FLKAudioPlayer> player_;
};
