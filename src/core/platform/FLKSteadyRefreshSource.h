#pragma once

#include <memory>
#include <thread>

#include "core/platform/FLKRefreshSource.h"

// A refresh source without a display: a thread ticking on the steady clock at
// a fixed rate. Refreshes missed while a callback overran are skipped.
class FLKSteadyRefreshSource : public FLKRefreshSource {
public:
    explicit FLKSteadyRefreshSource(unsigned rate = 60);
    explicit FLKSteadyRefreshSource(Period period);
    ~FLKSteadyRefreshSource() override;
    FLKSteadyRefreshSource(const FLKSteadyRefreshSource&) = delete;
    FLKSteadyRefreshSource& operator=(const FLKSteadyRefreshSource&) = delete;

    int open() override;
    Period nominalRefreshPeriod() const override;
    void start(Callback callback) override;
    void stop() override;

private:
    struct State;
    bool isValid() const;
    const Period period_;
    std::shared_ptr<State> state_;  // shared with the ticker thread
    std::thread ticker_;            // the owner's thread, or the ticker itself on its last stop
};
