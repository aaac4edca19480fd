#pragma once

#include <string_view>

namespace zqcore {

/// The emoji that a picker offers, in its order, as one text.
extern const std::string_view kSystemEmojiText;

}  // namespace zqcore
