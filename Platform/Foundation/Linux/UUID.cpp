#include "Platform/Foundation/UUID.h"

#include <sys/random.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

namespace zqcore::platform {

std::string makeUUIDString() {
    std::array<std::uint8_t, 16> bits{};
    std::size_t filled = 0;
    while (filled < bits.size()) {
        const ssize_t got = getrandom(bits.data() + filled, bits.size() - filled, 0);
        // Only an interruption can fail this call (getrandom(2)); a UUID that isn't random must not go out.
        if (got < 0 && errno != EINTR) std::abort();
        if (got > 0) filled += static_cast<std::size_t>(got);
    }
    bits[6] = static_cast<std::uint8_t>((bits[6] & 0x0F) | 0x40);  // version
    bits[8] = static_cast<std::uint8_t>((bits[8] & 0x3F) | 0x80);  // variant
    constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += digits[bits[i] >> 4];
        text += digits[bits[i] & 0x0F];
    }
    return text;
}

}  // namespace zqcore::platform
