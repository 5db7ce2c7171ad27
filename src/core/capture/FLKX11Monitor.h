#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/platform/FLKError.h"

typedef struct _XDisplay Display;

// One monitor of an X display as RandR describes it.
struct FLKX11Monitor {
    std::optional<std::string> name;  // the EDID product name, else the output name
    std::string outputName;           // "DP-1", or RandR's monitor name when it has no output
    std::string uniqueIdentifier;     // from the EDID when there is one, else the output name
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    // The monitors of an open display, in RandR's order.
    static std::vector<FLKX11Monitor> list(Display* display);
    // Opens the display ($DISPLAY when empty) for one listing; nullopt with the error set when it cannot.
    static std::optional<std::vector<FLKX11Monitor>> list(const std::string& displayName, FLKError* error = nullptr);
};
