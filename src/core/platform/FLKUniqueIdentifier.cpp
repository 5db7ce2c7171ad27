#include "core/platform/FLKUniqueIdentifier.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <random>
#include <stdexcept>

namespace {

using Bytes = std::array<uint8_t, 16>;

// The kernel's generator needs no seeding or locking; the fallback only
// serves kernels without getrandom(2).
void fillRandom(Bytes& bytes) {
    size_t filled = 0;
    while (filled < bytes.size()) {
        ssize_t n = ::getrandom(bytes.data() + filled, bytes.size() - filled, 0);
        if (n > 0) {
            filled += static_cast<size_t>(n);
        } else if (n < 0 && errno != EINTR) {
            thread_local std::random_device device;
            for (size_t i = filled; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(device());
            return;
        }
    }
}

}  // namespace

namespace flk {

std::string uniqueIdentifier() {
    Bytes bytes;
    fillRandom(bytes);
    bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);  // RFC 4122 variant

    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
        text.push_back(digits[bytes[i] >> 4]);
        text.push_back(digits[bytes[i] & 0x0F]);
    }
    return text;
}

}  // namespace flk
