#include "FLKTutorialWriter.h"

#include <mutex>
#include <string>
#include <system_error>

#include "FLKTutorialAnimation.h"
#include "core/media/FLKVideoEncoder.h"
#include "core/platform/FLKAtomicFile.h"
#include "core/render/FLKOffScreenRenderer.h"

namespace {
FLKError tutorialError(const std::filesystem::path& url, const std::string& reason) {
    return FLKError::make("FLKTutorialWriter", 1, "The tutorial video \"" + url.string() + "\" could not be written.",
                          reason);
}

// Encodes the frames as they come, on the render thread, and completes the
// file when the run ends there too.
class EncodingOutput : public FLKRenderOutput {
public:
    EncodingOutput(FLKVideoEncoder& encoder, unsigned frames) : encoder_(encoder), expectedFrames_(frames) {}

    void didRenderToBuffer(FLKRenderer&, const FLKPixelBuffer& buffer) override {
        std::lock_guard lock(mutex_);
        if (error_.localizedDescription.empty()) encoder_.append(buffer, &error_);
    }
    void didFinishRenderingOffScreen(FLKRenderer&) override {
        std::lock_guard lock(mutex_);
        if (error_.localizedDescription.empty() && encoder_.framesAppended() < expectedFrames_) {
            error_.localizedDescription = "Only " + std::to_string(encoder_.framesAppended()) + " of " +
                                          std::to_string(expectedFrames_) + " frames were drawn.";
        }
        if (error_.localizedDescription.empty()) {
            finished_ = encoder_.finish(&error_);
        } else {
            encoder_.cancel();
        }
    }
    bool finished(FLKError* error) {
        std::lock_guard lock(mutex_);
        if (!finished_) flk::setError(error, error_);
        return finished_;
    }

private:
    std::mutex mutex_;
    FLKVideoEncoder& encoder_;  // used under mutex_, on the render thread
    FLKError error_;            // guarded by mutex_
    const unsigned expectedFrames_;
    bool finished_ = false;  // guarded by mutex_
};

bool render(const std::filesystem::path& url, const std::filesystem::path& temporary, FLKError* error) {
    constexpr unsigned kFps = 30;
    auto animation = std::make_shared<FLKTutorialAnimation>();
    const double side = FLKTutorialAnimation::kSide;
    const auto frames =
        static_cast<unsigned>(FLKFrameByFrameClock::numFramesForDuration(FLKTutorialAnimation::kDuration, kFps));
    auto renderer = FLKOffScreenRenderer::offScreenRendererWithScene(*animation->buildScene(), FLKRect(0, 0, side, side),
                                                                     kFps, frames, FLKSize{side, side});
    if (!renderer) {
        flk::setError(error, tutorialError(url, "No OpenGL 4.5 context could be made for drawing it."));
        return false;
    }
    if (!animation->attach(*renderer->renderedScene())) {
        flk::setError(error, tutorialError(url, "The rendered scene lacks some of its sprites."));
        return false;
    }
    FLKVideoEncoder::Options encoding;
    encoding.width = encoding.height = FLKTutorialAnimation::kSide;
    encoding.fps = kFps;
    encoding.preset = "veryfast";
    encoding.crf = 20;
    encoding.threaded = true;
    FLKVideoEncoder encoder(temporary.string(), encoding);
    if (!encoder.start(error)) return false;
    auto output = std::make_shared<EncodingOutput>(encoder, frames);
    renderer->setTimeSource(animation);
    renderer->setRenderOutput(output);
    renderer->renderAllFrames();
    renderer->waitUntilFinished();
    return output->finished(error);
}
}  // namespace

bool FLKTutorialWriter::write(const std::filesystem::path& url, FLKError* error) {
    const std::filesystem::path temporary = flk::siblingTemporaryURL(url);
    std::error_code code;
    if (url.has_parent_path()) std::filesystem::create_directories(url.parent_path(), code);
    FLKError rendering;
    if (!render(url, temporary, &rendering)) {
        std::filesystem::remove(temporary, code);
        flk::setError(error, rendering.domain == "FLKTutorialWriter"
                                 ? rendering
                                 : tutorialError(url, rendering.failureReason.empty() ? rendering.localizedDescription
                                                                                      : rendering.failureReason));
        return false;
    }
    std::filesystem::rename(temporary, url, code);
    if (code) {
        std::filesystem::remove(temporary, code);
        flk::setError(error, tutorialError(url, code.message()));
        return false;
    }
    return true;
}
