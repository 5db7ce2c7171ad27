#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

class FLKCaptureInput;

// A source of screen pictures the user can record: a phone over adb, a
// capture card, or one of this computer's monitors. Wrappers are cheap and
// made afresh on every listing; two wrappers of the same source are equal.
class FLKDevice {
public:
    enum class State { ready, unauthorized, offline };

    virtual ~FLKDevice() = default;

    // Null when the source has no name of its own (a monitor without EDID name and output name).
    virtual std::optional<std::string> name() const = 0;
    // Made on first use and kept; null when the source cannot be opened.
    virtual std::shared_ptr<FLKCaptureInput> captureInput() = 0;
    virtual std::string uniqueIdentifier() const = 0;
    // Seconds; 0 when there is no input.
    virtual double minFrameDuration() = 0;
    virtual bool canChangeOrientation() const { return false; }
    virtual bool isShowingApp() const { return false; }

    // "adb", "v4l2" or "display".
    virtual std::string kind() const = 0;
    // A phone that has not accepted this computer, or has dropped off, is listed but cannot be recorded.
    virtual State state() const { return State::ready; }
    bool isChoosable() const { return state() == State::ready; }
    static std::string stateName(State state);

    bool operator==(const FLKDevice& other) const { return uniqueIdentifier() == other.uniqueIdentifier(); }
    size_t hash() const { return std::hash<std::string>{}(uniqueIdentifier()); }
};

struct FLKDeviceHash {
    size_t operator()(const std::shared_ptr<FLKDevice>& device) const { return device ? device->hash() : 0; }
};
struct FLKDeviceEqual {
    bool operator()(const std::shared_ptr<FLKDevice>& a, const std::shared_ptr<FLKDevice>& b) const {
        return a && b ? *a == *b : a == b;
    }
};
