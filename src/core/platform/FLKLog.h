#pragma once

#include <functional>
#include <string>

namespace flk {
// printf-style log line to standard error (or to the installed sink).
void log(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Replaces the destination of log lines; an empty function restores stderr.
// Tests install a sink to assert on the system's log texts.
void setLogSink(std::function<void(const std::string&)> sink);
}  // namespace flk
