#pragma once

#include <memory>

#include "editing/FLKWidgetView.h"

// The view controller whose canvas carries the widgets; the desktop shell
// implements it.
class FLKWidgetHostViewController {
public:
    virtual ~FLKWidgetHostViewController() = default;
    // Makes a widget view the size of the controller's view, adds it over the
    // canvas pinned to all edges, and answers it.
    virtual std::shared_ptr<FLKWidgetView> addWidgetView() = 0;
};
