#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "editing/FLKCanvasEventObserver.h"

// The logic of one on-canvas widget. The widget that draws it is named by
// `widgetClass` and redrawn through the updater the presenter installs; views
// bind to properties through observers called with the property's name after
// each change. Main thread only.
class FLKWidgetViewModel : public FLKCanvasEventObserver {
public:
    using WidgetUpdater = std::function<void()>;
    using PropertyObserver = std::function<void(const std::string& propertyName)>;
    using ObserverToken = uint64_t;

    ~FLKWidgetViewModel() override = default;

    virtual std::string widgetClass() const = 0;

    void setWidgetUpdater(WidgetUpdater updater) { widgetUpdater_ = std::move(updater); }
    // Redraws the widget; nothing happens before one is presented.
    void updateWidget() {
        if (widgetUpdater_) widgetUpdater_();
    }

    ObserverToken addPropertyObserver(PropertyObserver observer) {
        observers_[nextToken_] = std::move(observer);
        return nextToken_++;
    }
    void removePropertyObserver(ObserverToken token) { observers_.erase(token); }

protected:
    void didChangeProperty(const std::string& propertyName) {
        // Copied: an observer may remove itself.
        auto observers = observers_;
        for (auto& [token, observer] : observers) observer(propertyName);
    }

private:
    WidgetUpdater widgetUpdater_;
    std::map<ObserverToken, PropertyObserver> observers_;
    ObserverToken nextToken_ = 1;
};
