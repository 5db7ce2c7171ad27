#pragma once

#include <cstdint>
#include <functional>

// Calls back once per refresh of the main display, on a thread of its own.
// The app installs one tied to its window; headless a steady ticker stands in.
class FLKRefreshSource {
public:
    using Callback = std::function<void()>;
    // One refresh lasts timeValue / timeScale seconds.
    struct Period {
        int64_t timeValue = 0;
        int32_t timeScale = 0;
    };

    virtual ~FLKRefreshSource() = default;

    // Binds the source to the main display: 0, or an error code when there is none.
    virtual int open() = 0;
    virtual Period nominalRefreshPeriod() const = 0;
    virtual void start(Callback callback) = 0;
    // After stop() returns no further callback begins (except when stop() is
    // called from inside the callback itself).
    virtual void stop() = 0;
};
