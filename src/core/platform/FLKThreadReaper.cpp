#include "core/platform/FLKThreadReaper.h"

#include <mutex>
#include <vector>

namespace {
struct Reaper {
    std::mutex mutex;
    std::vector<std::thread> threads;  // guarded by mutex
    bool exiting = false;              // guarded by mutex
};

// Never destroyed: a thread may hand itself over during static destruction.
Reaper& reaper() {
    static Reaper* instance = new Reaper;
    return *instance;
}
}  // namespace

namespace flk {
void joinLater(std::thread thread) {
    if (!thread.joinable()) return;
    std::lock_guard lock(reaper().mutex);
    if (reaper().exiting) {
        thread.detach();
        return;
    }
    reaper().threads.push_back(std::move(thread));
}

size_t joinReleasedThreads(bool atExit) {
    size_t joined = 0;
    while (true) {
        std::vector<std::thread> threads;
        {
            std::lock_guard lock(reaper().mutex);
            threads.swap(reaper().threads);
            if (threads.empty() && atExit) reaper().exiting = true;
        }
        if (threads.empty()) return joined;
        // A thread ending may release another owner and hand over one more.
        for (auto& thread : threads) {
            if (thread.get_id() == std::this_thread::get_id()) {
                thread.detach();
                continue;
            }
            thread.join();
            ++joined;
        }
    }
}
}  // namespace flk
