#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "editing/FLKCursorDisplay.h"

enum FLKCursorType : int64_t {
    FLKCursorTypeArrow = 0,
    FLKCursorTypeOpenHand = 1,
    FLKCursorTypeClosedHand = 2,
    FLKCursorTypeCrosshair = 3,
    FLKCursorTypeLeftRight = 4,
    FLKCursorTypeUpDown = 5,
    FLKCursorTypeUpRightDownLeft = 6,
    FLKCursorTypeUpLeftDownRight = 7,
};

// The cursor over the canvas, by type number; any unknown number is the
// arrow. The screen is touched only when the shown cursor changes. Main
// thread only.
class FLKCursorManager {
public:
    static std::shared_ptr<FLKCursorManager> defaultManager();

    int64_t cursorType() const { return cursorType_; }
    void setCursorType(int64_t type);

    // Without a display the type is still tracked.
    void setDisplay(std::shared_ptr<FLKCursorDisplay> display);

    // The bundled image of a resize cursor; empty for the system cursors.
    static std::string imageNameForCursorType(int64_t type);

private:
    void show(int64_t type);

    int64_t cursorType_ = FLKCursorTypeArrow;
    std::optional<int64_t> shownType_;
    std::shared_ptr<FLKCursorDisplay> display_;
};
