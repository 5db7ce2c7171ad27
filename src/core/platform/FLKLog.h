#pragma once

#include <functional>
#include <string>

namespace flk {
// printf-style log line to standard error (or to the installed sink).
void log(const char* format, ...) __attribute__((format(printf, 1, 2)));
// Replaces the destination of log lines; an empty function restores stderr.
// Tests install a sink to assert on the system's log texts.
void setLogSink(std::function<void(const std::string&)> sink);

using BreadcrumbSink = std::function<void(const char* function, int line, const std::string& text)>;
// One of the user's last steps before a crash, for the shell's breadcrumb
// log; dropped while no sink is installed. Any thread.
void breadcrumb(const char* function, int line, const std::string& text);
void setBreadcrumbSink(BreadcrumbSink sink);
}  // namespace flk
