#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "core/platform/FLKError.h"

struct GifFileType;

// One colour of a GIF colour table.
struct FLKGIFColor {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const FLKGIFColor&) const = default;
};

// A GIF89a file written through giflib onto a descriptor the caller opened.
// Errors name `displayURL`, the file the user asked for. Not thread-safe:
// one thread writes a file from start to end.
class FLKGIFWriter {
public:
    FLKGIFWriter(int fd, std::filesystem::path displayURL);
    ~FLKGIFWriter();
    FLKGIFWriter(const FLKGIFWriter&) = delete;
    FLKGIFWriter& operator=(const FLKGIFWriter&) = delete;

    // Header, logical screen and the NETSCAPE2.0 loop extension. An empty
    // `globalColors` leaves the palette to each frame.
    bool begin(int width, int height, const std::vector<FLKGIFColor>& globalColors, std::uint16_t loopCount,
               FLKError* error);

    struct Frame {
        int left = 0, top = 0, width = 0, height = 0;
        const std::uint8_t* indices = nullptr;  // width x height, rows packed
        std::vector<FLKGIFColor> localColors;   // empty: the global table
        int delayHundredths = 0;
        int transparentIndex = -1;              // -1: none
    };
    // The frame is drawn over what is shown and left in place ("do not dispose").
    bool addFrame(const Frame& frame, FLKError* error);
    // Trailer; flushes and closes giflib's handle (the descriptor stays open).
    bool end(FLKError* error);

    std::uint64_t bytesWritten() const { return bytesWritten_; }

private:
    static int writeBytes(GifFileType* gif, const std::uint8_t* bytes, int length);
    bool fail(int gifError, FLKError* error);

    const int fd_;
    const std::filesystem::path displayURL_;
    GifFileType* gif_ = nullptr;
    int writeErrno_ = 0;
    std::uint64_t bytesWritten_ = 0;
};
