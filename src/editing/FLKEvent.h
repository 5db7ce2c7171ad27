#pragma once

#include <cstdint>
#include <string>

#include "core/platform/FLKPoint.h"

enum class FLKEventType {
    mouseDown,
    mouseUp,
    mouseDragged,
    rightMouseDragged,
    mouseMoved,
    mouseEntered,
    mouseExited,
    keyDown,
    keyUp,
    flagsChanged,
    magnify,
    touchesBegan,
    touchesEnded,
    scrollWheel,
};

// Modifier bits in their traditional positions. Command is the primary
// modifier: the desktop shell sets it for Ctrl on Linux.
enum FLKEventModifierFlags : uint64_t {
    FLKEventModifierFlagCapsLock = 1ull << 16,
    FLKEventModifierFlagShift = 1ull << 17,
    FLKEventModifierFlagControl = 1ull << 18,
    FLKEventModifierFlagOption = 1ull << 19,
    FLKEventModifierFlagCommand = 1ull << 20,
};

// Gesture phases of magnify and scroll events.
enum FLKEventPhase : uint64_t {
    FLKEventPhaseNone = 0,
    FLKEventPhaseBegan = 1,
    FLKEventPhaseStationary = 2,
    FLKEventPhaseChanged = 4,
    FLKEventPhaseEnded = 8,
    FLKEventPhaseCancelled = 16,
};

// One input event of the canvas, already mapped to scene coordinates by the
// view that received it.
struct FLKEvent {
    FLKEventType type = FLKEventType::mouseMoved;
    FLKPoint sceneLocation;
    uint64_t modifierFlags = 0;
    double magnification = 0;
    uint64_t phase = FLKEventPhaseNone;
    double scrollingDeltaX = 0;
    double scrollingDeltaY = 0;
    uint16_t keyCode = 0;
    std::string characters;

    bool hasCommandModifier() const { return (modifierFlags & FLKEventModifierFlagCommand) != 0; }

    static FLKEvent mouseEvent(FLKEventType type, FLKPoint sceneLocation, uint64_t modifierFlags = 0) {
        FLKEvent event;
        event.type = type;
        event.sceneLocation = sceneLocation;
        event.modifierFlags = modifierFlags;
        return event;
    }
};
