#include "core/timeline/FLKDecodeWindow.h"

#include <algorithm>
#include <limits>

void FLKDecodeWindow::setAheadTime(double seconds) {
    {
        std::lock_guard lock(mutex_);
        aheadTime_ = std::max(seconds, 0.0);
    }
    roomChanged_.notify_all();
}

double FLKDecodeWindow::aheadTime() const {
    std::lock_guard lock(mutex_);
    return aheadTime_;
}

uint64_t FLKDecodeWindow::beginJob(double start) {
    uint64_t ticket;
    {
        std::lock_guard lock(mutex_);
        ticket = ++ticket_;
        start_ = start;
    }
    roomChanged_.notify_all();
    return ticket;
}

void FLKDecodeWindow::interrupt() {
    {
        std::lock_guard lock(mutex_);
        ++ticket_;
    }
    roomChanged_.notify_all();
}

bool FLKDecodeWindow::hasRoomLocked(double decodedTime) const {
    if (aheadTime_ == kUnlimited) return true;
    const double anchor = lookups_.empty() ? start_ : *std::max_element(lookups_.begin(), lookups_.end());
    return decodedTime < anchor + aheadTime_;
}

bool FLKDecodeWindow::waitForRoom(uint64_t ticket, double decodedTime) {
    std::unique_lock lock(mutex_);
    ++waitingJobs_;
    roomChanged_.wait(lock, [&] { return ticket != ticket_ || hasRoomLocked(decodedTime); });
    --waitingJobs_;
    return ticket == ticket_;
}

bool FLKDecodeWindow::isJobWaiting() const {
    std::lock_guard lock(mutex_);
    return waitingJobs_ > 0;
}

void FLKDecodeWindow::noteLookup(double mediaTime, bool shown) {
    auto remember = [mediaTime](std::deque<double>& times) {
        times.push_back(mediaTime);
        if (times.size() > kRecentLookups) times.pop_front();
    };
    {
        std::lock_guard lock(mutex_);
        if (aheadTime_ == kUnlimited) return;
        remember(lookups_);
        if (shown) remember(shown_);
    }
    roomChanged_.notify_all();
}

double FLKDecodeWindow::releasableBefore() const {
    std::lock_guard lock(mutex_);
    if (aheadTime_ == kUnlimited || shown_.empty()) return -std::numeric_limits<double>::infinity();
    return *std::min_element(shown_.begin(), shown_.end());
}
