#include "core/platform/FLKLocalStore.h"

#include <atomic>

#include "core/platform/FLKDirectoryWatcher.h"
#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKPaths.h"

// What queued main-queue calls hold weakly: once the watch is gone, they do
// nothing.
struct FLKLocalStore::Watch {
    explicit Watch(std::function<void()> h) : handler(std::move(h)) {}
    const std::function<void()> handler;  // called only on the main queue
    std::atomic<bool> callQueued{false};  // set by the watcher thread, cleared on the main queue
};

FLKLocalStore::FLKLocalStore(std::filesystem::path directoryURL, std::string extension)
    : FLKStore(std::move(directoryURL), std::move(extension)) {}

FLKLocalStore::~FLKLocalStore() { stopWatchingForUpdates(); }

std::shared_ptr<FLKLocalStore> FLKLocalStore::storeWithDirectory(const std::string& directory,
                                                                 const std::string& extension) {
    return std::make_shared<FLKLocalStore>(flk::dataHome() / directory, extension);
}

bool FLKLocalStore::startWatchingForUpdates(std::function<void()> handler, FLKError* error) {
    stopWatchingForUpdates();
    if (!createDirectoryIfNeeded(error)) return false;
    auto watch = std::make_shared<Watch>(std::move(handler));
    std::weak_ptr<Watch> weakWatch = watch;
    auto watcher = FLKDirectoryWatcher::watcherForDirectory(
        directoryURL(),
        [weakWatch] {
            auto watch = weakWatch.lock();
            if (!watch || watch->callQueued.exchange(true)) return;
            FLKMainQueue::main()->post([weakWatch] {
                if (auto watch = weakWatch.lock()) {
                    watch->callQueued = false;
                    watch->handler();
                }
            });
        },
        error);
    if (!watcher) return false;
    std::lock_guard lock(watchMutex_);
    watch_ = std::move(watch);
    watcher_ = std::move(watcher);
    return true;
}

void FLKLocalStore::stopWatchingForUpdates() {
    std::unique_ptr<FLKDirectoryWatcher> watcher;
    std::shared_ptr<Watch> watch;
    {
        std::lock_guard lock(watchMutex_);
        watcher = std::move(watcher_);
        watch = std::move(watch_);
    }
    watcher.reset();  // joins the watcher thread outside the lock
}
