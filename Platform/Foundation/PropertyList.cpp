#include "Platform/Foundation/PropertyList.h"

#include <cmath>
#include <cstdint>

#include "Platform/Foundation/PropertyListCoding.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

namespace propertylist {

void appendUTF8(std::string& out, std::uint32_t scalar) {
    const auto trail = [&](int shift) { out += static_cast<char>(0x80 | (scalar >> shift & 0x3F)); };
    if (scalar < 0x80) {
        out += static_cast<char>(scalar);
    } else if (scalar < 0x800) {
        out += static_cast<char>(0xC0 | scalar >> 6);
        trail(0);
    } else if (scalar < 0x10000) {
        out += static_cast<char>(0xE0 | scalar >> 12);
        trail(6);
        trail(0);
    } else {
        out += static_cast<char>(0xF0 | scalar >> 18);
        trail(12);
        trail(6);
        trail(0);
    }
}

Date dateOfReference(double seconds) noexcept {
    // The whole seconds are moved as integers, so that the distance of the two epochs costs no digits.
    constexpr double limit = 8.2e9;
    if (!(seconds > -limit)) return Date{std::chrono::nanoseconds::min()};
    if (seconds > limit) return Date{std::chrono::nanoseconds::max()};
    const double whole = std::floor(seconds);
    const auto fraction = static_cast<std::int64_t>(std::llround((seconds - whole) * 1e9));
    return Date{std::chrono::seconds(static_cast<std::int64_t>(whole) + kReferenceDate) +
                std::chrono::nanoseconds(fraction)};
}

double referenceOfDate(Date date) noexcept {
    const auto whole = std::chrono::floor<std::chrono::seconds>(date);
    return static_cast<double>(whole.time_since_epoch().count() - kReferenceDate) +
           static_cast<double>((date - whole).count()) / 1e9;
}

}  // namespace propertylist

namespace {

/// What is wrong in `value`, as the path to it and a reason. Paths are built on the way back, where alone
/// they are needed.
std::optional<std::string> invalidity(const Value& value, int depth) {
    if (depth > propertylist::kDepth) return ": nested too deeply";
    if (value.isNull()) return ": null";
    if (const auto* text = value.asString(); text && !isValidUTF8(*text)) return ": not UTF-8";
    if (const auto* array = value.asArray()) {
        for (std::size_t i = 0; i < array->size(); ++i) {
            if (auto wrong = invalidity((*array)[i], depth + 1))
                return "[" + std::to_string(i) + "]" + *wrong;
        }
    } else if (const auto* dictionary = value.asDictionary()) {
        for (const auto& [key, element] : *dictionary) {
            if (!isValidUTF8(key)) return ": a key that is not UTF-8";
            if (auto wrong = invalidity(element, depth + 1)) return "." + key + *wrong;
        }
    }
    return std::nullopt;
}

NSError refused(long code, std::string reason) {
    return NSError(NSCocoaErrorDomain, code, "property list: " + std::move(reason));
}

}  // namespace

std::expected<Value, NSError> PropertyList::read(std::string_view bytes, Format* format) {
    const bool binary = bytes.starts_with("bplist");
    auto value = binary ? propertylist::readBinary(bytes) : propertylist::readXML(bytes);
    if (!value) return std::unexpected(refused(NSPropertyListReadCorruptError, std::move(value.error())));
    if (format) *format = binary ? Format::binary : Format::xml;
    return *std::move(value);
}

std::expected<Data, NSError> PropertyList::write(const Value& value, Format format) {
    if (auto wrong = whyInvalid(value)) {
        return std::unexpected(refused(NSPropertyListWriteInvalidError, *std::move(wrong)));
    }
    if (format == Format::binary) return Data(propertylist::writeBinary(value));
    auto text = propertylist::writeXML(value);
    if (!text) return std::unexpected(refused(NSPropertyListWriteInvalidError, std::move(text.error())));
    return Data(*std::move(text));
}

std::optional<std::string> PropertyList::whyInvalid(const Value& value) {
    auto wrong = invalidity(value, 0);
    if (wrong && wrong->starts_with(':')) wrong->insert(0, "value");
    return wrong;
}

}  // namespace zqcore::platform
