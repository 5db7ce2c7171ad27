#include "core/capture/FLKAdbDeviceList.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>

namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// "model:Pixel_7" and friends; adb adds them after the state.
bool isProperty(const std::string& token) {
    auto colon = token.find(':');
    if (colon == std::string::npos || colon == 0) return false;
    return std::all_of(token.begin(), token.begin() + static_cast<long>(colon),
                       [](char c) { return std::islower(static_cast<unsigned char>(c)) || c == '_'; });
}

const std::array<const char*, 12> kStates = {"device",   "unauthorized", "offline", "bootloader",
                                             "recovery", "sideload",     "host",    "rescue",
                                             "authorizing", "connecting", "unknown", "detached"};

std::string trimmed(std::string s) {
    while (!s.empty() && isSpace(s.back())) s.pop_back();
    size_t start = 0;
    while (start < s.size() && isSpace(s[start])) ++start;
    return s.substr(start);
}

}  // namespace

std::string FLKAdbDeviceEntry::displayName() const {
    if (model.empty()) return serial;
    std::string name = model;
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

bool flk::adb::parseDeviceLine(const std::string& rawLine, FLKAdbDeviceEntry* entry) {
    std::string line = trimmed(rawLine);
    if (line.empty() || line.rfind("List of devices", 0) == 0 || line[0] == '*') return false;
    // A state with words of its own, e.g. "no permissions (user ... wrong?); see [http://...]".
    std::string head = line;
    std::string properties;
    std::string state;
    auto noPermissions = line.find("no permissions");
    if (noPermissions != std::string::npos) {
        head = trimmed(line.substr(0, noPermissions));
        state = "no permissions";
        // Properties follow the closing bracket of the explanation, when there is one.
        auto bracket = line.find(']', noPermissions);
        if (bracket != std::string::npos) properties = line.substr(bracket + 1);
    } else {
        // From the right: properties, then the state word; what is left is the
        // serial, which may itself contain spaces.
        size_t end = line.size();
        for (;;) {
            size_t start = end;
            while (start > 0 && !isSpace(line[start - 1])) --start;
            std::string token = line.substr(start, end - start);
            if (start == 0) return false;  // a lone word: no state
            if (isProperty(token)) {
                properties = token + " " + properties;
                end = start;
                while (end > 0 && isSpace(line[end - 1])) --end;
                continue;
            }
            if (std::find_if(kStates.begin(), kStates.end(), [&](const char* s) { return token == s; }) ==
                kStates.end()) {
                return false;
            }
            state = token;
            head = trimmed(line.substr(0, start));
            break;
        }
    }
    if (head.empty()) return false;
    FLKAdbDeviceEntry parsed;
    parsed.serial = head;
    parsed.state = state;
    std::istringstream words(properties);
    std::string token;
    while (words >> token) {
        auto colon = token.find(':');
        if (colon == std::string::npos) continue;
        std::string key = token.substr(0, colon);
        std::string value = token.substr(colon + 1);
        if (key == "model") parsed.model = value;
        else if (key == "product") parsed.product = value;
        else if (key == "device") parsed.device = value;
    }
    *entry = std::move(parsed);
    return true;
}

std::vector<FLKAdbDeviceEntry> flk::adb::parseDevices(const std::string& text) {
    std::vector<FLKAdbDeviceEntry> entries;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        FLKAdbDeviceEntry entry;
        if (parseDeviceLine(line, &entry)) entries.push_back(std::move(entry));
    }
    return entries;
}

bool flk::adb::takeTrackDevicesBlocks(std::string& buffer, std::vector<std::string>* payloads) {
    size_t offset = 0;
    while (buffer.size() - offset >= 4) {
        size_t length = 0;
        for (size_t i = 0; i < 4; ++i) {
            char c = buffer[offset + i];
            if (!std::isxdigit(static_cast<unsigned char>(c))) return false;
            length = length * 16 + static_cast<size_t>(std::isdigit(static_cast<unsigned char>(c))
                                                           ? c - '0'
                                                           : std::tolower(static_cast<unsigned char>(c)) - 'a' + 10);
        }
        if (buffer.size() - offset - 4 < length) break;
        payloads->push_back(buffer.substr(offset + 4, length));
        offset += 4 + length;
    }
    buffer.erase(0, offset);
    return true;
}
