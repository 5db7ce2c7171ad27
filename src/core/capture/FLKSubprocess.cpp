#include "core/capture/FLKSubprocess.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

FLKSubprocess::~FLKSubprocess() {
    if (pid_ > 0) terminate();
    if (out_ >= 0) ::close(out_);
    if (err_ >= 0) ::close(err_);
}

std::string FLKSubprocess::findProgram(const std::string& name) {
    if (name.empty()) return {};
    auto executable = [](const std::string& path) {
        struct stat st{};
        return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::access(path.c_str(), X_OK) == 0;
    };
    if (name.find('/') != std::string::npos) return executable(name) ? name : std::string{};
    const char* path = std::getenv("PATH");
    std::string dirs = path ? path : "/usr/local/bin:/usr/bin:/bin";
    size_t start = 0;
    while (start <= dirs.size()) {
        size_t end = dirs.find(':', start);
        if (end == std::string::npos) end = dirs.size();
        std::string dir = dirs.substr(start, end - start);
        std::string candidate = (dir.empty() ? "." : dir) + "/" + name;
        if (executable(candidate)) return candidate;
        start = end + 1;
    }
    return {};
}

bool FLKSubprocess::start(const std::vector<std::string>& argv, std::string* reason) {
    int outPipe[2];
    int errPipe[2];
    if (::pipe2(outPipe, O_CLOEXEC) != 0) {
        if (reason) *reason = std::strerror(errno);
        return false;
    }
    if (::pipe2(errPipe, O_CLOEXEC) != 0) {
        if (reason) *reason = std::strerror(errno);
        ::close(outPipe[0]);
        ::close(outPipe[1]);
        return false;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setpgroup(&attributes, 0);
    // A program started by a process that ignores SIGPIPE would inherit that.
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigaddset(&defaults, SIGINT);
    sigaddset(&defaults, SIGTERM);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    // Nor signals a program's main thread blocks to wait for them itself.
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    std::vector<char*> args;
    for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    pid_t pid = -1;
    int rc = ::posix_spawnp(&pid, args[0], &actions, &attributes, args.data(), environ);
    pid_ = rc == 0 ? pid : -1;
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    if (rc != 0) {
        pid_ = -1;
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        if (reason) *reason = argv[0] + ": " + std::strerror(rc);
        return false;
    }
    out_ = outPipe[0];
    err_ = errPipe[0];
    // Error output is read only by run(); a long-running program must never block on it.
    ::fcntl(err_, F_SETFL, ::fcntl(err_, F_GETFL) | O_NONBLOCK);
    return true;
}

ssize_t FLKSubprocess::read(void* buffer, size_t size) {
    for (;;) {
        ssize_t n = ::read(out_, buffer, size);
        if (n >= 0 || errno != EINTR) return n;
    }
}

std::string FLKSubprocess::availableErrorOutput() {
    std::string text;
    char buffer[4096];
    ssize_t n = 0;
    while (err_ >= 0 && (n = ::read(err_, buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<size_t>(n));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
    return text;
}

bool FLKSubprocess::waitReadable(int milliseconds) const {
    pollfd fd{out_, POLLIN, 0};
    return ::poll(&fd, 1, milliseconds) > 0;
}

void FLKSubprocess::kill(int signal) {
    pid_t pid = pid_;
    if (pid > 0) ::kill(-pid, signal);
}

void FLKSubprocess::terminate() {
    if (pid_ <= 0) return;
    kill();
    wait();
}

int FLKSubprocess::wait() {
    if (pid_ <= 0) return status_;
    int status = 0;
    while (::waitpid(pid_.load(), &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return status_;
}

std::optional<std::string> FLKSubprocess::run(const std::vector<std::string>& argv, std::string* reason) {
    FLKSubprocess process;
    if (!process.start(argv, reason)) return std::nullopt;
    // Both pipes are drained together so a chatty program never stalls.
    ::fcntl(process.out_, F_SETFL, ::fcntl(process.out_, F_GETFL) | O_NONBLOCK);
    std::string out;
    std::string err;
    bool outOpen = true;
    bool errOpen = true;
    char buffer[4096];
    while (outOpen || errOpen) {
        pollfd fds[2] = {{outOpen ? process.out_ : -1, POLLIN, 0}, {errOpen ? process.err_ : -1, POLLIN, 0}};
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (!fds[i].revents) continue;
            ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
            if (n > 0) {
                (i == 0 ? out : err).append(buffer, static_cast<size_t>(n));
            } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
                (i == 0 ? outOpen : errOpen) = false;
            }
        }
    }
    int status = process.wait();
    if (status != 0) {
        if (reason) {
            while (!err.empty() && (err.back() == '\n' || err.back() == '\r')) err.pop_back();
            *reason = err.empty() ? argv[0] + " ended with status " + std::to_string(status) : err;
        }
        return std::nullopt;
    }
    return out;
}
