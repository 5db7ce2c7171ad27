#pragma once

#include <memory>
#include <string>

#include "editing/FLKWidget.h"

class FLKWidgetViewModel;

// The transparent overlay over the canvas that holds the widgets; the desktop
// shell implements it.
class FLKWidgetView {
public:
    virtual ~FLKWidgetView() = default;
    // A new widget of the named class drawing the view model; nullptr when the
    // class is unknown.
    virtual std::shared_ptr<FLKWidget> makeWidget(const std::string& widgetClass,
                                                  const std::shared_ptr<FLKWidgetViewModel>& viewModel) = 0;
    virtual std::shared_ptr<FLKWidget> widgetForViewModel(const FLKWidgetViewModel& viewModel) const = 0;
    virtual void addWidget(const std::shared_ptr<FLKWidget>& widget) = 0;
    virtual void removeWidget(const std::shared_ptr<FLKWidget>& widget) = 0;
    // Redraws every widget.
    virtual void setNeedsDisplay() = 0;
};
