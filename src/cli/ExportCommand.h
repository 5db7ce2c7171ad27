#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/TimelineAssembly.h"

// `flickwell-cli export DOC|TEMPLATE --type mp4|gif (--preset NAME ... |
// --size WxH) --out PATH [--video REC ...] [--gif-fps N]`: renders the
// document's timeline into one file per preset, one after the other.
class ExportCommand {
public:
    static void add(CLI::App& app, int& exitCode);
    int run() const;

private:
    std::string source_;
    std::string type_;
    std::vector<std::string> presets_;
    std::string size_;
    std::filesystem::path outputURL_;
    TimelineAssembly::Request request_;
    std::string audio_;
    std::uint64_t gifFps_ = 0;
    bool quiet_ = false;
    bool verbose_ = false;
};
