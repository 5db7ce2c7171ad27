#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "core/model/FLKSceneModifierClipFactory.h"
#include "core/platform/FLKError.h"

class FLKTimeline;

// Turns a movie file dropped on the scene into a clip: the file is copied
// into the current document's media and the copy is handed to the clip
// consumer, which puts it on the timeline. Other files are ignored.
//
// Threads: main thread only.
class FLKTimelineClipFactory : public FLKSceneModifierClipFactory {
public:
    // Loads a clip of the video file at the given location (the editor's
    // timeline panel, or a timeline's video track).
    using ClipConsumer = std::function<void(const std::filesystem::path& url)>;

    explicit FLKTimelineClipFactory(ClipConsumer consumer) : consumer_(std::move(consumer)) {}
    // Appends each clip to the timeline's first video track (made when there is none).
    static std::shared_ptr<FLKTimelineClipFactory> clipFactoryWithTimeline(std::weak_ptr<FLKTimeline> timeline);

    static bool isMovieFile(const std::filesystem::path& url);

    void makeClipForResourceURL(const std::filesystem::path& url) override;
    // The location of the media copy handed to the consumer; nullopt for a
    // file that is not a movie (no error) or one that could not be copied
    // (with the error).
    std::optional<std::filesystem::path> makeClip(const std::filesystem::path& url, FLKError* error = nullptr);

private:
    const ClipConsumer consumer_;
};
