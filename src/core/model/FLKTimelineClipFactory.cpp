#include "core/model/FLKTimelineClipFactory.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "core/model/FLKFile.h"
#include "core/model/FLKMedia.h"
#include "core/platform/FLKLog.h"
#include "core/platform/FLKPaths.h"
#include "core/timeline/FLKTimeline.h"

namespace {
constexpr const char* kDomain = "FLKTimelineClipFactoryErrorDomain";

std::shared_ptr<FLKTimelineVideoTrack> firstVideoTrack(FLKTimeline& timeline) {
    for (const auto& track : timeline.tracks()) {
        if (auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) return video;
    }
    return timeline.createVideoTrack();
}
}  // namespace

std::shared_ptr<FLKTimelineClipFactory> FLKTimelineClipFactory::clipFactoryWithTimeline(
    std::weak_ptr<FLKTimeline> timeline) {
    return std::make_shared<FLKTimelineClipFactory>([timeline](const std::filesystem::path& url) {
        auto strong = timeline.lock();
        if (!strong) return;
        auto track = firstVideoTrack(*strong);
        track->addClip(track->createClipWithVideoURL(url));
    });
}

bool FLKTimelineClipFactory::isMovieFile(const std::filesystem::path& url) {
    static constexpr std::array<std::string_view, 6> kMovieExtensions = {"mp4", "m4v", "mov", "mkv", "webm", "avi"};
    return std::any_of(kMovieExtensions.begin(), kMovieExtensions.end(),
                       [&](std::string_view extension) { return flk::hasExtension(url, std::string(extension)); });
}

void FLKTimelineClipFactory::makeClipForResourceURL(const std::filesystem::path& url) {
    FLKError error;
    if (!makeClip(url, &error) && !error.localizedDescription.empty()) {
        flk::log("No clip made of \"%s\": %s", url.c_str(), error.fullMessage().c_str());
    }
}

std::optional<std::filesystem::path> FLKTimelineClipFactory::makeClip(const std::filesystem::path& url,
                                                                      FLKError* error) {
    if (!isMovieFile(url)) return std::nullopt;
    auto file = FLKFile::currentFile();
    if (!file || !file->media()) {
        flk::setError(error, FLKError::make(kDomain, 1, "\"" + url.filename().string() + "\" was not added.",
                                            "No document is open to hold the video."));
        return std::nullopt;
    }
    auto copy = file->media()->addFile(url, error);
    if (!copy) return std::nullopt;
    if (consumer_) consumer_(*copy);
    return copy;
}
