#pragma once

#include <array>
#include <string>
#include <vector>

#include "FLKDeviceArtwork.h"
#include "core/platform/FLKSize.h"

// How the device of a template stands in its frame.
enum class FLKDevicePose { upright, turnedLeft, perspective, none };

// One built-in template: its name, canvas, background and device.
struct FLKTemplateDesign {
    std::string name;
    std::string slug;  // prefix of its media files, unique across templates
    FLKSize canvas;
    std::array<unsigned, 4> gradient;  // top left, top right, bottom left, bottom right
    FLKDeviceKind device;
    FLKDevicePose pose;
    bool masksScreen;  // the video is drawn through rounded corners

    // The built-in templates in the order they are offered.
    static std::vector<FLKTemplateDesign> builtInDesigns();
};
