#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

#include "Platform/Base/Value.h"

namespace zqcore::platform {

// The two forms of a property list, for PropertyList alone.
namespace propertylist {

// The two bodies. Depth counts the containers round a value.
inline constexpr int kDepth = 512;
/// Seconds from 1970 to 2001, where the dates of property lists begin.
inline constexpr std::int64_t kReferenceDate = 978307200;

/// Between a date and seconds since 2001; beyond the range of `Date` its nearest end.
[[nodiscard]] Date dateOfReference(double seconds) noexcept;
[[nodiscard]] double referenceOfDate(Date date) noexcept;

[[nodiscard]] std::expected<Value, std::string> readBinary(std::string_view bytes);
[[nodiscard]] std::expected<Value, std::string> readXML(std::string_view bytes);
// The value has passed `whyInvalid`.
[[nodiscard]] std::string writeBinary(const Value& value);
[[nodiscard]] std::expected<std::string, std::string> writeXML(const Value& value);

void appendUTF8(std::string& out, std::uint32_t scalar);

}  // namespace propertylist

}  // namespace zqcore::platform
