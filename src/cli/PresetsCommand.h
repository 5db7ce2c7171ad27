#pragma once

#include <CLI/CLI.hpp>

#include <string>

// `flickwell-cli presets [--type mp4|gif] [--json]`: the export presets.
class PresetsCommand {
public:
    static void add(CLI::App& app, int& exitCode);
    int run() const;

private:
    std::string type_;
    bool json_ = false;
};
