#pragma once

#include <CLI/CLI.hpp>

#include <string>

// `flickwell-cli record DEVICE --out FILE.mp4 [--duration S]`: records a
// phone, capture card or monitor until the duration or Ctrl+C.
class RecordCommand {
public:
    static void add(CLI::App& app, int& exitCode);
    int run() const;

private:
    std::string device_;
    std::string out_;
    double duration_ = 0;
};
