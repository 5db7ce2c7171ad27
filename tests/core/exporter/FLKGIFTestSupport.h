#pragma once

// A synthetic screen recording and an independent GIF reader for checking
// what the GIF writer produced.

#include <gif_lib.h>

#include <cmath>
#include <cstdio>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "core/platform/FLKPixelBuffer.h"

namespace flktest {

// A phone-like app screen: status bar, a list of cards with an icon and
// lines of "text" scrolling up `scrollPerFrame` pixels a frame over a faint
// gradient, and a small badge that blinks.
inline FLKPixelBuffer screenRecordingFrame(int width, int height, int index, int scrollPerFrame = 6) {
    FLKPixelBuffer frame(width, height);
    auto put = [&](int x, int y, std::uint8_t r, std::uint8_t g, std::uint8_t b) {
        std::uint8_t* p = frame.bgra.data() + static_cast<size_t>(y) * frame.stride + x * 4;
        p[0] = b, p[1] = g, p[2] = r, p[3] = 255;
    };
    const int statusBar = height / 16, cardHeight = height / 6, scroll = index * scrollPerFrame;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (y < statusBar) {
                put(x, y, 30, 30, 40);
                continue;
            }
            const int contentY = y - statusBar + scroll;
            const int card = contentY / cardHeight, inCard = contentY % cardHeight;
            if (inCard < 6 || x < 8 || x >= width - 8) {
                // A wallpaper gradient between the cards: many colours, as photos and backdrops have.
                put(x, y, static_cast<std::uint8_t>(120 + 120 * x / width), static_cast<std::uint8_t>(80 + 150 * y / height),
                    static_cast<std::uint8_t>(230 - 100 * (x + y) / (width + height)));
                continue;
            }
            const int icon = cardHeight / 2;
            if (x >= 16 && x < 16 + icon && inCard >= 14 && inCard < 14 + icon) {
                const int u = x - 16, v = inCard - 14;
                put(x, y, static_cast<std::uint8_t>((60 + card * 53 % 130) + 60 * u / icon),
                    static_cast<std::uint8_t>((90 + card * 97 % 100) + 60 * v / icon),
                    static_cast<std::uint8_t>(200 - card * 31 % 120 - 40 * (u + v) / (2 * icon)));
                continue;
            }
            const int line = (inCard - 14) / 9, inLine = (inCard - 14) % 9;
            const int lineLength = width / 3 + (card * 37 + line * 91) % (width / 2);
            const int textLeft = 28 + icon;
            bool ink = line >= 0 && line < 4 && inLine < 5 && x >= textLeft && x < textLeft + lineLength &&
                       ((x - textLeft) / 3 + card + line) % 7 != 0;
            if (ink) {
                put(x, y, 40, 40, static_cast<std::uint8_t>(50 + line * 30));
            } else {
                put(x, y, 255, 255, 255);
            }
        }
    }
    if ((index / 4) % 2 == 0) {
        for (int y = statusBar / 4; y < statusBar * 3 / 4; ++y)
            for (int x = width - statusBar; x < width - statusBar / 2; ++x) put(x, y, 240, 60, 50);
    }
    return frame;
}

// RGBA pixels of `frame` (BGRA).
inline std::vector<std::uint8_t> rgbaOf(const FLKPixelBuffer& frame) {
    std::vector<std::uint8_t> rgba(static_cast<size_t>(frame.width) * frame.height * 4);
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) {
            const std::uint8_t* p = frame.bgra.data() + static_cast<size_t>(y) * frame.stride + x * 4;
            std::uint8_t* q = rgba.data() + (static_cast<size_t>(y) * frame.width + x) * 4;
            q[0] = p[2], q[1] = p[1], q[2] = p[0], q[3] = 255;
        }
    }
    return rgba;
}

struct DecodedGIF {
    bool ok = false;
    std::string version;  // "GIF87a" or "GIF89a"
    int width = 0, height = 0;
    bool hasLoopExtension = false;
    int loopCount = -1;
    std::vector<int> delays;                       // hundredths, per frame
    std::vector<std::vector<std::uint8_t>> frames;  // RGBA, as shown after each frame
};

// Reads every frame with giflib and draws it over the ones before, as a
// viewer does with frames that are not disposed.
inline DecodedGIF decodeGIF(const std::filesystem::path& url) {
    DecodedGIF result;
    int error = 0;
    GifFileType* gif = DGifOpenFileName(url.c_str(), &error);
    if (!gif) return result;
    if (DGifSlurp(gif) != GIF_OK) {
        DGifCloseFile(gif, &error);
        return result;
    }
    result.width = gif->SWidth;
    result.height = gif->SHeight;
    // giflib files extensions before the first image under that image.
    auto findLoop = [&result](const ExtensionBlock* blocks, int count) {
        for (int e = 0; e + 1 < count; ++e) {
            const ExtensionBlock& block = blocks[e];
            if (block.Function == APPLICATION_EXT_FUNC_CODE && block.ByteCount == 11 &&
                std::string(reinterpret_cast<char*>(block.Bytes), 11) == "NETSCAPE2.0") {
                const ExtensionBlock& data = blocks[e + 1];
                result.hasLoopExtension = data.ByteCount == 3 && data.Bytes[0] == 1;
                result.loopCount = data.Bytes[1] | (data.Bytes[2] << 8);
            }
        }
    };
    if (gif->ImageCount > 0) findLoop(gif->SavedImages[0].ExtensionBlocks, gif->SavedImages[0].ExtensionBlockCount);
    findLoop(gif->ExtensionBlocks, gif->ExtensionBlockCount);
    std::vector<std::uint8_t> canvas(static_cast<size_t>(gif->SWidth) * gif->SHeight * 4, 0);
    for (int i = 0; i < gif->ImageCount; ++i) {
        const SavedImage& image = gif->SavedImages[i];
        GraphicsControlBlock control{};
        control.TransparentColor = NO_TRANSPARENT_COLOR;
        DGifSavedExtensionToGCB(gif, i, &control);
        result.delays.push_back(control.DelayTime);
        const ColorMapObject* map = image.ImageDesc.ColorMap ? image.ImageDesc.ColorMap : gif->SColorMap;
        const GifImageDesc& d = image.ImageDesc;
        for (int y = 0; y < d.Height; ++y) {
            for (int x = 0; x < d.Width; ++x) {
                int index = image.RasterBits[static_cast<size_t>(y) * d.Width + x];
                int cx = d.Left + x, cy = d.Top + y;
                if (index == control.TransparentColor || cx >= gif->SWidth || cy >= gif->SHeight) continue;
                if (!map || index >= map->ColorCount) continue;
                std::uint8_t* p = canvas.data() + (static_cast<size_t>(cy) * gif->SWidth + cx) * 4;
                p[0] = map->Colors[index].Red, p[1] = map->Colors[index].Green, p[2] = map->Colors[index].Blue;
                p[3] = 255;
            }
        }
        result.frames.push_back(canvas);
    }
    DGifCloseFile(gif, &error);
    if (std::FILE* file = std::fopen(url.c_str(), "rb")) {
        char header[6] = {};
        result.version.assign(header, std::fread(header, 1, sizeof header, file));
        std::fclose(file);
    }
    result.ok = true;
    return result;
}

// Peak signal-to-noise ratio of the colour channels, in dB.
inline double psnr(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
    if (a.size() != b.size() || a.empty()) return 0;
    double sum = 0;
    size_t count = 0;
    for (size_t i = 0; i < a.size(); ++i) {
        if (i % 4 == 3) continue;
        double d = static_cast<double>(a[i]) - b[i];
        sum += d * d;
        ++count;
    }
    double mse = sum / static_cast<double>(count);
    return mse == 0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 / mse);
}

// Mean structural similarity of the luma over 8x8 windows (step 4).
inline double ssim(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b, int width, int height) {
    auto luma = [width](const std::vector<std::uint8_t>& p, int x, int y) {
        const std::uint8_t* q = p.data() + (static_cast<size_t>(y) * width + x) * 4;
        return 0.299 * q[0] + 0.587 * q[1] + 0.114 * q[2];
    };
    const double c1 = 6.5025, c2 = 58.5225;
    double total = 0;
    int windows = 0;
    for (int y = 0; y + 8 <= height; y += 4) {
        for (int x = 0; x + 8 <= width; x += 4) {
            double ma = 0, mb = 0, va = 0, vb = 0, cov = 0;
            for (int j = 0; j < 8; ++j)
                for (int i = 0; i < 8; ++i) ma += luma(a, x + i, y + j), mb += luma(b, x + i, y + j);
            ma /= 64, mb /= 64;
            for (int j = 0; j < 8; ++j) {
                for (int i = 0; i < 8; ++i) {
                    double da = luma(a, x + i, y + j) - ma, db = luma(b, x + i, y + j) - mb;
                    va += da * da, vb += db * db, cov += da * db;
                }
            }
            va /= 63, vb /= 63, cov /= 63;
            total += ((2 * ma * mb + c1) * (2 * cov + c2)) / ((ma * ma + mb * mb + c1) * (va + vb + c2));
            ++windows;
        }
    }
    return windows ? total / windows : 0;
}

}  // namespace flktest
