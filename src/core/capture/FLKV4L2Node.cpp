#include "core/capture/FLKV4L2Node.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {
std::string fixedString(const uint8_t* bytes, size_t size) {
    size_t length = strnlen(reinterpret_cast<const char*>(bytes), size);
    return std::string(reinterpret_cast<const char*>(bytes), length);
}
}  // namespace

std::string FLKV4L2Node::uniqueIdentifier() const {
    return "v4l2:" + (busInfo.empty() ? path.filename().string() : busInfo);
}

bool FLKV4L2Node::capturesVideo(const v4l2_capability& caps) {
    uint32_t own = (caps.capabilities & V4L2_CAP_DEVICE_CAPS) ? caps.device_caps : caps.capabilities;
    return (own & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE)) != 0;
}

std::optional<FLKV4L2Node> FLKV4L2Node::fromCapability(const std::filesystem::path& path,
                                                       const v4l2_capability& caps) {
    if (!capturesVideo(caps)) return std::nullopt;
    return FLKV4L2Node{path, fixedString(caps.card, sizeof caps.card), fixedString(caps.bus_info, sizeof caps.bus_info)};
}

std::optional<FLKV4L2Node> FLKV4L2Node::probe(const std::filesystem::path& path) {
    int fd = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    v4l2_capability caps{};
    bool answered = ::ioctl(fd, VIDIOC_QUERYCAP, &caps) == 0;
    ::close(fd);
    if (!answered) return std::nullopt;
    return fromCapability(path, caps);
}

std::vector<FLKV4L2Node> FLKV4L2Node::list(const std::filesystem::path& devDirectory) {
    std::vector<std::filesystem::path> paths;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(devDirectory, ec)) {
        if (entry.path().filename().string().rfind("video", 0) == 0) paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<FLKV4L2Node> nodes;
    for (const auto& path : paths) {
        if (auto node = probe(path)) nodes.push_back(std::move(*node));
    }
    return nodes;
}
