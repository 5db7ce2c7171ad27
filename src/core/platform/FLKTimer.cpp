#include "core/platform/FLKTimer.h"

#include <algorithm>
#include <cmath>

#include "core/platform/FLKMainQueue.h"

namespace {
// A repeating timer at interval 0 would starve every other task.
constexpr double kMinimumRepeatInterval = 0.0001;
}  // namespace

FLKTimer::FLKTimer(double interval, bool repeats, Block block, std::shared_ptr<FLKMainQueue> queue)
    : interval_(repeats ? std::max(interval, kMinimumRepeatInterval) : std::max(interval, 0.0)),
      repeats_(repeats),
      block_(std::move(block)),
      queue_(queue ? std::move(queue) : FLKMainQueue::main()) {}

std::shared_ptr<FLKTimer> FLKTimer::scheduledTimer(double interval, bool repeats, Block block,
                                                   std::shared_ptr<FLKMainQueue> queue) {
    auto timer = std::make_shared<FLKTimer>(interval, repeats, std::move(block), std::move(queue));
    timer->schedule();
    return timer;
}

void FLKTimer::invalidate() { valid_ = false; }

bool FLKTimer::isValid() const { return valid_; }

void FLKTimer::schedule() {
    start_ = queue_->now();
    scheduleNext();
}

void FLKTimer::scheduleNext() {
    double now = queue_->now();
    uint64_t next = firings_ + 1;
    double due = start_ + static_cast<double>(next) * interval_;
    if (repeats_ && due < now) {
        // Firings missed while the queue was busy are dropped, not bunched up.
        next = static_cast<uint64_t>(std::floor((now - start_) / interval_)) + 1;
        due = start_ + static_cast<double>(next) * interval_;
        firings_ = next - 1;
    }
    // The pending task keeps the timer alive, as a scheduled timer is owned by its loop.
    queue_->postAfter(due - now, [self = shared_from_this()] { self->fire(); });
}

void FLKTimer::fire() {
    if (!valid_) {
        block_ = nullptr;  // drops whatever the block captured
        return;
    }
    ++firings_;
    block_(*this);
    if (!repeats_) valid_ = false;
    if (valid_) {
        scheduleNext();
    } else {
        block_ = nullptr;
    }
}
