#pragma once

#include <array>

#include "FLKTemplateDesign.h"

// A template's device drawn where it stands in the scene, in scene units.
struct FLKPlacedDevice {
    FLKCanvas artwork;   // shadowed, with a transparent screen; empty without a device
    FLKCanvas preview;   // the artwork over stand-in screen content
    FLKPoint origin;     // where both canvases' top left lies in the scene
    std::array<FLKPoint, 4> screen;  // top left, top right, bottom left, bottom right
    FLKRoundedRect flatScreen;       // the screen's size and corner radius, facing the viewer

    static FLKPlacedDevice place(const FLKTemplateDesign& design);
};

// A white picture of the given size whose alpha is the rounded screen.
FLKImage flkScreenMask(int width, int height, double radius);
