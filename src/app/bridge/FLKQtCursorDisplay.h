#pragma once

#include <QPointer>
#include <QPixmap>
#include <QWidget>

#include <string>

#include "editing/FLKCursorDisplay.h"

// The cursor manager's cursors on one widget. The four resize cursors are
// drawn here rather than taken from the theme, so every desktop shows the
// same double arrows; they are painted at the widget's device-pixel ratio
// each time one is shown, so they stay crisp on any screen. Main thread only.
class FLKQtCursorDisplay : public FLKCursorDisplay {
public:
    explicit FLKQtCursorDisplay(QWidget* widget) : widget_(widget) {}

    void showSystemCursor(SystemCursor cursor) override;
    void showImageCursor(const std::string& imageName, FLKPoint hotSpotFraction) override;

    // The image of a resize cursor by its bundled name ("CursorLeftRight",
    // "CursorUpDown", "CursorUpRightDownLeft", "CursorUpLeftDownRight") at a
    // device-pixel ratio; a null pixmap for any other name.
    static QPixmap cursorPixmap(const std::string& imageName, qreal devicePixelRatio);
    // The side of the square cursor images, in device-independent pixels.
    static constexpr int kCursorSide = 24;

private:
    QPointer<QWidget> widget_;  // the canvas; may go before the manager drops this display
};
