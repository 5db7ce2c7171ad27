#pragma once

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

#include "cli/TimelineAssembly.h"

// `flickwell-cli new --template NAME --video REC [--video REC2 --transition
// crossZoom|fade|crosshatch ...] [--audio FILE] --out DOC.flickwell`: a new
// document from a template with the recordings laid end to end.
class NewCommand {
public:
    static void add(CLI::App& app, int& exitCode);
    int run() const;

private:
    std::string template_;
    TimelineAssembly::Request request_;
    std::string audio_;
    std::filesystem::path outputURL_;
    bool force_ = false;
};
