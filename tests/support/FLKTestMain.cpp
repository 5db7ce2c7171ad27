// Every test program runs with its own empty FLICKWELL_HOME, so stores, user
// defaults and templates never touch the developer's files or each other.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "core/platform/FLKMainQueue.h"
#include "core/platform/FLKThreadReaper.h"

int main(int argc, char** argv) {
    std::string pattern = (std::filesystem::temp_directory_path() / "flickwell-test-XXXXXX").string();
    char* home = ::mkdtemp(pattern.data());
    if (!home) return 2;
    ::setenv("FLICKWELL_HOME", home, 1);
    ::setenv("SDL_AUDIODRIVER", "dummy", 0);
    ::setenv("EGL_PLATFORM", "surfaceless", 0);
    ::testing::InitGoogleTest(&argc, argv);
    int result = RUN_ALL_TESTS();
    // No thread of ours may outlive main(): static destructors would race it.
    FLKMainQueue::setMain(nullptr);
    flk::joinReleasedThreads(true);
    std::error_code ec;
    std::filesystem::remove_all(home, ec);
    return result;
}
