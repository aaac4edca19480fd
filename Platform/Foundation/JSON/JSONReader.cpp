#include "Platform/Foundation/JSON/JSONReader.h"

#include <bitset>
#include <cstring>
#include <utility>

#include "Platform/Foundation/JSON/JSONReaderScan.h"
#include "Platform/Foundation/JSON/JSONRecord.h"

namespace zqcore::platform {

namespace {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether `size` bytes are the same; 4 at least, so that two loads that overlap see most keys whole.
inline bool sameBytes(const char* a, const char* b, std::size_t size) {
    if (size > 16) return std::memcmp(a, b, size) == 0;
    const auto differ = [a, b, size]<class Word>(Word) {
        const std::size_t last = size - sizeof(Word);
        Word a1, a2, b1, b2;
        std::memcpy(&a1, a, sizeof(Word));
        std::memcpy(&b1, b, sizeof(Word));
        std::memcpy(&a2, a + last, sizeof(Word));
        std::memcpy(&b2, b + last, sizeof(Word));
        return ((a1 ^ b1) | (a2 ^ b2)) != 0;
    };
    return size >= 8 ? !differ(std::uint64_t{}) : !differ(std::uint32_t{});
}

const char* nameOf(JSONReader::Kind kind) {
    static constexpr const char* names[] = {"null",     "a boolean", "a number",      "a string",
                                            "an array", "an object", "something else"};
    return names[static_cast<std::size_t>(kind)];
}

}  // namespace

JSONReader::JSONReader(std::string_view text) noexcept
    : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {
    if (text.starts_with("\xEF\xBB\xBF")) at_ += 3;
}

inline void JSONReader::skipBlanks() noexcept {
    while (at_ < end_ && (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t')) ++at_;
}

bool JSONReader::fail(JSONError::Kind kind, std::string reason) {
    if (!error_) {
        error_ = JSONError{kind, describe(path_), std::move(reason), static_cast<std::size_t>(at_ - begin_)};
    }
    return false;
}

bool JSONReader::corrupted(const char* reason) { return fail(JSONError::Kind::corrupted, reason); }

bool JSONReader::mismatch(std::string_view wanted) {
    const Kind found = peek();
    if (found == Kind::invalid) return corrupted(at_ == end_ ? "unexpected end of text" : "expected a value");
    const auto kind = found == Kind::null ? JSONError::Kind::valueNotFound : JSONError::Kind::typeMismatch;
    return fail(kind, "expected " + std::string(wanted) + ", found " + nameOf(found));
}

std::optional<JSONError> JSONReader::takeMismatch() {
    if (!error_) return std::nullopt;
    switch (error_->kind) {
        case JSONError::Kind::typeMismatch:
        case JSONError::Kind::valueNotFound:
        case JSONError::Kind::outOfRange:
            return std::exchange(error_, std::nullopt);
        default:
            return std::nullopt;
    }
}

JSONReader::Kind JSONReader::peek() noexcept {
    skipBlanks();
    if (at_ == end_) return Kind::invalid;
    switch (*at_) {
        case '"':
            return Kind::string;
        case '{':
            return Kind::object;
        case '[':
            return Kind::array;
        case 't':
        case 'f':
            return Kind::boolean;
        case 'n':
            return Kind::null;
        default:
            return isDigit(*at_) || *at_ == '-' ? Kind::number : Kind::invalid;
    }
}

bool JSONReader::takeText(std::string_view& out) {
    RawText raw;
    if (!scanString(raw)) return false;
    if (raw.stop == raw.to) [[likely]] {
        out = {raw.from, static_cast<std::size_t>(raw.to - raw.from)};
    } else {
        if (!unescape(raw, scratch_)) return false;
        out = scratch_;
    }
    at_ = raw.to + 1;
    return true;
}

bool JSONReader::readText(std::string_view& out) {
    skipBlanks();
    return at_ < end_ && *at_ == '"' ? takeText(out) : mismatch("a string");
}

bool JSONReader::readString(std::string& out) {
    skipBlanks();
    if (at_ == end_ || *at_ != '"') return mismatch("a string");
    RawText raw;
    if (!scanString(raw)) return false;
    if (raw.stop == raw.to) [[likely]] {
        out.assign(raw.from, static_cast<std::size_t>(raw.to - raw.from));
    } else if (!unescape(raw, out)) {
        return false;
    }
    at_ = raw.to + 1;
    return true;
}

bool JSONReader::consumeNullHere() {
    skipBlanks();
    return at_ < end_ && *at_ == 'n' && word("null");
}

bool JSONReader::word(std::string_view text) {
    if (static_cast<std::size_t>(end_ - at_) < text.size() ||
        std::memcmp(at_, text.data(), text.size()) != 0) {
        return corrupted("misspelt word");
    }
    at_ += text.size();
    return true;
}

bool JSONReader::readBool(bool& out) {
    if (peek() != Kind::boolean) return mismatch("a boolean");
    out = *at_ == 't';
    return word(out ? "true" : "false");
}

bool JSONReader::scanNumber(JSONNumber& out) {
    const char* at = at_;
    out = {};
    out.negative = *at == '-';
    if (out.negative) ++at;
    if (at == end_ || !isDigit(*at)) return corrupted("a number without digits");
    const char* digits = at;
    if (*at == '0') {
        ++at;
    } else {
        while (at < end_ && isDigit(*at)) {
            out.magnitude = out.magnitude * 10 + static_cast<std::uint64_t>(*at - '0');
            ++at;
        }
    }
    if (at < end_ && isDigit(*at)) return corrupted("a number with leading zero");
    const auto count = at - digits;
    if (at < end_ && *at == '.') {
        out.integral = false;
        const char* fraction = ++at;
        while (at < end_ && isDigit(*at)) ++at;
        if (at == fraction) return corrupted("a number without digits after its point");
    }
    if (at < end_ && (*at == 'e' || *at == 'E')) {
        out.integral = false;
        ++at;
        if (at < end_ && (*at == '+' || *at == '-')) ++at;
        const char* exponent = at;
        while (at < end_ && isDigit(*at)) ++at;
        if (at == exponent) return corrupted("a number without digits in its exponent");
    }
    out.token = {at_, static_cast<std::size_t>(at - at_)};
    if (out.integral) {
        // Nineteen digits always fit; of twenty, those that begin with 1 and didn't wrap round.
        constexpr std::uint64_t ten19 = 10'000'000'000'000'000'000U;
        out.fits = count < 20 || (count == 20 && *digits == '1' && out.magnitude >= ten19);
    }
    return true;
}

bool JSONReader::readNumber(JSONNumber& out) {
    if (peek() != Kind::number) return mismatch("a number");
    if (!scanNumber(out)) return false;
    at_ += out.token.size();
    return true;
}

bool JSONReader::readInt64(std::int64_t& out) {
    if (peek() != Kind::number) return mismatch("an integer");
    JSONNumber number;
    if (!scanNumber(number)) return false;
    const auto value = number.asInt64();
    if (!value) {
        return fail(JSONError::Kind::outOfRange, std::string(number.token) + " is no 64-bit integer");
    }
    out = *value;
    at_ += number.token.size();
    return true;
}

bool JSONReader::readRaw(std::string_view& out) {
    skipBlanks();
    const char* begin = at_;
    if (!skipValue(SkippedNumbers::any)) return false;
    out = {begin, static_cast<std::size_t>(at_ - begin)};
    return true;
}

bool JSONReader::readUInt64(std::uint64_t& out) {
    if (peek() != Kind::number) return mismatch("an integer");
    JSONNumber number;
    if (!scanNumber(number)) return false;
    const auto value = number.asUInt64();
    if (!value) {
        return fail(JSONError::Kind::outOfRange,
                    std::string(number.token) + " is no unsigned 64-bit integer");
    }
    out = *value;
    at_ += number.token.size();
    return true;
}

bool JSONReader::readDouble(double& out) {
    if (peek() != Kind::number) return mismatch("a number");
    JSONNumber number;
    if (!scanNumber(number)) return false;
    const auto value = number.asDouble();
    if (!value) return fail(JSONError::Kind::outOfRange, std::string(number.token) + " doesn't fit a double");
    out = *value;
    at_ += number.token.size();
    return true;
}

bool JSONReader::enter() {
    if (depth_ == kMaximumDepth) return corrupted("nested too deep");
    ++depth_;
    ++at_;
    fresh_ = true;
    return true;
}

bool JSONReader::beginObject() {
    if (peek() != Kind::object) return mismatch("an object");
    return enter();
}

bool JSONReader::beginArray() {
    if (peek() != Kind::array) return mismatch("an array");
    return enter();
}

std::size_t JSONReader::nextKnownKey(std::span<const JSONFieldInfo> fields, std::size_t from) {
    const char* at = at_;
    const char* const end = end_;
    if (!fresh_) {
        if (at == end || *at != ',') return fields.size();
        ++at;
    }
    const auto left = static_cast<std::size_t>(end - at);
    for (std::size_t i = from; i < fields.size(); ++i) {
        const std::string_view key = fields[i].quotedKey;
        if (left >= key.size() && sameBytes(at, key.data(), key.size())) {
            fresh_ = false;
            at_ = at + key.size();
            return i;
        }
    }
    return fields.size();
}

JSONReader::Step JSONReader::nextKey(std::string_view& key) {
    skipBlanks();
    const bool first = std::exchange(fresh_, false);
    if (at_ < end_ && *at_ == '}') {
        ++at_;
        --depth_;
        return Step::end;
    }
    if (!first) {
        if (at_ == end_ || *at_ != ',') {
            corrupted("expected a comma or the end of the object");
            return Step::failed;
        }
        ++at_;
        skipBlanks();
    }
    if (at_ == end_ || *at_ != '"') {
        corrupted("expected a key");
        return Step::failed;
    }
    if (!takeText(key)) return Step::failed;
    skipBlanks();
    if (at_ == end_ || *at_ != ':') {
        corrupted("expected a colon");
        return Step::failed;
    }
    ++at_;
    return Step::item;
}

JSONReader::Step JSONReader::nextElement() {
    skipBlanks();
    const bool first = std::exchange(fresh_, false);
    if (at_ < end_ && *at_ == ']') {
        ++at_;
        --depth_;
        return Step::end;
    }
    if (first) return Step::item;
    if (at_ == end_ || *at_ != ',') {
        corrupted("expected a comma or the end of the array");
        return Step::failed;
    }
    ++at_;
    skipBlanks();
    if (at_ < end_ && *at_ == ']') {
        corrupted("a comma before the end of the array");
        return Step::failed;
    }
    return Step::item;
}

bool JSONReader::skipValue(SkippedNumbers numbers) {
    // One bit for each open container says whether it is an object.
    std::bitset<kMaximumDepth + 1> objects;
    const int floor = depth_;
    do {
        switch (peek()) {
            case Kind::null:
                if (!word("null")) return false;
                break;
            case Kind::boolean:
                if (!word(*at_ == 't' ? "true" : "false")) return false;
                break;
            case Kind::number: {
                JSONNumber number;
                if (!scanNumber(number)) return false;
                if (numbers == SkippedNumbers::inRange && !number.asDouble()) {
                    return corrupted("a number beyond every double");
                }
                at_ += number.token.size();
                break;
            }
            case Kind::string:
                if (!skipString()) return false;
                break;
            case Kind::array:
            case Kind::object: {
                const bool object = *at_ == '{';
                if (!enter()) return false;
                objects[static_cast<std::size_t>(depth_)] = object;
                break;
            }
            case Kind::invalid:
                return mismatch("a value");
        }
        while (depth_ > floor) {
            std::string_view key;
            const auto step = objects[static_cast<std::size_t>(depth_)] ? nextKey(key) : nextElement();
            if (step == Step::failed) return false;
            if (step == Step::item) break;
        }
    } while (depth_ > floor);
    return true;
}

bool JSONReader::finish() {
    if (error_) return false;
    skipBlanks();
    return at_ == end_ || corrupted("text after the value");
}

}  // namespace zqcore::platform
