#include <simdjson.h>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

bool isValidUTF8(std::string_view text) noexcept {
    // Short texts are mostly ASCII, and then the dispatched validator isn't worth its call.
    if (text.size() < 64 && isASCII(text)) return true;
    return simdjson::validate_utf8(text.data(), text.size());
}

}  // namespace zqcore::platform
