// The strings of a JSON text: where they end, what they say.
#include <algorithm>
#include <cstring>

#include "Platform/Foundation/JSON/JSONReader.h"
#include "Platform/Foundation/JSON/TextScan.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

namespace {

using textscan::Stop;

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(c | 0x20);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

/// The four digits of a \u escape; -1 if they aren't.
int codeUnit(const char* at, const char* end) {
    if (end - at < 4) return -1;
    int unit = 0;
    for (int i = 0; i < 4; ++i) {
        const int digit = hexValue(at[i]);
        if (digit < 0) return -1;
        unit = unit * 16 + digit;
    }
    return unit;
}

char* appendUTF8(unsigned code, char* out) {
    const auto tail = [&](int shift) { *out++ = static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
    if (code < 0x80) {
        *out++ = static_cast<char>(code);
    } else if (code < 0x800) {
        *out++ = static_cast<char>(0xC0 | (code >> 6));
        tail(0);
    } else if (code < 0x10000) {
        *out++ = static_cast<char>(0xE0 | (code >> 12));
        tail(6);
        tail(0);
    } else {
        *out++ = static_cast<char>(0xF0 | (code >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
    return out;
}

char simpleEscape(char c) {
    switch (c) {
        case '"':
            return '"';
        case '\\':
            return '\\';
        case '/':
            return '/';
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 't':
            return '\t';
        default:
            return 0;
    }
}

/// Takes one \u escape, or the two of a pair; `at` stands behind the "\u". Null on failure.
const char* takeUnicode(const char* at, const char* end, char*& out) {
    const int lead = codeUnit(at, end);
    if (lead < 0) return nullptr;
    at += 4;
    auto code = static_cast<unsigned>(lead);
    if (code >= 0xDC00 && code <= 0xDFFF) return nullptr;
    if (code >= 0xD800 && code <= 0xDBFF) {
        if (end - at < 6 || at[0] != '\\' || at[1] != 'u') return nullptr;
        const int trail = codeUnit(at + 2, end);
        if (trail < 0xDC00 || trail > 0xDFFF) return nullptr;
        code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<unsigned>(trail) - 0xDC00);
        at += 6;
    }
    out = appendUTF8(code, out);
    return at;
}

/// Copies [at, end) to `out` with its escapes undone; null where an escape is wrong. `out` has the room of
/// the escaped text: no escape is shorter than what it stands for.
char* undoEscapes(const char* at, const char* end, char* out) {
    bool ignored = false;
    for (;;) {
#ifdef __SSE2__
        while (end - at >= 16) {
            const auto block = textscan::load<Stop::reading>(at);
            // The whole block is stored and only the part before the stop counts: what lies behind it in
            // `out` is overwritten by what comes.
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block.bytes);
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
        const char* stop = textscan::findStop<Stop::reading>(at, end, ignored);
        out = std::copy(at, stop, out);
        at = stop;
        if (at == end) return out;
        if (end - at < 2) return nullptr;
        const char escape = at[1];
        at += 2;
        if (const char plain = simpleEscape(escape); plain != 0) {
            *out++ = plain;
        } else {
            if (escape != 'u') return nullptr;
            at = takeUnicode(at, end, out);
            if (!at) return nullptr;
        }
    }
}

/// Whether every escape of [at, end) is a right one, without taking it anywhere.
bool escapesAreRight(const char* at, const char* end) {
    bool ignored = false;
    for (;;) {
        at = textscan::findStop<Stop::reading>(at, end, ignored);
        if (at == end) return true;
        if (end - at < 2) return false;
        const char escape = at[1];
        at += 2;
        if (simpleEscape(escape) != 0) continue;
        char room[4];
        char* out = room;
        if (escape != 'u' || !(at = takeUnicode(at, end, out))) return false;
    }
}

}  // namespace

bool JSONReader::skipString() {
    const char* from = at_ + 1;
    const char* to = nullptr;
    bool escaped = false;
    if (!scanString(to, escaped)) return false;
    if (escaped && !escapesAreRight(from, to)) return corrupted("a wrong escape in a string");
    at_ = to + 1;
    return true;
}

bool JSONReader::scanString(const char*& end, bool& escaped) {
    const char* at = at_ + 1;
    bool nonASCII = false;
    escaped = false;
    for (;;) {
        at = textscan::findStop<Stop::reading>(at, end_, nonASCII);
        if (at == end_) return corrupted("a string without end");
        if (*at == '"') break;
        if (*at != '\\') return corrupted("a control character in a string");
        escaped = true;
        if (end_ - at < 2) return corrupted("a string without end");
        at += 2;
    }
    const char* from = at_ + 1;
    if (nonASCII && !isValidUTF8({from, static_cast<std::size_t>(at - from)})) {
        return corrupted("invalid UTF-8 in a string");
    }
    end = at;
    return true;
}

bool JSONReader::unescape(const char* from, const char* to, std::string& out) {
    bool good = true;
    out.resize_and_overwrite(static_cast<std::size_t>(to - from),
                             [&](char* room, std::size_t) -> std::size_t {
                                 char* end = undoEscapes(from, to, room);
                                 good = end != nullptr;
                                 return good ? static_cast<std::size_t>(end - room) : 0;
                             });
    return good || corrupted("a wrong escape in a string");
}

bool JSONReader::readString(std::string& out) {
    if (peek() != Kind::string) return mismatch("a string");
    const char* from = at_ + 1;
    const char* to = nullptr;
    bool escaped = false;
    if (!scanString(to, escaped)) return false;
    if (escaped) {
        if (!unescape(from, to, out)) return false;
    } else {
        out.assign(from, to);
    }
    at_ = to + 1;
    return true;
}

}  // namespace zqcore::platform
