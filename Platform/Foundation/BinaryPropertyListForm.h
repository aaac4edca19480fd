#pragma once

#include <cstddef>
#include <string_view>

// The form: "bplist00"; objects, each a marker byte (kind and size) and its bytes, containers naming others
// by number; a table of the objects' offsets; a trailer of 32 bytes with the sizes of offsets and numbers,
// the count, the top object and the table's place. All numbers are big-endian.

namespace zqcore::platform::propertylist {

inline constexpr std::string_view kHeader = "bplist00";
inline constexpr std::size_t kTrailer = 32;

enum BinaryMarker : unsigned {
    kFalse = 0x08,
    kTrue = 0x09,
    kInteger = 0x10,
    kReal = 0x20,
    kDate = 0x33,
    kData = 0x40,
    kASCII = 0x50,
    kUTF16 = 0x60,
    kArray = 0xA0,
    kDictionary = 0xD0,
};

}  // namespace zqcore::platform::propertylist
