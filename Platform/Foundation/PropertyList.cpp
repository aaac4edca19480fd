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

std::optional<std::string> invalidity(const Value& value, const std::string& path, int depth) {
    const auto because = [&](const char* reason) { return (path.empty() ? "value" : path) + ": " + reason; };
    if (depth > propertylist::kDepth) return because("nested too deeply");
    switch (value.kind()) {
        case Value::Kind::null:
            return because("null");
        case Value::Kind::string:
            if (!isValidUTF8(*value.asString())) return because("not UTF-8");
            return std::nullopt;
        case Value::Kind::array: {
            std::size_t index = 0;
            for (const auto& element : *value.asArray()) {
                // The path is needed only where something is wrong, so it is not built on the way there.
                if (auto wrong = invalidity(element, {}, depth + 1)) {
                    return path + "[" + std::to_string(index) + "]" + *std::move(wrong);
                }
                ++index;
            }
            return std::nullopt;
        }
        case Value::Kind::dictionary:
            for (const auto& [key, element] : *value.asDictionary()) {
                if (!isValidUTF8(key)) return because("a key that is not UTF-8");
                if (auto wrong = invalidity(element, {}, depth + 1))
                    return path + "." + key + *std::move(wrong);
            }
            return std::nullopt;
        default:
            return std::nullopt;
    }
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

std::optional<std::string> PropertyList::whyInvalid(const Value& value) { return invalidity(value, {}, 0); }

}  // namespace zqcore::platform
