#include "Platform/Foundation/JSON/JSONWriter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

#include "Platform/Foundation/JSON/JSONNumber.h"
#include "Platform/Foundation/JSON/TextScan.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

namespace {

using textscan::Stop;

/// An envelope fits without growing.
constexpr std::size_t kFirstRoom = 512;
/// Up to this length the worst case is cheap to reserve; above it escapes are counted first.
constexpr std::size_t kShortText = 256;
constexpr std::size_t kLongestEscape = 6;

/// What follows the backslash; 0 for a character that stands as it is, 'u' for those in four digits.
constexpr auto kEscapes = [] {
    struct Table {
        char letter[256] = {};
    } table;
    for (int c = 0; c < 0x20; ++c) table.letter[c] = 'u';
    table.letter[static_cast<unsigned char>('"')] = '"';
    table.letter[static_cast<unsigned char>('\\')] = '\\';
    table.letter[static_cast<unsigned char>('/')] = '/';
    table.letter[8] = 'b';
    table.letter[9] = 't';
    table.letter[10] = 'n';
    table.letter[12] = 'f';
    table.letter[13] = 'r';
    return table;
}();

char* writeEscape(char c, char* out) {
    const auto byte = static_cast<unsigned char>(c);
    const char letter = kEscapes.letter[byte];
    *out++ = '\\';
    *out++ = letter;
    if (letter == 'u') {
        constexpr std::string_view digits = "0123456789abcdef";
        *out++ = '0';
        *out++ = '0';
        *out++ = digits[byte >> 4];
        *out++ = digits[byte & 0xF];
    }
    return out;
}

/// How many bytes the escapes of `text` add, at most.
std::size_t escapeGrowth(std::string_view text) {
    std::size_t stops = 0;
    std::size_t rest = 0;
#ifdef __SSE2__
    for (; text.size() - rest >= 16; rest += 16) {
        stops += static_cast<std::size_t>(
            __builtin_popcount(textscan::load<Stop::writing>(text.data() + rest).stops));
    }
#endif
    std::size_t growth = stops;
    for (; rest < text.size(); ++rest) growth += textscan::stopsAt<Stop::writing>(text[rest]) ? 5 : 0;
    return growth;
}

}  // namespace

void JSONWriter::grow(std::size_t count) {
    // By a part of what is there, so that a text of many short pieces isn't moved for each few of them; a
    // long piece gets what it asked for.
    const std::size_t wanted = std::max({kFirstRoom, used_ + count, buffer_.size() + buffer_.size() / 2});
    std::string larger;
    larger.resize_and_overwrite(wanted, [this](char* room, std::size_t size) {
        if (used_ > 0) std::memcpy(room, buffer_.data(), used_);
        return size;
    });
    buffer_ = std::move(larger);
}

char* JSONWriter::room(std::size_t count) {
    if (buffer_.size() - used_ < count) grow(count);
    return buffer_.data() + used_;
}

void JSONWriter::put(std::string_view text) {
    std::memcpy(room(text.size()), text.data(), text.size());
    used_ += text.size();
}

void JSONWriter::fail(std::string reason) {
    if (!error_) error_ = JSONError{JSONError::Kind::invalidValue, describe(path_), std::move(reason), 0};
}

JSONWriter::Attempt::Attempt(JSONWriter& writer) noexcept
    : writer_(writer),
      used_(writer.used_),
      depth_(writer.depth_),
      comma_(writer.comma_),
      earlier_(std::exchange(writer.error_, std::nullopt)) {}

JSONWriter::Attempt::~Attempt() {
    if (earlier_) writer_.error_ = std::move(earlier_);
}

std::optional<JSONError> JSONWriter::Attempt::takeFailure() noexcept {
    if (writer_.error_) {
        writer_.used_ = used_;
        writer_.depth_ = depth_;
        writer_.comma_ = comma_;
    }
    return std::exchange(writer_.error_, std::nullopt);
}

std::optional<std::string> JSONWriter::take() {
    if (error_ && purpose_ == Purpose::json) return std::nullopt;
    buffer_.resize(used_);
    used_ = 0;
    return std::move(buffer_);
}

void JSONWriter::null() { put("null"); }

void JSONWriter::boolean(bool value) { put(value ? "true" : "false"); }

void JSONWriter::integer(std::int64_t value) {
    char* out = room(24);
    used_ = static_cast<std::size_t>(std::to_chars(out, out + 24, value).ptr - buffer_.data());
}

void JSONWriter::unsignedInteger(std::uint64_t value) {
    char* out = room(24);
    used_ = static_cast<std::size_t>(std::to_chars(out, out + 24, value).ptr - buffer_.data());
}

void JSONWriter::real(double value) {
    if (!std::isfinite(value)) {
        fail(describeDouble(value) + " can't be written");
        put(describeDouble(value));
        return;
    }
    used_ = static_cast<std::size_t>(writeDouble(value, room(kDoubleRoom)) - buffer_.data());
}

void JSONWriter::string(std::string_view value) {
    *room(1) = '"';
    ++used_;
    escaped(value);
    *room(1) = '"';
    ++used_;
}

void JSONWriter::escaped(std::string_view text) {
    const std::size_t growth = text.size() <= kShortText ? 0 : escapeGrowth(text);
    const char* at = text.data();
    const char* end = at + text.size();
    // Sixteen more, so that whole blocks may be stored, and the closing quote.
    char* out = room(text.size() + growth + 32);
    char* limit = buffer_.data() + buffer_.size();
    bool nonASCII = false;
    for (;;) {
#ifdef __SSE2__
        while (end - at >= 16) {
            const auto block = textscan::load<Stop::writing>(at);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block.bytes);
            nonASCII |= block.nonASCII != 0;
            if (block.stops != 0) {
                const int before = __builtin_ctz(block.stops);
                at += before;
                out += before;
                break;
            }
            at += 16;
            out += 16;
        }
#endif
        const char* stop = textscan::findStop<Stop::writing>(at, end, nonASCII);
        out = std::copy(at, stop, out);
        at = stop;
        if (at == end) break;
        const auto rest = static_cast<std::size_t>(end - at);
        if (static_cast<std::size_t>(limit - out) < rest + kLongestEscape + 32) [[unlikely]] {
            used_ = static_cast<std::size_t>(out - buffer_.data());
            out = room(rest * 2 + kLongestEscape + 64);
            limit = buffer_.data() + buffer_.size();
        }
        out = writeEscape(*at++, out);
    }
    used_ = static_cast<std::size_t>(out - buffer_.data());
    if (nonASCII && !isValidUTF8(text)) fail("a text that isn't UTF-8");
}

void JSONWriter::separate() {
    if (comma_) put(",");
}

bool JSONWriter::open(char bracket) {
    if (depth_ == kMaximumDepth) {
        fail("nested too deep");
        return false;
    }
    ++depth_;
    *room(1) = bracket;
    ++used_;
    comma_ = false;
    return true;
}

void JSONWriter::close(char bracket) {
    --depth_;
    *room(1) = bracket;
    ++used_;
    comma_ = true;
}

bool JSONWriter::beginObject() { return open('{'); }
void JSONWriter::endObject() { close('}'); }
bool JSONWriter::beginArray() { return open('['); }
void JSONWriter::endArray() { close(']'); }

void JSONWriter::key(std::string_view name) {
    separate();
    string(name);
    put(":");
    comma_ = true;
}

void JSONWriter::quotedKey(std::string_view quoted) {
    char* out = room(quoted.size() + 1);
    if (comma_) *out++ = ',';
    std::memcpy(out, quoted.data(), quoted.size());
    used_ += quoted.size() + (comma_ ? 1 : 0);
    comma_ = true;
}

void JSONWriter::element() {
    separate();
    comma_ = true;
}

}  // namespace zqcore::platform
