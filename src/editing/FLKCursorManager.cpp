#include "editing/FLKCursorManager.h"

namespace {
int64_t knownType(int64_t type) {
    return type >= FLKCursorTypeArrow && type <= FLKCursorTypeUpLeftDownRight ? type : FLKCursorTypeArrow;
}
}  // namespace

std::shared_ptr<FLKCursorManager> FLKCursorManager::defaultManager() {
    static const auto manager = std::make_shared<FLKCursorManager>();
    return manager;
}

void FLKCursorManager::setCursorType(int64_t type) {
    cursorType_ = type;
    if (shownType_ != knownType(type)) show(knownType(type));
}

void FLKCursorManager::setDisplay(std::shared_ptr<FLKCursorDisplay> display) {
    display_ = std::move(display);
    shownType_.reset();
    show(knownType(cursorType_));
}

std::string FLKCursorManager::imageNameForCursorType(int64_t type) {
    switch (type) {
        case FLKCursorTypeLeftRight: return "CursorLeftRight";
        case FLKCursorTypeUpDown: return "CursorUpDown";
        case FLKCursorTypeUpRightDownLeft: return "CursorUpRightDownLeft";
        case FLKCursorTypeUpLeftDownRight: return "CursorUpLeftDownRight";
        default: return {};
    }
}

void FLKCursorManager::show(int64_t type) {
    if (!display_) return;
    shownType_ = type;
    switch (type) {
        case FLKCursorTypeOpenHand: return display_->showSystemCursor(FLKCursorDisplay::SystemCursor::openHand);
        case FLKCursorTypeClosedHand: return display_->showSystemCursor(FLKCursorDisplay::SystemCursor::closedHand);
        case FLKCursorTypeCrosshair: return display_->showSystemCursor(FLKCursorDisplay::SystemCursor::crosshair);
        case FLKCursorTypeArrow: return display_->showSystemCursor(FLKCursorDisplay::SystemCursor::arrow);
        default:
            // Resize cursors are centred on their image.
            return display_->showImageCursor(imageNameForCursorType(type), FLKPoint{0.5, 0.5});
    }
}
