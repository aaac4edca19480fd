#include <bit>
#include <cmath>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "Platform/Foundation/PropertyListCoding.h"
#include "Platform/Foundation/Text/Utf8.h"

// The form: "bplist00"; objects, each a marker byte (kind and size) and its bytes, containers naming others
// by number; a table of the objects' offsets; a trailer of 32 bytes with the sizes of offsets and numbers,
// the count, the top object and the table's place. All numbers are big-endian.

namespace zqcore::platform::propertylist {

namespace {

constexpr std::string_view kHeader = "bplist00";
constexpr std::size_t kTrailer = 32;

enum Marker : unsigned {
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

    bool object(std::uint64_t reference, Value& out, int depth) {
        if (depth > kDepth) return fail("nested too deeply");
        if (reference >= count_) return fail("a reference to nothing");
        if (!spend(sizeof(Value) / 2)) return false;
        const std::uint64_t offset = number(bytes_.substr(table_ + reference * offsetSize_, offsetSize_));
        std::string_view head;
        if (offset < kHeader.size()) return fail("an object outside its place");
        if (!slice(offset, 1, head)) return false;
        const unsigned marker = static_cast<unsigned char>(head[0]);
        const std::size_t at = offset + 1;
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
            case kData:
            case kASCII:
            case kUTF16:
                return text(marker, at, out);
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

    bool text(unsigned marker, std::size_t at, Value& out) {
        std::uint64_t size = 0;
        std::string_view content;
        if (!length(marker, at, size)) return false;
        const bool wide = (marker & 0xF0) == kUTF16;
        if (wide && size > bytes_.size() / 2) return fail("an object reaches beyond its place");
        if (!slice(at, wide ? size * 2 : size, content) || !spend(content.size())) return false;
        if ((marker & 0xF0) == kData) {
            out = Data(std::string(content));
        } else if (wide) {
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
            Value key;
            Value value;
            if (!object(number(references.substr(i * referenceSize_, referenceSize_)), key, depth + 1))
                return false;
            if (!key.asString()) return fail("a key that is no text");
            if (!object(number(references.substr((size + i) * referenceSize_, referenceSize_)), value,
                        depth + 1)) {
                return false;
            }
            entries.insert(*key.asString(), std::move(value));
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

void appendNumber(std::string& out, std::uint64_t value, std::size_t size) {
    for (std::size_t i = size; i-- > 0;) out += static_cast<char>(value >> (8 * i));
}

std::size_t bytesFor(std::uint64_t greatest) {
    return greatest < 1U << 8 ? 1 : greatest < 1U << 16 ? 2 : greatest <= UINT32_MAX ? 4 : 8;
}

/// Numbers the objects from the top down, containers before what they hold, equal texts once; then writes
/// them.
class Writer final {
  public:
    std::string write(const Value& top) {
        collect(top);
        referenceSize_ = bytesFor(objects_.size());
        out_ = kHeader;
        std::vector<std::uint64_t> offsets;
        offsets.reserve(objects_.size());
        for (const auto& object : objects_) {
            offsets.push_back(out_.size());
            append(object);
        }
        const std::uint64_t table = out_.size();
        const std::size_t offsetSize = bytesFor(table);
        for (const std::uint64_t offset : offsets) appendNumber(out_, offset, offsetSize);
        out_.append(6, '\0');
        appendNumber(out_, offsetSize, 1);
        appendNumber(out_, referenceSize_, 1);
        appendNumber(out_, objects_.size(), 8);
        appendNumber(out_, 0, 8);
        appendNumber(out_, table, 8);
        return std::move(out_);
    }

  private:
    struct Object {
        const Value* value = nullptr;
        std::string_view text;
        std::vector<std::uint64_t> references;
    };

    std::uint64_t collectText(std::string_view text) {
        const auto [known, isNew] = texts_.try_emplace(text, objects_.size());
        if (isNew) objects_.push_back({.value = nullptr, .text = text, .references = {}});
        return known->second;
    }

    std::uint64_t collect(const Value& value) {
        if (const auto* text = value.asString()) return collectText(*text);
        const std::uint64_t own = objects_.size();
        objects_.push_back({.value = &value, .text = {}, .references = {}});
        std::vector<std::uint64_t> references;
        if (const auto* array = value.asArray()) {
            for (const auto& element : *array) references.push_back(collect(element));
        } else if (const auto* dictionary = value.asDictionary()) {
            for (const auto& entry : *dictionary) references.push_back(collectText(entry.first));
            for (const auto& entry : *dictionary) references.push_back(collect(entry.second));
        }
        objects_[own].references = std::move(references);
        return own;
    }

    void appendHead(unsigned kind, std::uint64_t size) {
        if (size < 0x0F) {
            appendNumber(out_, kind | size, 1);
        } else {
            appendNumber(out_, kind | 0x0F, 1);
            appendInteger(static_cast<std::int64_t>(size));
        }
    }

    void appendInteger(std::int64_t value) {
        // Only eight bytes carry a sign.
        const std::size_t size = value < 0 ? 8 : bytesFor(static_cast<std::uint64_t>(value));
        appendNumber(out_, kInteger | static_cast<unsigned>(std::countr_zero(size)), 1);
        appendNumber(out_, static_cast<std::uint64_t>(value), size);
    }

    void appendText(std::string_view text) {
        if (isASCII(text)) {
            appendHead(kASCII, text.size());
            out_ += text;
            return;
        }
        std::string units;
        while (!text.empty()) {
            const DecodedScalar decoded = firstScalar(text);
            const std::uint32_t scalar = decoded.value;
            text.remove_prefix(decoded.length);
            if (scalar >= 0x10000) {
                appendNumber(units, 0xD800 + ((scalar - 0x10000) >> 10), 2);
                appendNumber(units, 0xDC00 + ((scalar - 0x10000) & 0x3FF), 2);
            } else {
                appendNumber(units, scalar, 2);
            }
        }
        appendHead(kUTF16, units.size() / 2);
        out_ += units;
    }

    void append(const Object& object) {
        if (!object.value) {
            appendText(object.text);
            return;
        }
        const Value& value = *object.value;
        if (const auto boolean = value.asBool()) {
            appendNumber(out_, *boolean ? kTrue : kFalse, 1);
        } else if (const auto integer = value.asInt64()) {
            appendInteger(*integer);
        } else if (const auto large = value.asUInt64()) {
            appendNumber(out_, kInteger | 4U, 1);
            appendNumber(out_, 0, 8);
            appendNumber(out_, *large, 8);
        } else if (const auto real = value.asReal()) {
            appendNumber(out_, kReal | 3U, 1);
            appendNumber(out_, std::bit_cast<std::uint64_t>(*real), 8);
        } else if (const auto date = value.asDate()) {
            appendNumber(out_, kDate, 1);
            appendNumber(out_, std::bit_cast<std::uint64_t>(referenceOfDate(*date)), 8);
        } else if (const auto* data = value.asData()) {
            appendHead(kData, data->size());
            out_ += data->view();
        } else {
            const bool isArray = value.asArray() != nullptr;
            appendHead(isArray ? kArray : kDictionary,
                       isArray ? object.references.size() : object.references.size() / 2);
            for (const std::uint64_t reference : object.references) {
                appendNumber(out_, reference, referenceSize_);
            }
        }
    }

    std::vector<Object> objects_;
    std::unordered_map<std::string_view, std::uint64_t> texts_;
    std::size_t referenceSize_ = 1;
    std::string out_;
};

}  // namespace

std::expected<Value, std::string> readBinary(std::string_view bytes) { return Reader(bytes).read(); }

std::string writeBinary(const Value& value) { return Writer().write(value); }

}  // namespace zqcore::platform::propertylist
