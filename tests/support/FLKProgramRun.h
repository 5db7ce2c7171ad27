#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/platform/FLKPaths.h"
#include "core/platform/FLKUniqueIdentifier.h"

namespace flk::testing {

// What one of our programs did when run by a test.
struct ProgramRun {
    int exitCode = -1;  // -1 when it did not exit normally
    std::string standardOutput;
    std::string standardError;
    // Both, output first: for checks that do not care where a message went.
    std::string output() const { return standardOutput + standardError; }
};

// Runs "<program> <arguments>" through the shell (quote arguments yourself).
inline ProgramRun runProgram(const std::string& program, const std::string& arguments) {
    const auto errors = std::filesystem::temp_directory_path() / ("flk-stderr-" + flk::uniqueIdentifier());
    const std::string command = program + " " + arguments + " 2>'" + errors.string() + "'";
    ProgramRun run;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        std::array<char, 512> chunk;
        while (size_t n = fread(chunk.data(), 1, chunk.size(), pipe)) run.standardOutput.append(chunk.data(), n);
        const int status = pclose(pipe);
        run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    std::ifstream in(errors);
    run.standardError.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    std::error_code ignored;
    std::filesystem::remove(errors, ignored);
    return run;
}

inline std::string quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

// What is left in the store of documents' working folders: nothing once
// every program that opened a document has ended.
inline std::vector<std::string> workingFoldersLeft() {
    std::vector<std::string> names;
    std::error_code ec;
    for (std::filesystem::directory_iterator it(flk::temporaryHome() / "Files", ec), end; !ec && it != end;
         it.increment(ec)) {
        names.push_back(it->path().filename().string());
    }
    return names;
}

}  // namespace flk::testing
