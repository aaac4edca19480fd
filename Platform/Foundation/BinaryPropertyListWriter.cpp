#include <bit>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Foundation/BinaryPropertyListForm.h"
#include "Platform/Foundation/PropertyListCoding.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform::propertylist {

namespace {

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

std::string writeBinary(const Value& value) { return Writer().write(value); }

}  // namespace zqcore::platform::propertylist
