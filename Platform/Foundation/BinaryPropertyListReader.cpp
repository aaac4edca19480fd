#include <bit>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Foundation/BinaryPropertyListForm.h"
#include "Platform/Foundation/PropertyListCoding.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform::propertylist {

namespace {

std::uint64_t number(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char c : bytes) value = value << 8 | static_cast<unsigned char>(c);
    return value;
}

/// Reads UTF-16 in big-endian order; absent for an unpaired surrogate.
std::optional<std::string> textOfUTF16(std::string_view bytes) {
    std::string out;
    out.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        auto scalar = static_cast<std::uint32_t>(number(bytes.substr(i, 2)));
        if (scalar >= 0xD800 && scalar <= 0xDFFF) {
            const auto low =
                static_cast<std::uint32_t>(number(bytes.substr(std::min(i + 2, bytes.size()), 2)));
            if (scalar > 0xDBFF || low < 0xDC00 || low > 0xDFFF) return std::nullopt;
            scalar = 0x10000 + ((scalar - 0xD800) << 10) + (low - 0xDC00);
            i += 2;
        }
        appendUTF8(out, scalar);
    }
    return out;
}

class Reader final {
  public:
    explicit Reader(std::string_view bytes) : bytes_(bytes) {}

    std::expected<Value, std::string> read() {
        if (!bytes_.starts_with(kHeader)) return std::unexpected("unknown version");
        if (bytes_.size() < kHeader.size() + kTrailer) return std::unexpected("cut off");
        const std::string_view trailer = bytes_.substr(bytes_.size() - kTrailer);
        offsetSize_ = number(trailer.substr(6, 1));
        referenceSize_ = number(trailer.substr(7, 1));
        count_ = number(trailer.substr(8, 8));
        table_ = number(trailer.substr(24, 8));
        const std::size_t room = bytes_.size() - kTrailer;
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8 ||
            table_ < kHeader.size() || table_ > room || count_ > (room - table_) / offsetSize_) {
            return std::unexpected("wrong trailer");
        }
        // Objects may be named many times over, so a small file could unfold into an endless value.
        constexpr std::size_t kSpare = 1 << 20;
        budget_ = kSpare + 16 * bytes_.size();
        Value value;
        if (!object(number(trailer.substr(16, 8)), value, 0)) return std::unexpected(error_);
        return value;
    }

  private:
    bool fail(const char* reason) {
        error_ = reason;
        return false;
    }

    /// Takes `size` of what memory the value may cost.
    bool spend(std::size_t size) {
        if (size > budget_) return fail("unfolds beyond measure");
        budget_ -= size;
        return true;
    }

    /// The bytes from `at` on, which have to end before the table.
    bool slice(std::size_t at, std::uint64_t size, std::string_view& out) {
        if (at > table_ || size > table_ - at) return fail("an object reaches beyond its place");
        out = bytes_.substr(at, size);
        return true;
    }

    /// The count in a marker's lower half, or in the integer object behind it; `at` moves behind it.
    bool length(unsigned marker, std::size_t& at, std::uint64_t& out) {
        out = marker & 0x0F;
        if (out != 0x0F) return true;
        std::string_view head;
        if (!slice(at, 1, head)) return false;
        const unsigned inner = static_cast<unsigned char>(head[0]);
        if ((inner & 0xF0) != kInteger || (inner & 0x0F) > 3) return fail("a count that is none");
        std::string_view digits;
        if (!slice(at + 1, std::size_t{1} << (inner & 0x0F), digits)) return false;
        out = number(digits);
        at += 1 + digits.size();
        return true;
    }

    /// Finds an object: its marker, and where its bytes go on.
    bool locate(std::uint64_t reference, unsigned& marker, std::size_t& at) {
        if (reference >= count_) return fail("a reference to nothing");
        if (!spend(sizeof(Value) / 2)) return false;
        const std::uint64_t offset = number(bytes_.substr(table_ + reference * offsetSize_, offsetSize_));
        std::string_view head;
        if (offset < kHeader.size()) return fail("an object outside its place");
        if (!slice(offset, 1, head)) return false;
        marker = static_cast<unsigned char>(head[0]);
        at = offset + 1;
        return true;
    }

    bool object(std::uint64_t reference, Value& out, int depth) {
        unsigned marker = 0;
        std::size_t at = 0;
        if (depth > kDepth) return fail("nested too deeply");
        if (!locate(reference, marker, at)) return false;
        switch (marker & 0xF0) {
            case 0x00:
                if (marker != kTrue && marker != kFalse) return fail("an object that is no value");
                out = marker == kTrue;
                return true;
            case kInteger:
                return integer(marker, at, out);
            case kReal:
            case kDate & 0xF0:
                return realOrDate(marker, at, out);
            case kData: {
                std::string_view content;
                if (!slice(marker, at, 1, content)) return false;
                out = Data(std::string(content));
                return true;
            }
            case kASCII:
            case kUTF16: {
                std::string content;
                if (!text(marker, at, content)) return false;
                out = std::move(content);
                return true;
            }
            case kArray:
                return array(marker, at, out, depth);
            case kDictionary:
                return dictionary(marker, at, out, depth);
            default:
                return fail("an object of an unknown kind");
        }
    }

    bool integer(unsigned marker, std::size_t at, Value& out) {
        if ((marker & 0x0F) > 4) return fail("an integer of more than 128 bits");
        std::string_view digits;
        if (!slice(at, std::size_t{1} << (marker & 0x0F), digits)) return false;
        if (digits.size() < 8) {
            out = number(digits);
        } else if (digits.size() == 8) {
            out = static_cast<std::int64_t>(number(digits));
        } else {
            const std::uint64_t high = number(digits.substr(0, 8));
            const std::uint64_t low = number(digits.substr(8));
            if (high == 0) {
                out = low;
            } else if (high == ~std::uint64_t{0} && low >> 63) {
                out = static_cast<std::int64_t>(low);
            } else {
                return fail("an integer beyond 64 bits");
            }
        }
        return true;
    }

    bool realOrDate(unsigned marker, std::size_t at, Value& out) {
        std::string_view digits;
        if (marker == (kReal | 2U)) {
            if (!slice(at, 4, digits)) return false;
            out = static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(number(digits))));
            return true;
        }
        if (marker != (kReal | 3U) && marker != kDate) return fail("a real of an unknown size");
        if (!slice(at, 8, digits)) return false;
        const auto value = std::bit_cast<double>(number(digits));
        if (marker != kDate) {
            out = value;
            return true;
        }
        if (std::isnan(value)) return fail("a date that is none");
        out = dateOfReference(value);
        return true;
    }

    /// The bytes of an object that counts units of `unit` bytes.
    bool slice(unsigned marker, std::size_t at, std::size_t unit, std::string_view& out) {
        std::uint64_t size = 0;
        if (!length(marker, at, size)) return false;
        if (size > bytes_.size()) return fail("an object reaches beyond its place");
        return slice(at, size * unit, out) && spend(out.size());
    }

    bool text(unsigned marker, std::size_t at, std::string& out) {
        const bool wide = (marker & 0xF0) == kUTF16;
        std::string_view content;
        if (!slice(marker, at, wide ? 2 : 1, content)) return false;
        if (wide) {
            auto decoded = textOfUTF16(content);
            if (!decoded) return fail("a text with half a surrogate pair");
            out = *std::move(decoded);
        } else {
            // Some writers put UTF-8 here; it reads as what it is.
            if (!isValidUTF8(content)) return fail("a text that is not ASCII");
            out = content;
        }
        return true;
    }

    bool array(unsigned marker, std::size_t at, Value& out, int depth) {
        std::uint64_t size = 0;
        std::string_view references;
        if (!length(marker, at, size)) return false;
        if (size > bytes_.size()) return fail("an object reaches beyond its place");
        if (!slice(at, size * referenceSize_, references) || !spend(size * sizeof(Value))) return false;
        Value::Array elements(size);
        for (std::size_t i = 0; i < size; ++i) {
            const std::uint64_t reference = number(references.substr(i * referenceSize_, referenceSize_));
            if (!object(reference, elements[i], depth + 1)) return false;
        }
        out = std::move(elements);
        return true;
    }

    bool dictionary(unsigned marker, std::size_t at, Value& out, int depth) {
        std::uint64_t size = 0;
        std::string_view references;
        if (!length(marker, at, size)) return false;
        if (size > bytes_.size()) return fail("an object reaches beyond its place");
        if (!slice(at, 2 * size * referenceSize_, references)) return false;
        Value::Dictionary entries;
        for (std::size_t i = 0; i < size; ++i) {
            unsigned keyMarker = 0;
            std::size_t keyAt = 0;
            std::string key;
            Value value;
            if (!locate(number(references.substr(i * referenceSize_, referenceSize_)), keyMarker, keyAt))
                return false;
            const unsigned kind = keyMarker & 0xF0;
            if (kind != kASCII && kind != kUTF16) return fail("a key that is no text");
            if (!text(keyMarker, keyAt, key) ||
                !object(number(references.substr((size + i) * referenceSize_, referenceSize_)), value,
                        depth + 1)) {
                return false;
            }
            entries.insert(std::move(key), std::move(value));
        }
        out = std::move(entries);
        return true;
    }

    std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t count_ = 0;
    std::uint64_t table_ = 0;
    std::size_t budget_ = 0;
    const char* error_ = "";
};

}  // namespace

std::expected<Value, std::string> readBinary(std::string_view bytes) { return Reader(bytes).read(); }

}  // namespace zqcore::platform::propertylist
