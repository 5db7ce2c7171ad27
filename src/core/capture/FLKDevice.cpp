#include "core/capture/FLKDevice.h"

std::string FLKDevice::stateName(State state) {
    switch (state) {
        case State::ready: return "ready";
        case State::unauthorized: return "unauthorized";
        case State::offline: return "offline";
    }
    return "offline";
}
