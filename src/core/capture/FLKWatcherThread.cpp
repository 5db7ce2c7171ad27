#include "core/capture/FLKWatcherThread.h"

#include <cerrno>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

FLKWatcherThread::FLKWatcherThread() : wakeFd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

FLKWatcherThread::~FLKWatcherThread() {
    stop();
    if (wakeFd_ >= 0) ::close(wakeFd_);
}

void FLKWatcherThread::start(std::function<void(FLKWatcherThread&)> body) {
    if (thread_.joinable()) return;
    stopping_ = false;
    thread_ = std::thread([this, body = std::move(body)] { body(*this); });
}

void FLKWatcherThread::stop() {
    if (!thread_.joinable()) return;
    stopping_ = true;
    uint64_t one = 1;
    if (::write(wakeFd_, &one, sizeof one) < 0) {
        // The counter cannot overflow from one write; the flag is set either way.
    }
    thread_.join();
    uint64_t drained = 0;
    if (::read(wakeFd_, &drained, sizeof drained) < 0) {
        // Nothing was pending.
    }
}

bool FLKWatcherThread::wait(int fd, int timeoutMs) {
    if (stopping_) return false;
    pollfd fds[2] = {{wakeFd_, POLLIN, 0}, {fd, POLLIN, 0}};
    int rc = ::poll(fds, fd >= 0 ? 2 : 1, timeoutMs);
    if (rc < 0 && errno != EINTR) return !stopping_;
    return !stopping_;
}
