#include "core/platform/FLKDirectoryWatcher.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "core/platform/FLKPaths.h"

namespace {
constexpr uint32_t kWatchedEvents =
    IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE_SELF | IN_MOVE_SELF;
}  // namespace

std::unique_ptr<FLKDirectoryWatcher> FLKDirectoryWatcher::watcherForDirectory(const std::filesystem::path& directory,
                                                                              std::function<void()> onChange,
                                                                              FLKError* error) {
    int inotifyFd = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    int stopFd = inotifyFd >= 0 ? ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC) : -1;
    if (inotifyFd < 0 || stopFd < 0 || ::inotify_add_watch(inotifyFd, directory.c_str(), kWatchedEvents) < 0) {
        int code = errno;
        if (inotifyFd >= 0) ::close(inotifyFd);
        if (stopFd >= 0) ::close(stopFd);
        flk::setError(error, flk::fileSystemErrorWithMessage("Could not watch the folder " + directory.string() + ".",
                                                             code, std::strerror(code)));
        return nullptr;
    }
    return std::unique_ptr<FLKDirectoryWatcher>(new FLKDirectoryWatcher(inotifyFd, stopFd, std::move(onChange)));
}

FLKDirectoryWatcher::FLKDirectoryWatcher(int inotifyFd, int stopFd, std::function<void()> onChange)
    : inotifyFd_(inotifyFd), stopFd_(stopFd), onChange_(std::move(onChange)), thread_([this] { run(); }) {}

FLKDirectoryWatcher::~FLKDirectoryWatcher() {
    uint64_t one = 1;
    while (::write(stopFd_, &one, sizeof one) < 0 && errno == EINTR) {
    }
    thread_.join();
    ::close(inotifyFd_);
    ::close(stopFd_);
}

void FLKDirectoryWatcher::run() {
    for (;;) {
        pollfd fds[2] = {{inotifyFd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            return;
        }
        if (fds[1].revents) return;
        if (fds[0].revents && drainEvents()) onChange_();
    }
}

// Reads every queued event; true when one concerns a visible entry.
bool FLKDirectoryWatcher::drainEvents() {
    alignas(inotify_event) char buffer[16 * 1024];
    bool relevant = false;
    for (;;) {
        ssize_t length = ::read(inotifyFd_, buffer, sizeof buffer);
        if (length <= 0) return relevant;
        for (ssize_t offset = 0; offset < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + offset);
            bool hidden = event->len > 0 && event->name[0] == '.';
            if (!hidden && !(event->mask & IN_IGNORED)) relevant = true;
            offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
        }
    }
}
