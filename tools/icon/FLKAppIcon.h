#pragma once

#include <string>

#include "FLKCanvas.h"

// The program's icon: a phone in portrait whose screen, in the accent blue,
// shows a play mark. One description feeds both the scalable SVG and the
// fixed-size PNGs, so the two can never drift apart.
class FLKAppIcon {
public:
    // Side of the square the design is drawn in; the SVG's view box.
    static constexpr double kDesignSize = 512;

    static std::string svg();
    // The icon drawn into a size x size canvas with a transparent background.
    static FLKCanvas render(int size);
};
