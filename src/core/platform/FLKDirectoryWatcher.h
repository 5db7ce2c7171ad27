#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "core/platform/FLKError.h"

// Tells when entries of one folder appear, disappear, are renamed or finish
// being written (inotify). Hidden names (half-made copies, atomic-write
// temporaries) are ignored. `onChange` runs on the watcher's own thread, once
// per batch of events; destroying the watcher stops and joins that thread.
class FLKDirectoryWatcher {
public:
    // nullptr with the error set when the folder cannot be watched.
    static std::unique_ptr<FLKDirectoryWatcher> watcherForDirectory(const std::filesystem::path& directory,
                                                                    std::function<void()> onChange,
                                                                    FLKError* error = nullptr);
    ~FLKDirectoryWatcher();
    FLKDirectoryWatcher(const FLKDirectoryWatcher&) = delete;
    FLKDirectoryWatcher& operator=(const FLKDirectoryWatcher&) = delete;

private:
    FLKDirectoryWatcher(int inotifyFd, int stopFd, std::function<void()> onChange);
    void run();
    bool drainEvents();

    const int inotifyFd_;                 // read only by thread_
    const int stopFd_;                    // written by the destructor, read by thread_
    const std::function<void()> onChange_;  // called only on thread_
    std::thread thread_;
};
