#include "core/platform/FLKDispatchQueue.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <future>
#include <mutex>
#include <thread>

#include "core/platform/FLKLog.h"
#include "core/platform/FLKThreadReaper.h"

namespace {
// The queue whose worker is the calling thread; set once by each worker.
thread_local const void* tCurrentQueue = nullptr;
}  // namespace

// Shared between the queue object and its worker, so that a queue released
// from one of its own blocks can let the worker finish on its own.
struct FLKDispatchQueueState {
    std::string label;                       // immutable
    std::mutex mutex;
    std::condition_variable wake;            // signalled on submit and on close
    std::deque<FLKDispatchQueue::Block> blocks;  // guarded by mutex
    bool closed = false;                     // guarded by mutex

    void runWorker() {
        tCurrentQueue = this;
        while (auto block = next()) {
            runGuarded(block);
        }
    }

    FLKDispatchQueue::Block next() {
        std::unique_lock lock(mutex);
        wake.wait(lock, [&] { return closed || !blocks.empty(); });
        if (blocks.empty()) return {};
        auto block = std::move(blocks.front());
        blocks.pop_front();
        return block;
    }

    void runGuarded(const FLKDispatchQueue::Block& block) {
        // An escaping exception would end the process from a worker thread.
        try {
            block();
        } catch (const std::exception& e) {
            flk::log("Uncaught exception on queue %s: %s", label.c_str(), e.what());
        } catch (...) {
            flk::log("Uncaught exception on queue %s", label.c_str());
        }
    }
};

struct FLKDispatchQueue::Impl {
    std::shared_ptr<FLKDispatchQueueState> state;
    std::thread worker;  // touched only by the owner of the queue object
};

FLKDispatchQueue::FLKDispatchQueue(std::string label) : impl_(std::make_unique<Impl>()) {
    impl_->state = std::make_shared<FLKDispatchQueueState>();
    impl_->state->label = std::move(label);
    impl_->worker = std::thread([state = impl_->state] { state->runWorker(); });
}

FLKDispatchQueue::~FLKDispatchQueue() {
    {
        std::lock_guard lock(impl_->state->mutex);
        impl_->state->closed = true;
    }
    impl_->state->wake.notify_one();
    if (isCurrent()) {
        // Released by one of its own blocks: the worker drains and ends by itself.
        flk::joinLater(std::move(impl_->worker));
    } else {
        impl_->worker.join();
    }
}

const std::string& FLKDispatchQueue::label() const { return impl_->state->label; }

void FLKDispatchQueue::async(Block block) {
    {
        std::lock_guard lock(impl_->state->mutex);
        impl_->state->blocks.push_back(std::move(block));
    }
    impl_->state->wake.notify_one();
}

void FLKDispatchQueue::sync(const Block& block) {
    if (isCurrent()) {
        block();
        return;
    }
    std::promise<void> done;
    async([&] {
        try {
            block();
            done.set_value();
        } catch (...) {
            done.set_exception(std::current_exception());
        }
    });
    done.get_future().get();
}

bool FLKDispatchQueue::isCurrent() const { return tCurrentQueue == impl_->state.get(); }
