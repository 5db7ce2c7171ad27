#include "core/capture/FLKEDID.h"

#include <cstdio>

namespace {
constexpr uint8_t kHeader[8] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};

bool isEDID(const std::vector<uint8_t>& edid) {
    if (edid.size() < 128) return false;
    for (int i = 0; i < 8; ++i) {
        if (edid[static_cast<size_t>(i)] != kHeader[i]) return false;
    }
    return true;
}
}  // namespace

std::optional<std::string> flk::edid::productName(const std::vector<uint8_t>& edid) {
    if (!isEDID(edid)) return std::nullopt;
    // Four 18-byte descriptors; a display descriptor starts with a zero pixel clock.
    for (size_t offset = 54; offset <= 108; offset += 18) {
        if (edid[offset] != 0 || edid[offset + 1] != 0 || edid[offset + 3] != 0xFC) continue;
        std::string name;
        for (size_t i = offset + 5; i < offset + 18; ++i) {
            uint8_t c = edid[i];
            if (c == 0x0A || c == 0) break;
            name.push_back(c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?');
        }
        while (!name.empty() && name.back() == ' ') name.pop_back();
        if (!name.empty()) return name;
    }
    return std::nullopt;
}

std::optional<std::string> flk::edid::identity(const std::vector<uint8_t>& edid) {
    if (!isEDID(edid)) return std::nullopt;
    // Three letters of five bits each, 'A' = 1.
    unsigned maker = (static_cast<unsigned>(edid[8]) << 8) | edid[9];
    char letters[4] = {static_cast<char>('A' - 1 + ((maker >> 10) & 0x1F)),
                       static_cast<char>('A' - 1 + ((maker >> 5) & 0x1F)), static_cast<char>('A' - 1 + (maker & 0x1F)),
                       0};
    unsigned product = edid[10] | (static_cast<unsigned>(edid[11]) << 8);
    unsigned long serial = edid[12] | (static_cast<unsigned long>(edid[13]) << 8) |
                           (static_cast<unsigned long>(edid[14]) << 16) | (static_cast<unsigned long>(edid[15]) << 24);
    char text[64];
    std::snprintf(text, sizeof text, "%s-%04X-%lu", letters, product, serial);
    return std::string(text);
}
