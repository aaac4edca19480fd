#include <simdjson.h>

#include <array>
#include <cstring>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

namespace {

using Implementation = simdjson::implementation;

/// simdjson's operations for this processor. Its own object ends with the other statics, while threads may
/// still read texts and destructors may still log; a call that comes then ends the process. So the calls go
/// by a copy that nothing ends: an operation uses nothing of its object but the table of virtual functions.
const Implementation& validator() noexcept {
    alignas(Implementation) static std::array<std::byte, sizeof(Implementation)> copy;
    static const auto* const made = [] {
        const void* best = simdjson::get_available_implementations().detect_best_supported();
        return static_cast<const Implementation*>(std::memcpy(copy.data(), best, copy.size()));
    }();
    return *made;
}

}  // namespace

bool isValidUTF8(std::string_view text) noexcept {
    // Short texts are mostly ASCII, and then the dispatched validator isn't worth its call.
    if (text.size() < 64 && isASCII(text)) return true;
    return validator().validate_utf8(text.data(), text.size());
}

}  // namespace zqcore::platform
