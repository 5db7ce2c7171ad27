#pragma once

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <string>

#include "core/platform/FLKError.h"
#include "core/scene/FLKScene.h"

class FLKTimeline;

// `flickwell-cli frame SCENE.json|DOC --out FRAME.png [--size WxH] [--frame
// X,Y,W,H] [--video FILE] [--time T]`: renders one frame of a scene file, a
// document or a template off screen and writes it as a PNG. The screen shows
// the timeline (a document's, or one holding --video) at T seconds, played
// through the same readers and buffers as the editor and exports.
class FrameCommand {
public:
    // Adds the subcommand; when it runs, its exit status lands in `exitCode`.
    static void add(CLI::App& app, int& exitCode);

    int run() const;

private:
    struct Source {
        std::shared_ptr<FLKScene> scene;
        std::shared_ptr<FLKTimeline> timeline;  // null for a scene file without a video
    };
    // What to render, from whatever input was given; no scene with the error set.
    Source loadSource(FLKError* error) const;

    std::filesystem::path sceneURL_;
    std::filesystem::path outputURL_;
    std::string size_;
    std::string frame_;
    std::filesystem::path videoURL_;
    double time_ = 0;
};
