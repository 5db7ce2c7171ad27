#include "core/exporter/FLKGIFWriter.h"

#include <gif_lib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {
// giflib wants colour tables of 2, 4, …, 256 entries.
ColorMapObject* makeColorMap(const std::vector<FLKGIFColor>& colors) {
    int size = 2;
    while (size < static_cast<int>(colors.size()) && size < 256) size *= 2;
    ColorMapObject* map = GifMakeMapObject(size, nullptr);
    if (!map) return nullptr;
    for (int i = 0; i < size; ++i) {
        FLKGIFColor c = i < static_cast<int>(colors.size()) ? colors[i] : FLKGIFColor{};
        map->Colors[i] = GifColorType{c.r, c.g, c.b};
    }
    return map;
}
}  // namespace

FLKGIFWriter::FLKGIFWriter(int fd, std::filesystem::path displayURL) : fd_(fd), displayURL_(std::move(displayURL)) {}

FLKGIFWriter::~FLKGIFWriter() {
    if (gif_) {
        int ignored = 0;
        EGifCloseFile(gif_, &ignored);
    }
}

int FLKGIFWriter::writeBytes(GifFileType* gif, const std::uint8_t* bytes, int length) {
    auto* self = static_cast<FLKGIFWriter*>(gif->UserData);
    int done = 0;
    while (done < length) {
        ssize_t n = ::write(self->fd_, bytes + done, static_cast<size_t>(length - done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            self->writeErrno_ = n < 0 ? errno : EIO;
            return done;
        }
        done += static_cast<int>(n);
    }
    self->bytesWritten_ += static_cast<std::uint64_t>(done);
    return done;
}

bool FLKGIFWriter::fail(int gifError, FLKError* error) {
    std::string reason = writeErrno_ ? std::strerror(writeErrno_) : (GifErrorString(gifError) ? GifErrorString(gifError) : "GIF encoding failed");
    flk::setError(error, FLKError::make("FLKGIFRecorderErrorDomain", writeErrno_ ? writeErrno_ : gifError,
                                        "Could not write " + displayURL_.string() + ".", reason));
    return false;
}

bool FLKGIFWriter::begin(int width, int height, const std::vector<FLKGIFColor>& globalColors, std::uint16_t loopCount,
                         FLKError* error) {
    int gifError = 0;
    gif_ = EGifOpen(this, &FLKGIFWriter::writeBytes, &gifError);
    if (!gif_) return fail(gifError, error);
    // The loop and delay extensions exist only in GIF89a.
    EGifSetGifVersion(gif_, true);
    ColorMapObject* map = globalColors.empty() ? nullptr : makeColorMap(globalColors);
    int status = EGifPutScreenDesc(gif_, width, height, 8, 0, map);
    GifFreeMapObject(map);
    if (status == GIF_ERROR) return fail(gif_->Error, error);

    const GifByteType application[] = {'N', 'E', 'T', 'S', 'C', 'A', 'P', 'E', '2', '.', '0'};
    const GifByteType loop[] = {1, static_cast<GifByteType>(loopCount & 0xFF), static_cast<GifByteType>(loopCount >> 8)};
    if (EGifPutExtensionLeader(gif_, APPLICATION_EXT_FUNC_CODE) == GIF_ERROR ||
        EGifPutExtensionBlock(gif_, sizeof application, application) == GIF_ERROR ||
        EGifPutExtensionBlock(gif_, sizeof loop, loop) == GIF_ERROR || EGifPutExtensionTrailer(gif_) == GIF_ERROR) {
        return fail(gif_->Error, error);
    }
    return true;
}

bool FLKGIFWriter::addFrame(const Frame& frame, FLKError* error) {
    GraphicsControlBlock control{};
    control.DisposalMode = DISPOSE_DO_NOT;
    control.UserInputFlag = false;
    control.DelayTime = frame.delayHundredths;
    control.TransparentColor = frame.transparentIndex < 0 ? NO_TRANSPARENT_COLOR : frame.transparentIndex;
    GifByteType extension[4];
    EGifGCBToExtension(&control, extension);
    if (EGifPutExtension(gif_, GRAPHICS_EXT_FUNC_CODE, sizeof extension, extension) == GIF_ERROR) {
        return fail(gif_->Error, error);
    }
    ColorMapObject* map = frame.localColors.empty() ? nullptr : makeColorMap(frame.localColors);
    int status = EGifPutImageDesc(gif_, frame.left, frame.top, frame.width, frame.height, false, map);
    GifFreeMapObject(map);
    if (status == GIF_ERROR) return fail(gif_->Error, error);
    for (int y = 0; y < frame.height; ++y) {
        auto* row = const_cast<GifPixelType*>(frame.indices + static_cast<size_t>(y) * frame.width);
        if (EGifPutLine(gif_, row, frame.width) == GIF_ERROR) return fail(gif_->Error, error);
    }
    return true;
}

bool FLKGIFWriter::end(FLKError* error) {
    int gifError = 0;
    GifFileType* gif = gif_;
    gif_ = nullptr;
    if (EGifCloseFile(gif, &gifError) == GIF_ERROR) return fail(gifError, error);
    if (writeErrno_) return fail(0, error);
    return true;
}
