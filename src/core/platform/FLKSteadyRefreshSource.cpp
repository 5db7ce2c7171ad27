#include "core/platform/FLKSteadyRefreshSource.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "core/platform/FLKThreadReaper.h"

namespace {
// The code a display refresh source gives for an invalid argument.
constexpr int kInvalidRateError = -6661;
}  // namespace

struct FLKSteadyRefreshSource::State {
    std::mutex mutex;
    std::condition_variable wake;  // signalled on stop
    bool stopped = false;          // guarded by mutex

    void tick(std::chrono::steady_clock::duration period, const Callback& callback) {
        auto next = std::chrono::steady_clock::now() + period;
        std::unique_lock lock(mutex);
        while (!wake.wait_until(lock, next, [&] { return stopped; })) {
            lock.unlock();
            callback();
            lock.lock();
            auto now = std::chrono::steady_clock::now();
            next += period;
            if (next < now) next = now + period;
        }
    }
};

FLKSteadyRefreshSource::FLKSteadyRefreshSource(unsigned rate) : FLKSteadyRefreshSource(Period{1, static_cast<int32_t>(rate)}) {}

FLKSteadyRefreshSource::FLKSteadyRefreshSource(Period period) : period_(period), state_(std::make_shared<State>()) {}

FLKSteadyRefreshSource::~FLKSteadyRefreshSource() { stop(); }

int FLKSteadyRefreshSource::open() { return isValid() ? 0 : kInvalidRateError; }

FLKRefreshSource::Period FLKSteadyRefreshSource::nominalRefreshPeriod() const { return period_; }

bool FLKSteadyRefreshSource::isValid() const { return period_.timeValue > 0 && period_.timeScale > 0; }

void FLKSteadyRefreshSource::start(Callback callback) {
    if (!isValid() || ticker_.joinable()) return;
    auto seconds = static_cast<double>(period_.timeValue) / period_.timeScale;
    auto period = std::chrono::duration_cast<std::chrono::steady_clock::duration>(std::chrono::duration<double>(seconds));
    ticker_ = std::thread([state = state_, period, callback = std::move(callback)] { state->tick(period, callback); });
}

void FLKSteadyRefreshSource::stop() {
    {
        std::lock_guard lock(state_->mutex);
        state_->stopped = true;
    }
    state_->wake.notify_all();
    if (!ticker_.joinable()) return;
    if (ticker_.get_id() == std::this_thread::get_id()) {
        flk::joinLater(std::move(ticker_));  // stopped from its own callback: it ends once the callback returns
    } else {
        ticker_.join();
    }
}
