#pragma once

#include <CLI/CLI.hpp>

// `flickwell-cli devices [--json] [--watch]`: the sources that can be recorded.
class DevicesCommand {
public:
    static void add(CLI::App& app, int& exitCode);
    int run() const;

private:
    bool json_ = false;
    bool watch_ = false;
};
