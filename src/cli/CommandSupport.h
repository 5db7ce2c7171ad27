#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/platform/FLKRect.h"
#include "core/platform/FLKSize.h"

// Small pieces every subcommand shares: argument formats and error output.
namespace flk::cli {

// Prints "flickwell-cli: <message>" to standard error; answers exit status 1.
int fail(const std::string& message);
// Prints "flickwell-cli: warning: <message>" to standard error.
void warn(const std::string& message);

// "WxH" with whole numbers from 1 to 16384.
std::optional<FLKSize> parseSize(const std::string& text);
// "X,Y,W,H" with a positive width and height.
std::optional<FLKRect> parseFrame(const std::string& text);

// "1080×1920"
std::string sizeString(FLKSize size);

// A file or folder a command reads, as messages name it: {"--video", path}.
struct Input {
    std::string option;
    std::filesystem::path url;
};
// Why writing `output` would destroy one of the inputs (the same file under
// any name, or a file inside an input folder), or nothing.
std::optional<std::string> outputReplacingInput(const std::filesystem::path& output, const std::vector<Input>& inputs);

}  // namespace flk::cli
