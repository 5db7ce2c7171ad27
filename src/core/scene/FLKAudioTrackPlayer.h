#pragma once

#include <filesystem>
#include <functional>
#include <memory>

// Plays one audio file: what an audio track drives. The media layer's audio
// player implements it.
class FLKAudioTrackPlayer {
public:
    using Factory = std::function<std::unique_ptr<FLKAudioTrackPlayer>(const std::filesystem::path& url)>;

    virtual ~FLKAudioTrackPlayer() = default;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual bool isPlaying() const = 0;
    virtual float volume() const = 0;
    virtual void setVolume(float volume) = 0;
    virtual double currentTime() const = 0;
    virtual void setCurrentTime(double seconds) = 0;

    // How audio tracks open their files. The application installs the audio
    // player at start-up; without one (or when the file cannot be opened) a
    // track has no player.
    static void setFactory(Factory factory);
    static std::unique_ptr<FLKAudioTrackPlayer> playerForURL(const std::filesystem::path& url);
};
