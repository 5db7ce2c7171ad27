#include "core/platform/FLKUserFeedback.h"

#include <cstdio>
#include <mutex>

namespace {
class StandardErrorFeedback : public FLKUserFeedback {
public:
    void beep() override {}
    void presentError(const FLKError& error) override { std::fprintf(stderr, "error: %s\n", error.fullMessage().c_str()); }
};

std::mutex gMutex;
std::shared_ptr<FLKUserFeedback> gShared;  // guarded by gMutex
}  // namespace

FLKUserFeedback& FLKUserFeedback::shared() {
    std::lock_guard lock(gMutex);
    if (!gShared) gShared = std::make_shared<StandardErrorFeedback>();
    return *gShared;
}

void FLKUserFeedback::setShared(std::shared_ptr<FLKUserFeedback> feedback) {
    std::lock_guard lock(gMutex);
    gShared = std::move(feedback);
}
