#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

struct v4l2_capability;

// A /dev/video node that delivers pictures (capture cards, webcams).
struct FLKV4L2Node {
    std::filesystem::path path;  // "/dev/video0"
    std::string card;            // the driver's name for the device
    std::string busInfo;         // "usb-0000:00:14.0-2": survives re-plugging into the same port

    // "v4l2:<bus>" (with the node's name when bus information is missing).
    std::string uniqueIdentifier() const;

    // Whether a node with these answers to VIDIOC_QUERYCAP captures video:
    // the node's own capabilities when the driver reports them, metadata-only
    // and output-only nodes excluded.
    static bool capturesVideo(const v4l2_capability& caps);
    // The node described by its QUERYCAP answer, or nullopt for one that is not for capture.
    static std::optional<FLKV4L2Node> fromCapability(const std::filesystem::path& path, const v4l2_capability& caps);
    // Asks the driver; nullopt when the node cannot be opened or is not for capture.
    static std::optional<FLKV4L2Node> probe(const std::filesystem::path& path);
    // Every capture node under /dev, in name order.
    static std::vector<FLKV4L2Node> list(const std::filesystem::path& devDirectory = "/dev");
};
