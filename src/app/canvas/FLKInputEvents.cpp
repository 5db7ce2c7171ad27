#include "app/canvas/FLKInputEvents.h"

#include <QKeyEvent>

namespace flk {

uint64_t modifierFlags(Qt::KeyboardModifiers modifiers) {
    uint64_t flags = 0;
    if (modifiers & Qt::ShiftModifier) flags |= FLKEventModifierFlagShift;
    if (modifiers & Qt::ControlModifier) flags |= FLKEventModifierFlagCommand;
    if (modifiers & Qt::AltModifier) flags |= FLKEventModifierFlagOption;
    if (modifiers & Qt::MetaModifier) flags |= FLKEventModifierFlagControl;
    return flags;
}

FLKEventType moveEventType(Qt::MouseButtons buttons) {
    if (buttons & Qt::LeftButton) return FLKEventType::mouseDragged;
    if (buttons & Qt::RightButton) return FLKEventType::rightMouseDragged;
    return FLKEventType::mouseMoved;
}

std::optional<FLKEvent> deletionKeyEvent(const QKeyEvent& event) {
    // The key codes the document format's home platform gives these keys,
    // which is what the editing layer's key handlers compare against.
    uint16_t keyCode = 0;
    switch (event.key()) {
        case Qt::Key_Backspace: keyCode = 51; break;
        case Qt::Key_Delete: keyCode = 117; break;
        default: return std::nullopt;
    }
    FLKEvent result;
    result.type = FLKEventType::keyDown;
    result.keyCode = keyCode;
    result.modifierFlags = modifierFlags(event.modifiers());
    result.characters = event.text().toStdString();
    return result;
}

}  // namespace flk
