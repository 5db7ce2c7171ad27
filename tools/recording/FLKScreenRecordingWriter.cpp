#include "FLKScreenRecordingWriter.h"

#include <cmath>
#include <system_error>

#include "FLKMockAppArtwork.h"
#include "FLKScreenRecordingComposer.h"
#include "core/media/FLKVideoEncoder.h"
#include "core/platform/FLKAtomicFile.h"

namespace {
FLKError writeError(const std::filesystem::path& url, const std::string& reason) {
    return FLKError::make("FLKScreenRecordingWriter", 1, "The recording \"" + url.string() + "\" could not be written.",
                          reason);
}

bool encode(const std::filesystem::path& temporary, const FLKScreenRecordingWriter::Options& options, FLKError* error) {
    FLKMockAppLayout layout(options.width, options.height, options.seed);
    FLKRecordingScript script(layout, options.duration);
    FLKMockAppArtwork artwork(layout, script.openedCard());
    FLKScreenRecordingComposer composer(layout, artwork);

    FLKVideoEncoder::Options encoding;
    encoding.width = options.width;
    encoding.height = options.height;
    encoding.fps = options.fps;
    // Flat interface colours compress well even with the quicker presets.
    encoding.preset = "faster";
    encoding.crf = 20;
    encoding.threaded = true;
    FLKVideoEncoder encoder(temporary.string(), encoding);
    if (!encoder.start(error)) return false;
    const int frames = static_cast<int>(std::lround(options.duration * options.fps));
    FLKPixelBuffer frame(options.width, options.height);
    for (int n = 0; n < frames; ++n) {
        composer.compose(script.stateAt(static_cast<double>(n) / options.fps), frame);
        if (!encoder.append(frame, error)) return false;
    }
    return encoder.finish(error);
}
}  // namespace

bool FLKScreenRecordingWriter::write(const std::filesystem::path& url, const Options& options, FLKError* error) {
    if (options.width < 64 || options.height < 64 || options.width % 2 || options.height % 2) {
        flk::setError(error, writeError(url, "The size must be even and at least 64 x 64."));
        return false;
    }
    if (!(options.duration >= 1.0 / options.fps) || options.duration > 600) {
        flk::setError(error, writeError(url, "The duration must lie between one frame and 600 seconds."));
        return false;
    }
    const std::filesystem::path temporary = flk::siblingTemporaryURL(url);
    FLKError encoding;
    if (!encode(temporary, options, &encoding)) {
        // The encoder names the temporary file; the user knows the target.
        flk::setError(error, writeError(url, encoding.failureReason.empty() ? encoding.localizedDescription
                                                                            : encoding.failureReason));
        return false;
    }
    std::error_code code;
    std::filesystem::rename(temporary, url, code);
    if (code) {
        std::filesystem::remove(temporary, code);
        flk::setError(error, writeError(url, code.message()));
        return false;
    }
    return true;
}
