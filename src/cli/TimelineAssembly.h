#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/CommandSupport.h"
#include "core/platform/FLKError.h"

class FLKFile;

// Puts recordings, transitions and a soundtrack into an open document the way
// the editor's drop and menu commands do: files are copied into the
// document's media, clips are laid end to end on the video track.
class TimelineAssembly {
public:
    static constexpr double kDefaultTransitionDuration = 1.0;

    struct Request {
        std::vector<std::filesystem::path> videos;
        // transitions[i] joins videos[i] and videos[i + 1]; "" for a cut.
        std::vector<std::string> transitions;
        double transitionDuration = kDefaultTransitionDuration;
        std::optional<std::filesystem::path> audio;
        // Whether the recordings replace the clips already on the track.
        bool replaceClips = false;
    };

    // False with `error` naming the file and the problem; then the document
    // may hold some of the files but no half-made clip.
    static bool apply(FLKFile& file, const Request& request, FLKError* error);
    // Checks a request before anything is copied: files readable, the right
    // kinds, transitions known and shorter than the clips they join.
    static bool validate(const Request& request, FLKError* error);
    // The files the request reads, for the check that no output replaces one.
    static std::vector<flk::cli::Input> inputs(const Request& request);
};
