#pragma once

#include <optional>
#include <string>

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

}  // namespace flk::cli
