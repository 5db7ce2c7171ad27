#pragma once

#include <cstdint>

// How a stored picture is turned to be shown, as a video's display matrix
// says: optionally mirrored left to right, then rotated clockwise by a
// quarter turn or more. Phones store 1920 x 1080 pictures and show them as
// 1080 x 1920 this way.
class FLKVideoOrientation {
public:
    FLKVideoOrientation() = default;  // shown as stored
    // `clockwiseDegrees` is rounded to a quarter turn.
    FLKVideoOrientation(int clockwiseDegrees, bool mirrored);
    // From the nine 16.16 / 2.30 fixed-point values of a display matrix; an
    // angle between quarter turns is rounded to the nearest one.
    static FLKVideoOrientation orientationWithDisplayMatrix(const std::int32_t matrix[9]);

    // 0, 90, 180 or 270.
    int rotationDegrees() const;
    bool isMirrored() const;
    bool isUpright() const { return a_ == 1 && d_ == 1; }
    // Quarter turns show a stored W x H picture as H x W.
    bool swapsSides() const { return a_ == 0; }
    // The orientation that turns a shown picture back into the stored one.
    FLKVideoOrientation inverted() const;
    void writeDisplayMatrix(std::int32_t matrix[9]) const;

    // Fills `shown` (the stored plane turned: sides swapped for quarter
    // turns) from the stored plane; `bytesPerPixel` bytes move together.
    void turnPlane(const std::uint8_t* stored, int storedStride, int storedWidth, int storedHeight,
                   std::uint8_t* shown, int shownStride, int bytesPerPixel) const;

    friend bool operator==(const FLKVideoOrientation&, const FLKVideoOrientation&) = default;

private:
    FLKVideoOrientation(int a, int b, int c, int d) : a_(a), b_(b), c_(c), d_(d) {}

    // The display matrix's linear part, each -1, 0 or 1, in image coordinates
    // (y down): a stored pixel (x, y) is shown at (a x + c y, b x + d y) plus
    // whatever shift brings the picture back to the origin.
    int a_ = 1, b_ = 0, c_ = 0, d_ = 1;
};
