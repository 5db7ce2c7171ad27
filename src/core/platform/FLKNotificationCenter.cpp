#include "core/platform/FLKNotificationCenter.h"

#include <atomic>
#include <mutex>
#include <vector>

struct FLKNotificationCenter::Entry {
    Token token;                       // immutable
    std::string name;                  // immutable
    const void* object;                // immutable
    Observer observer;                 // immutable
    std::atomic<bool> removed = false; // any thread
};

struct FLKNotificationCenter::State {
    std::mutex mutex;
    std::vector<std::shared_ptr<Entry>> entries;  // guarded by mutex, in order of adding
    Token nextToken = 1;                          // guarded by mutex
};

FLKNotificationCenter::FLKNotificationCenter() : state_(std::make_shared<State>()) {}

FLKNotificationCenter& FLKNotificationCenter::defaultCenter() {
    // Never destroyed: queue threads may still remove observers while the
    // process exits, after static destructors have started.
    static auto* center = new FLKNotificationCenter;
    return *center;
}

FLKNotificationCenter::State& FLKNotificationCenter::state() { return *state_; }

FLKNotificationCenter::Token FLKNotificationCenter::addObserver(const std::string& name, const void* object,
                                                                Observer observer) {
    auto entry = std::make_shared<Entry>();
    entry->name = name;
    entry->object = object;
    entry->observer = std::move(observer);
    std::lock_guard lock(state().mutex);
    entry->token = state().nextToken++;
    state().entries.push_back(std::move(entry));
    return state().entries.back()->token;
}

void FLKNotificationCenter::removeObserver(Token token) {
    std::lock_guard lock(state().mutex);
    auto& entries = state().entries;
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        if ((*it)->token == token) {
            (*it)->removed = true;
            entries.erase(it);
            return;
        }
    }
}

void FLKNotificationCenter::post(const std::string& name, const void* object, FLKUserInfo userInfo) {
    std::vector<std::shared_ptr<Entry>> matching;
    {
        std::lock_guard lock(state().mutex);
        for (const auto& entry : state().entries) {
            if (entry->name == name && (!entry->object || entry->object == object)) matching.push_back(entry);
        }
    }
    // Called outside the lock so observers can add, remove and post freely.
    const FLKNotification notification{name, object, std::move(userInfo)};
    for (const auto& entry : matching) {
        if (!entry->removed) entry->observer(notification);
    }
}
