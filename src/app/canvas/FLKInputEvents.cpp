#include "app/canvas/FLKInputEvents.h"

#include <QKeyEvent>
#include <QNativeGestureEvent>
#include <QWheelEvent>

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

std::optional<FLKEvent> canvasKeyEvent(const QKeyEvent& event, FLKEventType type) {
    // The key codes the document format's home platform gives these keys,
    // which is what the editing layer's key handlers compare against.
    uint16_t keyCode = 0;
    switch (event.key()) {
        case Qt::Key_Backspace: keyCode = 51; break;
        case Qt::Key_Delete: keyCode = 117; break;
        case Qt::Key_Left: keyCode = 123; break;
        case Qt::Key_Right: keyCode = 124; break;
        case Qt::Key_Down: keyCode = 125; break;
        case Qt::Key_Up: keyCode = 126; break;
        default: return std::nullopt;
    }
    FLKEvent result;
    result.type = type;
    result.keyCode = keyCode;
    result.modifierFlags = modifierFlags(event.modifiers());
    result.characters = event.text().toStdString();
    return result;
}

FLKEvent scrollWheelEvent(const QWheelEvent& event) {
    FLKEvent result;
    result.type = FLKEventType::scrollWheel;
    result.modifierFlags = modifierFlags(event.modifiers());
    const QPoint pixels = event.pixelDelta();
    if (!pixels.isNull()) {
        result.scrollingDeltaX = pixels.x();
        result.scrollingDeltaY = pixels.y();
    } else {
        // Qt counts a notch as 120 eighths of a degree.
        result.scrollingDeltaX = event.angleDelta().x() / 120.0;
        result.scrollingDeltaY = event.angleDelta().y() / 120.0;
    }
    switch (event.phase()) {
        case Qt::ScrollBegin: result.phase = FLKEventPhaseBegan; break;
        case Qt::ScrollUpdate:
        case Qt::ScrollMomentum: result.phase = FLKEventPhaseChanged; break;
        case Qt::ScrollEnd: result.phase = FLKEventPhaseEnded; break;
        case Qt::NoScrollPhase: break;
    }
    return result;
}

std::optional<FLKEvent> magnifyEvent(const QNativeGestureEvent& event) {
    FLKEvent result;
    result.type = FLKEventType::magnify;
    result.modifierFlags = modifierFlags(event.modifiers());
    switch (event.gestureType()) {
        case Qt::BeginNativeGesture: result.phase = FLKEventPhaseBegan; break;
        case Qt::ZoomNativeGesture:
            result.phase = FLKEventPhaseChanged;
            result.magnification = event.value();
            break;
        case Qt::EndNativeGesture: result.phase = FLKEventPhaseEnded; break;
        default: return std::nullopt;
    }
    return result;
}

}  // namespace flk
