#pragma once

#include <Qt>

#include <cstdint>
#include <optional>

#include "editing/FLKEvent.h"

class QKeyEvent;
class QNativeGestureEvent;
class QWheelEvent;

// Qt's input in the editing layer's terms. Locations are filled in by the
// view, which knows the camera.
namespace flk {
// Ctrl is the primary modifier here, where other desktops have Command.
uint64_t modifierFlags(Qt::KeyboardModifiers modifiers);
// A pointer move with these buttons held: a drag of the left or the right
// button, or a plain move.
FLKEventType moveEventType(Qt::MouseButtons buttons);
// Delete, Backspace and the four arrow keys as key-down or key-up events
// (`type`); nothing for other keys, which the canvas leaves to the window.
std::optional<FLKEvent> canvasKeyEvent(const QKeyEvent& event, FLKEventType type);
// A wheel step: one notch of a mouse wheel is a delta of 1, as a line of
// scrolling; a touchpad's pixel deltas are taken as they come. Up is positive.
FLKEvent scrollWheelEvent(const QWheelEvent& event);
// The pinch of a touchpad as a magnify event with its phase; nothing for
// other native gestures.
std::optional<FLKEvent> magnifyEvent(const QNativeGestureEvent& event);
}  // namespace flk
