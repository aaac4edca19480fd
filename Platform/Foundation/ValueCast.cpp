#include "Platform/Foundation/ValueCast.h"

#include <cmath>

namespace zqcore::platform {

std::optional<std::int64_t> exactInt64(const Value& object) noexcept {
    if (const auto boolean = object.asBool()) return *boolean ? 1 : 0;
    if (const auto real = object.asReal()) {
        // 2^63 is the first double above the range.
        constexpr double limit = 9223372036854775808.0;
        if (*real >= -limit && *real < limit && std::trunc(*real) == *real) {
            return static_cast<std::int64_t>(*real);
        }
        return std::nullopt;
    }
    return object.asInt64();
}

std::optional<std::uint64_t> exactUInt64(const Value& object) noexcept {
    if (const auto boolean = object.asBool()) return *boolean ? 1U : 0U;
    if (const auto real = object.asReal()) {
        constexpr double limit = 18446744073709551616.0;
        if (*real >= 0 && *real < limit && std::trunc(*real) == *real)
            return static_cast<std::uint64_t>(*real);
        return std::nullopt;
    }
    return object.asUInt64();
}

std::optional<double> exactDouble(const Value& object) noexcept {
    if (object.kind() != Value::Kind::integer) return object.numberAsDouble();
    const auto number = object.numberAsDouble();
    const Value back = *number;
    const bool exact =
        object.asInt64() ? exactInt64(back) == object.asInt64() : exactUInt64(back) == object.asUInt64();
    return exact ? number : std::nullopt;
}

std::optional<bool> exactBool(const Value& object) noexcept {
    const auto number = exactInt64(object);
    if (!number || *number < 0 || *number > 1) return std::nullopt;
    return *number == 1;
}

}  // namespace zqcore::platform
