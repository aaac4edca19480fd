#include "Platform/CrashCapture/Linux/ReportWriter.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace zqcore::platform::crash {

namespace {

// The length of the well-formed UTF-8 sequence at the front, 0 if there is none (Unicode 15, table 3-7).
std::size_t sequenceLength(std::string_view text) noexcept {
    const auto at = [text](std::size_t i) -> unsigned {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const auto follows = [&at](std::size_t i) { return (at(i) & 0xC0U) == 0x80U; };
    const unsigned lead = at(0);
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) return follows(1) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const unsigned lowest = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned highest = lead == 0xED ? 0x9F : 0xBF;
        return at(1) >= lowest && at(1) <= highest && follows(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const unsigned lowest = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned highest = lead == 0xF4 ? 0x8F : 0xBF;
        return at(1) >= lowest && at(1) <= highest && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

}  // namespace

std::string_view digitsOf(std::uint64_t value, unsigned base, std::array<char, 20>& digits) noexcept {
    std::size_t first = digits.size();
    do {
        digits[--first] = "0123456789abcdef"[value % base];
        value /= base;
    } while (value != 0);
    return {digits.data() + first, digits.size() - first};
}

void ReportWriter::open(int fd) noexcept {
    fd_ = fd;
    used_ = 0;
    depth_ = 0;
    needsComma_ = false;
    inText_ = false;
}

void ReportWriter::append(std::string_view bytes) noexcept {
    while (!bytes.empty()) {
        if (used_ == buffer_.size()) flush();
        const std::size_t room = buffer_.size() - used_;
        const std::size_t part = bytes.size() < room ? bytes.size() : room;
        std::memcpy(buffer_.data() + used_, bytes.data(), part);
        used_ += part;
        bytes.remove_prefix(part);
    }
}

void ReportWriter::flush() noexcept {
    std::size_t written = 0;
    while (written < used_) {
        const ssize_t count = write(fd_, buffer_.data() + written, used_ - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        written += static_cast<std::size_t>(count);
    }
    used_ = 0;
}

void ReportWriter::closeTo(std::size_t depth) noexcept {
    if (inText_) append('"');
    inText_ = false;
    while (depth_ > depth) {
        append(open_[--depth_] == '{' ? '}' : ']');
        needsComma_ = true;
    }
}

void ReportWriter::startValue(const char* key) noexcept {
    if (needsComma_) append(",\n");
    needsComma_ = true;
    if (!key) return;
    quoted(key);
    append(':');
}

void ReportWriter::begin(const char* key, char bracket) noexcept {
    if (depth_ == kMaxDepth) return;
    startValue(key);
    append(bracket);
    open_[depth_++] = bracket;
    needsComma_ = false;
}

void ReportWriter::unsignedInteger(const char* key, std::uint64_t value) noexcept {
    startValue(key);
    std::array<char, 20> digits;
    append(digitsOf(value, 10, digits));
}

void ReportWriter::integer(const char* key, std::int64_t value) noexcept {
    startValue(key);
    if (value < 0) append('-');
    const auto bits = static_cast<std::uint64_t>(value);
    std::array<char, 20> digits;
    append(digitsOf(value < 0 ? 0 - bits : bits, 10, digits));
}

void ReportWriter::boolean(const char* key, bool value) noexcept {
    startValue(key);
    append(value ? "true" : "false");
}

void ReportWriter::text(const char* key, std::string_view value) noexcept {
    startValue(key);
    quoted(value);
}

void ReportWriter::quoted(std::string_view value) noexcept {
    append('"');
    inText_ = true;
    while (!value.empty()) {
        const std::size_t length = sequenceLength(value);
        const char first = value[0];
        if (length == 0) {
            append("\xEF\xBF\xBD");
        } else if (first == '"' || first == '\\') {
            const std::array<char, 2> escape{'\\', first};
            append({escape.data(), escape.size()});
        } else if (static_cast<unsigned char>(first) < 0x20) {
            const auto code = static_cast<unsigned char>(first);
            const std::array<char, 6> escape{
                '\\', 'u', '0', '0', code < 16 ? '0' : '1', "0123456789abcdef"[code % 16]};
            append({escape.data(), escape.size()});
        } else {
            append(value.substr(0, length));
        }
        value.remove_prefix(length == 0 ? 1 : length);
    }
    inText_ = false;
    append('"');
}

void ReportWriter::members(std::string_view json) noexcept {
    if (json.empty()) return;
    if (needsComma_) append(",\n");
    append(json);
    needsComma_ = true;
}

}  // namespace zqcore::platform::crash
