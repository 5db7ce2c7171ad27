#pragma once

#include <Qt>

#include <cstdint>
#include <optional>

#include "editing/FLKEvent.h"

class QKeyEvent;

// Qt's input in the editing layer's terms.
namespace flk {
// Ctrl is the primary modifier here, where other desktops have Command.
uint64_t modifierFlags(Qt::KeyboardModifiers modifiers);
// A pointer move with these buttons held: a drag of the left or the right
// button, or a plain move.
FLKEventType moveEventType(Qt::MouseButtons buttons);
// Delete and Backspace as key-down events; nothing for other keys.
std::optional<FLKEvent> deletionKeyEvent(const QKeyEvent& event);
}  // namespace flk
