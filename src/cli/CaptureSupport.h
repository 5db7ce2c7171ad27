#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/platform/FLKJSON.h"

class FLKDevice;
class FLKRunLoopMainQueue;

// What the capture commands share: the run loop, Ctrl+C, and how a source is shown.
namespace flk::cli {

// Installs a run loop as the main queue; SIGINT and SIGTERM then call `onSignal`
// on it (from then on, for the rest of the process).
std::shared_ptr<FLKRunLoopMainQueue> captureRunLoop(std::function<void()> onSignal);
// The usual signal response: end the main run loop's run.
void stopMainRunLoop();
// "adb", name, identifier, state.
FLKJSON deviceJSON(FLKDevice& device);
std::string deviceLine(FLKDevice& device);
// Why phones or monitors may be missing from a listing (no adb, no display); empty when nothing is.
std::vector<std::string> missingSourceNotes();

}  // namespace flk::cli
