#pragma once

#include <string>

#include "core/platform/FLKPoint.h"

// Shows a cursor on screen; the desktop shell implements it.
class FLKCursorDisplay {
public:
    virtual ~FLKCursorDisplay() = default;
    // One of the platform's own cursors.
    enum class SystemCursor { arrow, openHand, closedHand, crosshair };
    virtual void showSystemCursor(SystemCursor cursor) = 0;
    // A cursor from a bundled image; the hot spot is given as a fraction of the
    // image size.
    virtual void showImageCursor(const std::string& imageName, FLKPoint hotSpotFraction) = 0;
};
