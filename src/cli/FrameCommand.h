#pragma once

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <string>

#include "core/platform/FLKError.h"
#include "core/scene/FLKScene.h"

// `flickwell-cli frame SCENE.json --out FRAME.png [--size WxH] [--frame X,Y,W,H]
// [--video FILE [--time T]]`: renders one frame of a scene file off screen and
// writes it as a PNG. With a video, the scene's screen shows that recording at
// T seconds, played through a timeline as the editor and exports show it.
class FrameCommand {
public:
    // Adds the subcommand; when it runs, its exit status lands in `exitCode`.
    static void add(CLI::App& app, int& exitCode);

    int run() const;

private:
    // The scene to render, from whatever input was given.
    std::shared_ptr<FLKScene> loadScene(FLKError* error) const;

    std::filesystem::path sceneURL_;
    std::filesystem::path outputURL_;
    std::string size_;
    std::string frame_;
    std::filesystem::path videoURL_;
    double time_ = 0;
};
