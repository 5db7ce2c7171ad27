#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

// Lets views bind to a view model: observers are called with the property's
// name after each change, on the thread that made it (the main thread).
class FLKPropertyObservable {
public:
    using PropertyObserver = std::function<void(const std::string& propertyName)>;
    using ObserverToken = uint64_t;

    virtual ~FLKPropertyObservable() = default;

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
    std::map<ObserverToken, PropertyObserver> observers_;
    ObserverToken nextToken_ = 1;
};
