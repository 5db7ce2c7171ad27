#pragma once

#include <atomic>
#include <functional>
#include <thread>

// A thread that waits on a file descriptor of some watcher (a pipe, a socket,
// the X connection) and can be woken to end at any time.
class FLKWatcherThread {
public:
    FLKWatcherThread();
    ~FLKWatcherThread();
    FLKWatcherThread(const FLKWatcherThread&) = delete;
    FLKWatcherThread& operator=(const FLKWatcherThread&) = delete;

    // Runs `body` on the thread; it loops on wait() until that answers false.
    void start(std::function<void(FLKWatcherThread&)> body);
    // Wakes wait() for good and joins.
    void stop();
    bool isRunning() const { return thread_.joinable(); }

    // Waits until `fd` is readable (true) or up to `timeoutMs` (-1: forever; true as well);
    // false once stop() was called.
    bool wait(int fd, int timeoutMs = -1);
    bool stopping() const { return stopping_; }

private:
    int wakeFd_ = -1;                  // an eventfd; written by stop(), polled by the thread
    std::atomic<bool> stopping_ = false;
    std::thread thread_;               // start()/stop() caller only
};
