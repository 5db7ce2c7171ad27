#pragma once

#include <optional>

#include "core/platform/FLKRect.h"

// Where the program's own main window is, in X screen coordinates; the
// desktop program answers it, nothing does without a window.
class FLKMainWindowLocating {
public:
    virtual ~FLKMainWindowLocating() = default;
    virtual std::optional<FLKRect> mainWindowFrame() const = 0;
};
