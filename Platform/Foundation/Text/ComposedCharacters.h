#pragma once

#include <cstddef>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

// The platform's composed character sequences, looked at from one place of a text rather than from its
// beginning: the clusters of UAX #29, but that CR LF is two. A byte that isn't UTF-8 counts as U+FFFD.
// Positions are bytes, at the beginning of a scalar; who has read that scalar already can hand it over. Any
// thread.

/// Where the sequence that begins at `begin` ends. `begin` is below the text's size.
[[nodiscard]] ZQ_EXPORT std::size_t composedSequenceEnd(std::string_view text, std::size_t begin,
                                                        DecodedScalar first);
[[nodiscard]] inline std::size_t composedSequenceEnd(std::string_view text, std::size_t begin) {
    return composedSequenceEnd(text, begin, firstScalar(text.substr(begin)));
}

/// Whether a sequence begins at `position`. `floor` is a place at or before it where one is known to begin (0
/// always serves); nothing before it is looked at.
[[nodiscard]] ZQ_EXPORT bool composedSequenceBegins(std::string_view text, std::size_t floor,
                                                    std::size_t position, DecodedScalar first);
[[nodiscard]] inline bool composedSequenceBegins(std::string_view text, std::size_t floor,
                                                 std::size_t position) {
    return composedSequenceBegins(text, floor, position, firstScalar(text.substr(position)));
}

}  // namespace zqcore::platform
