#pragma once

#include <atomic>
#include <csignal>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// A helper program run with its standard output read through a pipe. It runs
// in a process group of its own so that ending it ends what it started.
class FLKSubprocess {
public:
    FLKSubprocess() = default;
    ~FLKSubprocess();
    FLKSubprocess(const FLKSubprocess&) = delete;
    FLKSubprocess& operator=(const FLKSubprocess&) = delete;

    // False with `reason` set when the program cannot be started.
    bool start(const std::vector<std::string>& argv, std::string* reason = nullptr);
    // Bytes read, 0 at the end of the output, -1 on error (EINTR retried).
    ssize_t read(void* buffer, size_t size);
    // Waits up to `milliseconds` for output (or its end); false on timeout.
    bool waitReadable(int milliseconds) const;
    int outputDescriptor() const { return out_; }
    // What the program wrote to its error output so far, without waiting (the last 64 KiB at most).
    std::string availableErrorOutput();
    // Signals the whole process group (SIGKILL: ends it) without reaping; any thread.
    void kill(int signal = SIGKILL);
    // Ends the whole process group and reaps the program.
    void terminate();
    // Reaps the program; its exit status, or 128 + signal.
    int wait();

    // Runs to the end and answers standard output; nullopt with `reason`
    // (the program's own error output when it failed).
    static std::optional<std::string> run(const std::vector<std::string>& argv, std::string* reason = nullptr);
    // The program's path: an absolute or relative path as given, else looked up on PATH; empty when absent.
    static std::string findProgram(const std::string& name);

private:
    std::atomic<pid_t> pid_ = -1;   // written by the thread that starts and reaps; read by kill()
    int out_ = -1;
    int err_ = -1;
    int status_ = -1;
};
