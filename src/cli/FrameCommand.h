#pragma once

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

// `flickwell-cli frame SCENE.json --out FRAME.png [--size WxH] [--frame X,Y,W,H]`:
// renders one frame of a scene file off screen and writes it as a PNG.
class FrameCommand {
public:
    // Adds the subcommand; when it runs, its exit status lands in `exitCode`.
    static void add(CLI::App& app, int& exitCode);

    int run() const;

private:
    std::filesystem::path sceneURL_;
    std::filesystem::path outputURL_;
    std::string size_;
    std::string frame_;
};
