#pragma once

#include <cstddef>

namespace zqcore::platform::base64 {

/// Takes whole blocks off the front of a conversion with vector instructions, where the processor has them.
/// Each advances both pointers past what it converted and leaves the rest to the caller.

/// Bytes to text. `output` has room for the whole encoded text.
void encodeBlocks(const char*& input, const char* inputEnd, char*& output) noexcept;

/// Text to bytes; stops before the first block with a character outside the alphabet. `output` has room for
/// three bytes for every four characters left, and for eight more that may be overwritten.
void decodeBlocks(const char*& input, const char* inputEnd, char*& output) noexcept;

}  // namespace zqcore::platform::base64
