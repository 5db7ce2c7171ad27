#include "core/platform/FLKLog.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <vector>

namespace {
// Never destroyed: worker threads may still log while the process exits.
std::mutex& gSinkMutex = *new std::mutex;
std::function<void(const std::string&)>& gSink = *new std::function<void(const std::string&)>;  // guarded by gSinkMutex
std::mutex& gBreadcrumbMutex = *new std::mutex;
flk::BreadcrumbSink& gBreadcrumbSink = *new flk::BreadcrumbSink;  // guarded by gBreadcrumbMutex
}  // namespace

namespace flk {
void log(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    std::vector<char> buffer(n > 0 ? static_cast<size_t>(n) + 1 : 1);
    std::vsnprintf(buffer.data(), buffer.size(), format, args);
    va_end(args);
    std::string line(buffer.data());
    std::lock_guard lock(gSinkMutex);
    if (gSink) {
        gSink(line);
    } else {
        std::fprintf(stderr, "%s\n", line.c_str());
    }
}

void setLogSink(std::function<void(const std::string&)> sink) {
    std::lock_guard lock(gSinkMutex);
    gSink = std::move(sink);
}

void breadcrumb(const char* function, int line, const std::string& text) {
    std::lock_guard lock(gBreadcrumbMutex);
    if (gBreadcrumbSink) gBreadcrumbSink(function, line, text);
}

void setBreadcrumbSink(BreadcrumbSink sink) {
    std::lock_guard lock(gBreadcrumbMutex);
    gBreadcrumbSink = std::move(sink);
}
}  // namespace flk
