#pragma once

#include <string>

namespace flk {
// A fresh random (version 4) UUID in upper case, e.g.
// "3F2504E0-4F89-41D3-9A0C-0305E82C3301": the identifiers documents carry.
// Safe to call from any thread.
std::string uniqueIdentifier();
}  // namespace flk
