#include "core/media/FLKVideoOrientation.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <numbers>

namespace {

int quarterTurns(double degrees) {
    const long turns = std::lround(degrees / 90.0) % 4;
    return static_cast<int>(turns < 0 ? turns + 4 : turns);
}

// kBytes 0: `bytes` known only at run time.
template <int kBytes>
void turnRows(const std::uint8_t* stored, int storedStride, int storedWidth, int storedHeight, std::uint8_t* shown,
              int shownStride, int shownWidth, int shownHeight, int a, int b, int c, int d, int bytes = kBytes) {
    // Shown (X, Y) comes from stored (a X + b Y, c X + d Y), shifted into the picture.
    const int originX = (a < 0 || b < 0) ? storedWidth - 1 : 0;
    const int originY = (c < 0 || d < 0) ? storedHeight - 1 : 0;
    if (kBytes != 0) bytes = kBytes;
    const std::ptrdiff_t step = static_cast<std::ptrdiff_t>(a) * bytes + static_cast<std::ptrdiff_t>(c) * storedStride;
    for (int y = 0; y < shownHeight; ++y) {
        const int sourceX = originX + b * y, sourceY = originY + d * y;
        const std::uint8_t* from =
            stored + static_cast<std::ptrdiff_t>(sourceY) * storedStride + static_cast<std::ptrdiff_t>(sourceX) * bytes;
        std::uint8_t* to = shown + static_cast<std::ptrdiff_t>(y) * shownStride;
        for (int x = 0; x < shownWidth; ++x, from += step, to += bytes) std::memcpy(to, from, kBytes ? kBytes : bytes);
    }
}

}  // namespace

FLKVideoOrientation::FLKVideoOrientation(int clockwiseDegrees, bool mirrored) {
    static constexpr int kCos[4] = {1, 0, -1, 0};
    static constexpr int kSin[4] = {0, 1, 0, -1};
    const int turns = quarterTurns(clockwiseDegrees);
    // Clockwise in image coordinates (y down): x' = x cos - y sin, y' = x sin + y cos.
    a_ = kCos[turns];
    b_ = kSin[turns];
    c_ = -kSin[turns];
    d_ = kCos[turns];
    if (mirrored) {  // x -> -x before turning
        a_ = -a_;
        b_ = -b_;
    }
}

FLKVideoOrientation FLKVideoOrientation::orientationWithDisplayMatrix(const std::int32_t matrix[9]) {
    if (!matrix) return {};
    double a = matrix[0], b = matrix[1];
    const double c = matrix[3], d = matrix[4];
    const double determinant = a * d - b * c;
    if (!std::isfinite(determinant) || determinant == 0) return {};
    const bool mirrored = determinant < 0;
    if (mirrored) {
        a = -a;
        b = -b;
    }
    return FLKVideoOrientation(static_cast<int>(std::lround(std::atan2(b, a) * 180.0 / std::numbers::pi)), mirrored);
}

bool FLKVideoOrientation::isMirrored() const { return a_ * d_ - b_ * c_ < 0; }

int FLKVideoOrientation::rotationDegrees() const {
    const int a = isMirrored() ? -a_ : a_;
    const int b = isMirrored() ? -b_ : b_;
    if (a == 1) return 0;
    if (b == 1) return 90;
    if (a == -1) return 180;
    return 270;
}

FLKVideoOrientation FLKVideoOrientation::inverted() const { return FLKVideoOrientation(a_, c_, b_, d_); }

void FLKVideoOrientation::writeDisplayMatrix(std::int32_t matrix[9]) const {
    constexpr std::int32_t kOne = 1 << 16;
    for (int i = 0; i < 9; ++i) matrix[i] = 0;
    matrix[0] = a_ * kOne;
    matrix[1] = b_ * kOne;
    matrix[3] = c_ * kOne;
    matrix[4] = d_ * kOne;
    matrix[8] = 1 << 30;
}

void FLKVideoOrientation::turnPlane(const std::uint8_t* stored, int storedStride, int storedWidth, int storedHeight,
                                    std::uint8_t* shown, int shownStride, int bytesPerPixel) const {
    const int shownWidth = swapsSides() ? storedHeight : storedWidth;
    const int shownHeight = swapsSides() ? storedWidth : storedHeight;
    switch (bytesPerPixel) {
    case 1:
        turnRows<1>(stored, storedStride, storedWidth, storedHeight, shown, shownStride, shownWidth, shownHeight, a_,
                    b_, c_, d_);
        break;
    case 2:
        turnRows<2>(stored, storedStride, storedWidth, storedHeight, shown, shownStride, shownWidth, shownHeight, a_,
                    b_, c_, d_);
        break;
    case 4:
        turnRows<4>(stored, storedStride, storedWidth, storedHeight, shown, shownStride, shownWidth, shownHeight, a_,
                    b_, c_, d_);
        break;
    default:
        turnRows<0>(stored, storedStride, storedWidth, storedHeight, shown, shownStride, shownWidth, shownHeight, a_,
                    b_, c_, d_, bytesPerPixel);
        break;
    }
}
