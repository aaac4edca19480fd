#include "Platform/Foundation/JSON/JSONNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace zqcore::platform {

namespace {

constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

bool hasDigitOtherThanZero(std::string_view token) {
    for (const char c : token) {
        if (c == 'e' || c == 'E') return false;
        if (c >= '1' && c <= '9') return true;
    }
    return false;
}

/// The value of a token with fraction or exponent as an exact whole number below 2^64; absent if it has a
/// fraction or is larger. Doubles stop being exact at 2^53, decimal digits don't.
std::optional<std::uint64_t> exactMagnitude(std::string_view token) {
    if (token.front() == '-') token.remove_prefix(1);
    long exponent = 0;
    if (const auto e = token.find_first_of("eE"); e != std::string_view::npos) {
        std::string_view digits = token.substr(e + 1);
        if (digits.front() == '+') digits.remove_prefix(1);
        if (std::from_chars(digits.data(), digits.data() + digits.size(), exponent).ec != std::errc{}) {
            return std::nullopt;
        }
        token = token.substr(0, e);
    }
    const auto point = token.find('.');
    const std::string_view whole = token.substr(0, point);
    const std::string_view fraction = point == std::string_view::npos ? "" : token.substr(point + 1);
    std::uint64_t value = 0;
    const auto take = [&value](char c) {
        const auto digit = static_cast<std::uint64_t>(c - '0');
        return !__builtin_mul_overflow(value, 10U, &value) && !__builtin_add_overflow(value, digit, &value);
    };
    // The point moves by the exponent: digits before it count, those after it must be zeros.
    const long pointAt = static_cast<long>(whole.size()) + exponent;
    const long count = static_cast<long>(whole.size() + fraction.size());
    for (long i = 0; i < std::max(count, pointAt); ++i) {
        const auto at = static_cast<std::size_t>(i);
        const char c = i >= count ? '0' : at < whole.size() ? whole[at] : fraction[at - whole.size()];
        if (i >= pointAt) {
            if (c != '0') return std::nullopt;
        } else if (!take(c)) {
            return std::nullopt;
        }
    }
    return value;
}

}  // namespace

std::optional<std::int64_t> JSONNumber::asInt64() const noexcept {
    constexpr auto limit = std::uint64_t{1} << 63;
    if (integral) {
        if (!fits || magnitude > limit || (magnitude == limit && !negative)) return std::nullopt;
        return static_cast<std::int64_t>(negative ? 0 - magnitude : magnitude);
    }
    const auto value = asDouble();
    if (!value || *value != std::trunc(*value) || *value >= kTwoTo63 || *value < -kTwoTo63)
        return std::nullopt;
    if (std::abs(*value) < kExactIntegers) return static_cast<std::int64_t>(*value);
    const auto exact = exactMagnitude(token);
    if (!exact || *exact > limit || (*exact == limit && !negative)) return std::nullopt;
    return static_cast<std::int64_t>(negative ? 0 - *exact : *exact);
}

std::optional<std::uint64_t> JSONNumber::asUInt64() const noexcept {
    if (integral) {
        if (!fits || (negative && magnitude != 0)) return std::nullopt;
        return magnitude;
    }
    const auto value = asDouble();
    if (!value || *value != std::trunc(*value) || *value >= kTwoTo64 || *value < 0) return std::nullopt;
    if (*value < kExactIntegers) return static_cast<std::uint64_t>(*value);
    return exactMagnitude(token);
}

std::optional<double> JSONNumber::asDouble() const noexcept {
    if (fits && magnitude <= (std::uint64_t{1} << 53)) {
        const auto value = static_cast<double>(magnitude);
        return negative ? -value : value;
    }
    double value = 0;
    const auto [end, error] = std::from_chars(token.data(), token.data() + token.size(), value);
    if (error != std::errc{} || std::isinf(value)) return std::nullopt;
    if (value == 0 && hasDigitOtherThanZero(token)) return std::nullopt;
    return value;
}

char* writeDouble(double value, char* out) noexcept {
    const double size = std::abs(value);
    const bool decimal = size == 0 || (size >= 1e-4 && size <= kExactIntegers);
    return std::to_chars(out, out + kDoubleRoom, value,
                         decimal ? std::chars_format::fixed : std::chars_format::scientific)
        .ptr;
}

std::string describeDouble(double value) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    char buffer[kDoubleRoom];
    std::string text(buffer, writeDouble(value, buffer));
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

}  // namespace zqcore::platform
