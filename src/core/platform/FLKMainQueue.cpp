#include "core/platform/FLKMainQueue.h"

#include <mutex>

#include "core/platform/FLKRunLoopMainQueue.h"

namespace {
std::mutex gMainMutex;
std::shared_ptr<FLKMainQueue> gMain;  // guarded by gMainMutex
}  // namespace

std::shared_ptr<FLKMainQueue> FLKMainQueue::main() {
    std::lock_guard lock(gMainMutex);
    if (!gMain) gMain = std::make_shared<FLKRunLoopMainQueue>();
    return gMain;
}

void FLKMainQueue::setMain(std::shared_ptr<FLKMainQueue> queue) {
    std::lock_guard lock(gMainMutex);
    gMain = std::move(queue);
}
