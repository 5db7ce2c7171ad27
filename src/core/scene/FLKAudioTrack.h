#pragma once

#include <filesystem>
#include <memory>
#include <optional>

#include "core/scene/FLKAudioTrackPlayer.h"
#include "core/scene/FLKObject.h"

// A scene's sound: an audio file attached to the scene as a node. Unlike
// pictures and videos, the file is stored by its absolute location; one that
// lay in a document's media folder is found again in the media of the
// document being read.
class FLKAudioTrack : public FLKObject {
public:
    FLKAudioTrack() = default;
    explicit FLKAudioTrack(std::filesystem::path audioURL) : audioURL_(std::move(audioURL)) {}
    static std::shared_ptr<FLKAudioTrack> audioTrackWithAudioURL(const std::filesystem::path& audioURL);

    static std::shared_ptr<FLKAudioTrack> newWithDictionary(const FLKJSON& dictionary);
    FLKJSON serialized() const override;
    std::string className() const override { return "FLKAudioTrack"; }

    const std::optional<std::filesystem::path>& audioURL() const { return audioURL_; }
    // The audio file, so that saving keeps its copy in the document's media.
    std::vector<std::filesystem::path> resourceURLs() const override;

    // Without a player these do nothing and the getters answer 0.
    void play();
    void pause();
    float volume();
    void setVolume(float volume);
    double currentTime();
    void setCurrentTime(double seconds);
    // Opened on first use; null when the file cannot be played.
    FLKAudioTrackPlayer* player();

    Ptr copy() const override;
    bool isEqual(const FLKObject& other) const override;

protected:
    Ptr newInstance() const override { return std::make_shared<FLKAudioTrack>(); }
    void initWithDictionary(const FLKJSON& dictionary) override;

private:
    std::optional<std::filesystem::path> audioURL_;  // main thread only
    std::unique_ptr<FLKAudioTrackPlayer> player_;    // main thread only
    bool playerOpened_ = false;                      // main thread only
};
