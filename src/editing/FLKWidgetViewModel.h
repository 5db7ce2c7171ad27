#pragma once

#include <functional>
#include <string>

#include "editing/FLKCanvasEventObserver.h"
#include "editing/FLKPropertyObservable.h"

// The logic of one on-canvas widget. The widget that draws it is named by
// `widgetClass` and redrawn through the updater the presenter installs; views
// bind to properties through observers called with the property's name after
// each change. Main thread only.
class FLKWidgetViewModel : public FLKCanvasEventObserver, public FLKPropertyObservable {
public:
    using WidgetUpdater = std::function<void()>;

    ~FLKWidgetViewModel() override = default;

    virtual std::string widgetClass() const = 0;

    void setWidgetUpdater(WidgetUpdater updater) { widgetUpdater_ = std::move(updater); }
    // Redraws the widget; nothing happens before one is presented.
    void updateWidget() {
        if (widgetUpdater_) widgetUpdater_();
    }

private:
    WidgetUpdater widgetUpdater_;
};
