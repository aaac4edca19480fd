#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Why a JSON text could not be read or a value not be written: what, and at which field.
/// Threads: a value.
struct ZQ_EXPORT JSONError {
    enum class Kind : unsigned char {
        corrupted,      ///< the text breaks the grammar, or is not UTF-8, or nests too deep
        typeMismatch,   ///< a value of another kind than the field's
        valueNotFound,  ///< null where a value is required
        keyNotFound,    ///< a required key is missing
        outOfRange,     ///< a number that the field's type can't hold
        invalidValue,   ///< a value that JSON can't express
    };

    Kind kind = Kind::corrupted;
    /// Of the field, as "body.items[3].kind"; empty at the top.
    std::string path;
    std::string reason;
    /// In bytes from the beginning of the text; 0 when writing.
    std::size_t offset = 0;

    /// "PATH: REASON (byte OFFSET)", without what is not known.
    [[nodiscard]] std::string description() const;
};

/// One step on the way from the top to the value in hand. The steps lie on the stack of the code that walks
/// down and cost a store each; they are put together to a text only when something fails.
struct JSONPathNode {
    const JSONPathNode* parent = nullptr;
    std::string_view key;
    /// Counts when `key` has no data.
    std::size_t index = 0;
};

[[nodiscard]] ZQ_EXPORT std::string describe(const JSONPathNode* node);

}  // namespace zqcore::platform
