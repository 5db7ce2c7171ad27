#pragma once

#include <functional>
#include <memory>

#include "core/platform/FLKError.h"

// What the system says to its user outside of views: a beep when an action
// cannot be done, an error in an alert. The app binds it to its toolkit, the
// CLI prints, tests record.
class FLKUserFeedback {
public:
    virtual ~FLKUserFeedback() = default;
    virtual void beep() = 0;
    virtual void presentError(const FLKError& error) = 0;

    // The process-wide instance; by default beeps are dropped and errors are
    // printed to standard error.
    static FLKUserFeedback& shared();
    static void setShared(std::shared_ptr<FLKUserFeedback> feedback);
};
