#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What a monitor says about itself in its EDID block.
namespace flk::edid {
// The monitor name descriptor (tag 0xFC), trimmed; nullopt when the block is
// not EDID or carries no name.
std::optional<std::string> productName(const std::vector<uint8_t>& edid);
// Maker, product code and serial number as "ABC-1234-56789"; stays the same
// whichever port the monitor is plugged into. Nullopt for a block that is not EDID.
std::optional<std::string> identity(const std::vector<uint8_t>& edid);
}  // namespace flk::edid
