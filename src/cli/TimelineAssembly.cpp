#include "cli/TimelineAssembly.h"

#include <algorithm>
#include <cstdio>

#include "core/gpu/FLKTransition.h"
#include "core/media/FLKAsset.h"
#include "core/model/FLKFile.h"
#include "core/platform/FLKPaths.h"
#include "core/scene/FLKAudioTrack.h"
#include "core/scene/FLKScene.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoTrack.h"
#include "core/timeline/FLKVideoClip.h"

namespace fs = std::filesystem;

namespace {
FLKError requestError(const std::string& message) { return flk::fileSystemErrorWithMessage(message); }

std::string seconds(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s", value);
    return text;
}

std::shared_ptr<FLKTimelineVideoTrack> videoTrackOf(FLKTimeline& timeline, const std::shared_ptr<FLKScene>& scene) {
    for (const auto& track : timeline.tracks()) {
        if (auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) return video;
    }
    timeline.mapScene(scene);
    for (const auto& track : timeline.tracks()) {
        if (auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track)) return video;
    }
    return timeline.createVideoTrack();
}
}  // namespace

bool TimelineAssembly::validate(const Request& request, FLKError* error) {
    std::vector<double> durations;
    for (const auto& video : request.videos) {
        if (!flk::exists(video)) {
            flk::setError(error, requestError("The recording " + video.string() + " does not exist."));
            return false;
        }
        FLKAsset asset(video.string());
        if (!asset.isReadable() || !asset.hasVideo() || !(asset.duration() > 0)) {
            std::string reason = asset.isReadable() ? "it holds no video" : asset.failureReason();
            flk::setError(error, requestError("The recording " + video.string() + " cannot be used: " + reason + "."));
            return false;
        }
        durations.push_back(asset.duration());
    }
    if (request.transitions.size() + 1 > std::max<size_t>(request.videos.size(), 1)) {
        flk::setError(error, requestError("A transition joins two recordings: give one --video more than --transition."));
        return false;
    }
    const auto known = FLKTransition::transitionFunctionNames();
    for (size_t i = 0; i < request.transitions.size(); ++i) {
        const auto& name = request.transitions[i];
        if (name.empty()) continue;
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            flk::setError(error, requestError("Unknown transition \"" + name + "\" (crossZoom, crosshatch or fade)."));
            return false;
        }
        if (!(request.transitionDuration > 0) ||
            request.transitionDuration >= std::min(durations[i], durations[i + 1])) {
            flk::setError(error, requestError("The transition of " + seconds(request.transitionDuration) +
                                              " must be shorter than both recordings it joins (" +
                                              seconds(durations[i]) + " and " + seconds(durations[i + 1]) + ")."));
            return false;
        }
    }
    if (request.audio) {
        FLKAsset asset(request.audio->string());
        if (!asset.isReadable() || !asset.hasAudio()) {
            flk::setError(error, requestError("The soundtrack " + request.audio->string() + " holds no readable audio."));
            return false;
        }
    }
    return true;
}

std::vector<flk::cli::Input> TimelineAssembly::inputs(const Request& request) {
    std::vector<flk::cli::Input> inputs;
    for (const auto& video : request.videos) inputs.push_back({"--video", video});
    if (request.audio) inputs.push_back({"--audio", *request.audio});
    return inputs;
}

bool TimelineAssembly::apply(FLKFile& file, const Request& request, FLKError* error) {
    if (!validate(request, error)) return false;
    auto document = file.document();
    auto scene = document ? document->currentScene() : nullptr;
    auto timeline = document ? document->currentTimeline() : nullptr;
    if (!scene || !timeline) {
        flk::setError(error, requestError("The document has no scene or timeline to add recordings to."));
        return false;
    }
    auto track = videoTrackOf(*timeline, scene);
    if (request.replaceClips && !request.videos.empty()) track->setClips({});

    // By identifier: adding a transition replaces the clips after it with moved copies.
    std::vector<std::string> added;
    for (const auto& video : request.videos) {
        auto copy = file.media()->addFile(video, error);
        if (!copy) return false;
        auto clip = track->createClipWithVideoURL(*copy);
        if (!clip) {
            flk::setError(error, requestError("The recording " + video.string() + " could not be made into a clip."));
            return false;
        }
        track->addClip(clip);
        added.push_back(clip->identifier());
    }
    for (size_t i = 0; i < request.transitions.size(); ++i) {
        if (request.transitions[i].empty()) continue;
        auto from = std::dynamic_pointer_cast<FLKVideoClip>(track->clipWithIdentifier(added[i]));
        auto to = std::dynamic_pointer_cast<FLKVideoClip>(track->clipWithIdentifier(added[i + 1]));
        track->addTransition(FLKTransition::transitionWithFunctionName(request.transitions[i]), from, to,
                             request.transitionDuration);
    }
    timeline->mapScene(scene);

    if (request.audio) {
        auto container = scene->childWithClass<FLKVideoContainer>();
        if (!container) {
            flk::setError(error, requestError("The scene has no screen to attach a soundtrack to."));
            return false;
        }
        auto copy = file.media()->addFile(*request.audio, error);
        if (!copy) return false;
        container->setAudio(FLKAudioTrack::audioTrackWithAudioURL(*copy));
    }
    return true;
}
