#include "cli/FrameCommand.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <thread>

#include "cli/CommandSupport.h"
#include "cli/DocumentSource.h"
#include "cli/SceneFile.h"
#include "cli/TimelineAssembly.h"
#include "core/model/FLKFile.h"
#include "core/platform/FLKPaths.h"
#include "core/media/FLKAsset.h"
#include "core/media/FLKImageIO.h"
#include "core/render/FLKOffScreenRenderer.h"
#include "core/scene/FLKTimelineVideoSprite.h"
#include "core/scene/FLKVideoContainer.h"
#include "core/timeline/FLKTimeline.h"
#include "core/timeline/FLKTimelineVideoBufferManager.h"

namespace {
// Keeps the one frame the renderer hands over.
class SingleFrameOutput : public FLKRenderOutput {
public:
    void didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& buffer) override {
        std::lock_guard lock(mutex_);
        if (!frame_) frame_ = buffer;
    }
    std::optional<FLKPixelBuffer> frame() {
        std::lock_guard lock(mutex_);
        return frame_;
    }

private:
    std::mutex mutex_;
    std::optional<FLKPixelBuffer> frame_;  // guarded by mutex_
};

// Premultiplied BGRA rows to the straight RGBA a PNG holds.
FLKImage imageFromPixelBuffer(const FLKPixelBuffer& buffer) {
    FLKImage image(buffer.width, buffer.height);
    for (int y = 0; y < buffer.height; ++y) {
        const uint8_t* row = buffer.bgra.data() + size_t(y) * buffer.stride;
        for (int x = 0; x < buffer.width; ++x) {
            const uint8_t* p = row + size_t(x) * 4;
            uint8_t* out = image.pixel(x, y);
            int alpha = p[3];
            auto straight = [alpha](int c) { return alpha == 0 ? 0 : std::min(255, (c * 255 + alpha / 2) / alpha); };
            out[0] = uint8_t(straight(p[2]));
            out[1] = uint8_t(straight(p[1]));
            out[2] = uint8_t(straight(p[0]));
            out[3] = uint8_t(alpha);
        }
    }
    return image;
}

std::string seconds(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f s", value);
    return text;
}

// Why the recording cannot be shown at `time`, or nothing.
std::optional<std::string> problemWithVideo(const std::filesystem::path& url, double time) {
    std::error_code code;
    if (!std::filesystem::is_regular_file(url, code)) return "the video " + url.string() + " does not exist.";
    FLKAsset asset(url.string());
    if (!asset.isReadable()) return "the video " + url.string() + " cannot be read: " + asset.failureReason();
    if (!asset.hasVideo() || !(asset.duration() > 0)) return "the file " + url.string() + " holds no video.";
    if (!std::isfinite(time) || time < 0) return "--time must be a number of seconds from 0.";
    if (time > asset.duration()) {
        return "--time " + seconds(time) + " is past the end of " + url.string() + ", which lasts " +
               seconds(asset.duration()) + ".";
    }
    return std::nullopt;
}

// Waits until the segment reader holding `time` has got that far; false when
// no frame was decoded there (or decoding never ends).
bool waitForDecodedFrame(const FLKTimelineVideoTrack& track, double time) {
    auto clip = track.clipAtTime(time);
    auto manager = track.bufferManagers().video;
    if (!clip || !manager) return false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    while (!track.hasTextureAtTime(time)) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    auto reader = std::dynamic_pointer_cast<FLKVideoBufferSampleReader>(manager->bufferForClip(clip, time));
    return reader && reader->sampleTextureForClip(clip, time);
}

// Maps the timeline onto the scene's screen at `time` and waits until that
// frame is decoded. The timeline must outlive the rendering: the screen's
// video holds its track weakly.
bool showTimelineAt(const std::shared_ptr<FLKTimeline>& timeline, double time, const std::shared_ptr<FLKScene>& scene,
                    std::string* problem) {
    auto container = scene->childWithClass<FLKVideoContainer>();
    if (!container) {
        *problem = "the scene has no video container to show a recording in.";
        return false;
    }
    // A screen showing a file of its own is given the timeline's video instead.
    if (!std::dynamic_pointer_cast<FLKTimelineVideoSprite>(container->video())) container->setVideo(nullptr);
    timeline->mapScene(scene);
    timeline->setCurrentTime(time);
    for (const auto& track : timeline->tracks()) {
        auto video = std::dynamic_pointer_cast<FLKTimelineVideoTrack>(track);
        if (video && video->clipAtTime(time) && !waitForDecodedFrame(*video, time)) {
            *problem = "no frame could be decoded at " + seconds(time) + ".";
            return false;
        }
    }
    return true;
}

// A timeline of its own holding just the recording.
std::shared_ptr<FLKTimeline> timelineWithVideo(const std::filesystem::path& url) {
    auto timeline = FLKTimeline::timelineWithTimer({});
    auto track = timeline->createVideoTrack();
    track->addClip(track->createClipWithVideoURL(url));
    return timeline;
}

bool isSceneFile(const std::filesystem::path& url) { return flk::hasExtension(url, "json"); }

}  // namespace

void FrameCommand::add(CLI::App& app, int& exitCode) {
    auto command = std::make_shared<FrameCommand>();
    CLI::App* sub = app.add_subcommand("frame", "Render one frame of a scene, document or template to a PNG");
    sub->add_option("scene", command->sceneURL_, "Scene JSON file, document, template folder or template name")
        ->required();
    sub->add_option("--out,-o", command->outputURL_, "PNG file to write")->required();
    sub->add_option("--size", command->size_, "Output size WxH (default: the frame's size)");
    sub->add_option("--frame", command->frame_, "Part of the scene X,Y,W,H (default: the main camera's frame)");
    sub->add_option("--video", command->videoURL_, "Recording shown on the screen (replaces a document's clips)");
    sub->add_option("--time", command->time_, "Moment of the timeline in seconds (default 0)");
    sub->callback([command, &exitCode] { exitCode = command->run(); });
}

FrameCommand::Source FrameCommand::loadSource(FLKError* error) const {
    Source source;
    if (isSceneFile(sceneURL_)) {
        source.scene = SceneFile::load(sceneURL_, error);
        if (source.scene && !videoURL_.empty()) source.timeline = timelineWithVideo(videoURL_);
        return source;
    }
    auto file = DocumentSource::open(sceneURL_.string(), error);
    if (!file) return source;
    TimelineAssembly::Request request;
    if (!videoURL_.empty()) request.videos = {videoURL_};
    request.replaceClips = true;
    if (!TimelineAssembly::apply(*file, request, error)) return source;
    source.scene = file->document()->currentScene();
    source.timeline = file->document()->currentTimeline();
    return source;
}

int FrameCommand::run() const {
    using flk::cli::fail;
    if (!std::isfinite(time_) || time_ < 0) return fail("--time must be a number of seconds from 0.");
    if (!videoURL_.empty()) {
        if (auto problem = problemWithVideo(videoURL_, time_)) return fail(*problem);
    }
    std::vector<flk::cli::Input> inputs{{"the scene", sceneURL_}};
    if (!videoURL_.empty()) inputs.push_back({"--video", videoURL_});
    if (auto problem = flk::cli::outputReplacingInput(outputURL_, inputs)) return fail(*problem);
    FLKError error;
    const Source source = loadSource(&error);
    if (!source.scene) return fail(error.fullMessage());
    const double duration = source.timeline ? source.timeline->duration() : 0;
    if (time_ > 0 && time_ > duration) {
        return fail("--time " + seconds(time_) + " is past the end of " + sceneURL_.string() + "'s timeline, which lasts " +
                    seconds(duration) + ".");
    }
    if (!source.scene->mainCamera()) return fail(sceneURL_.string() + ": the scene has no camera.");

    FLKRect renderFrame = source.scene->mainCamera()->frame();
    if (!frame_.empty()) {
        auto parsed = flk::cli::parseFrame(frame_);
        if (!parsed) return fail("--frame \"" + frame_ + "\" is not X,Y,W,H with a positive width and height.");
        renderFrame = *parsed;
    }
    if (!(renderFrame.size.width > 0) || !(renderFrame.size.height > 0)) {
        return fail("the scene's camera frame in " + sceneURL_.string() + " is empty; give --frame X,Y,W,H.");
    }
    FLKSize outputSize{std::round(renderFrame.size.width), std::round(renderFrame.size.height)};
    if (!size_.empty()) {
        auto parsed = flk::cli::parseSize(size_);
        if (!parsed) return fail("--size \"" + size_ + "\" is not WxH with whole numbers from 1 to 16384.");
        outputSize = *parsed;
    }

    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(*source.scene, renderFrame, 30, 1, outputSize);
    if (!renderer) return fail("OpenGL 4.5 not supported: no frame can be rendered.");
    if (duration > 0) {
        std::string problem;
        if (!showTimelineAt(source.timeline, time_, renderer->renderedScene(), &problem)) return fail(problem);
    }
    auto output = std::make_shared<SingleFrameOutput>();
    renderer->setRenderOutput(output);
    renderer->renderAllFrames();
    renderer->waitUntilFinished();
    if (auto failure = renderer->failure()) return fail(failure->fullMessage());
    auto frame = output->frame();
    if (!frame) return fail("rendering " + sceneURL_.string() + " produced no frame.");

    if (!flk::writePNG(imageFromPixelBuffer(*frame), outputURL_, &error)) return fail(error.fullMessage());
    return 0;
}
