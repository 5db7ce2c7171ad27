#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

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
        // An observer may remove itself or another one while being called: a
        // removed observer is not called any more.
        std::vector<ObserverToken> tokens;
        for (const auto& [token, observer] : observers_) tokens.push_back(token);
        for (auto token : tokens) {
            auto it = observers_.find(token);
            if (it == observers_.end()) continue;
            auto observer = it->second;
            observer(propertyName);
        }
    }

private:
    std::map<ObserverToken, PropertyObserver> observers_;
    ObserverToken nextToken_ = 1;
};
