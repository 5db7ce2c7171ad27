#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>

// A value carried in a notification's user info.
using FLKNotificationValue = std::variant<std::monostate, bool, int64_t, double, std::string>;
using FLKUserInfo = std::map<std::string, FLKNotificationValue>;

struct FLKNotification {
    std::string name;
    const void* object = nullptr;  // the sender, compared by identity only
    FLKUserInfo userInfo;
};

// Observers by name with an optional sender filter. Observers are called
// synchronously on the posting thread, in the order they were added.
// Observing and posting may happen on any thread; an observer may remove
// itself or others from inside its callback, and one removed before its turn
// in a post is not called.
class FLKNotificationCenter {
public:
    FLKNotificationCenter();

    using Observer = std::function<void(const FLKNotification&)>;
    using Token = uint64_t;

    static FLKNotificationCenter& defaultCenter();

    // `object` nullptr observes every sender.
    Token addObserver(const std::string& name, const void* object, Observer observer);
    void removeObserver(Token token);
    void post(const std::string& name, const void* object = nullptr, FLKUserInfo userInfo = {});

private:
    struct Entry;
    struct State;
    std::shared_ptr<State> state_;  // set once at construction
    State& state();
};

// Removes its observer when destroyed: the usual way to hold an observation.
class FLKObservation {
public:
    FLKObservation() = default;
    FLKObservation(FLKNotificationCenter& center, FLKNotificationCenter::Token token) : center_(&center), token_(token) {}
    FLKObservation(FLKObservation&& o) noexcept { *this = std::move(o); }
    FLKObservation& operator=(FLKObservation&& o) noexcept {
        reset();
        center_ = o.center_;
        token_ = o.token_;
        o.center_ = nullptr;
        return *this;
    }
    ~FLKObservation() { reset(); }
    void reset() {
        if (center_) center_->removeObserver(token_);
        center_ = nullptr;
    }

private:
    FLKNotificationCenter* center_ = nullptr;
    FLKNotificationCenter::Token token_ = 0;
};
