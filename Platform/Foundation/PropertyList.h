#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

inline constexpr long NSPropertyListReadCorruptError = 3840;
inline constexpr long NSPropertyListWriteInvalidError = 3852;

/// Property lists as bytes: the binary form ("bplist00") and the XML form (version 1.0). Booleans, integers
/// (of both 64-bit ranges), reals, texts, data, dates, arrays and dictionaries are kept apart; null isn't
/// among them. Dates are doubles of seconds since 2001 in the binary form, whole seconds in XML. Threads:
/// any. Failure: an NSError (3840 on reading, 3852 on writing) that tells what is wrong and where; no input
/// crashes, recurses beyond 512 levels or costs more memory than a small multiple of its size.
class ZQ_EXPORT PropertyList final {
  public:
    enum class Format : unsigned { xml = 100, binary = 200 };

    PropertyList() = delete;

    /// Reads either form; `format` tells which it was. Strict: what is cut off, wrongly encoded or followed
    /// by anything else is refused as a whole. Of a repeated key the first counts.
    [[nodiscard]] static std::expected<Value, NSError> read(std::string_view bytes, Format* format = nullptr);
    /// Writes `value`. Reading it back gives an equal value, but for the precision of dates.
    [[nodiscard]] static std::expected<Data, NSError> write(const Value& value, Format format);
    /// What in `value` no property list can hold (a null, a text that isn't UTF-8, too deep a nesting), as a
    /// path and a reason; absent if all of it can be held.
    [[nodiscard]] static std::optional<std::string> whyInvalid(const Value& value);
};

}  // namespace zqcore::platform
