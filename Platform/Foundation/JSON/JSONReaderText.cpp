// The strings of a JSON text: where they end, what they say.
#include <algorithm>
#include <cstring>

#include "Platform/Foundation/JSON/JSONReaderScan.h"
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

/// The quote that ends the text from `at` on: the first with an even number of backslashes before it. Null if
/// there is none. The text may be large and full of escapes, and then this is far cheaper than to stop at
/// each.
const char* findClosingQuote(const char* at, const char* end) {
    for (const char* from = at;;) {
        const auto* quote =
            static_cast<const char*>(std::memchr(from, '"', static_cast<std::size_t>(end - from)));
        if (!quote) return nullptr;
        const char* before = quote;
        while (before > from && before[-1] == '\\') --before;
        if ((quote - before) % 2 == 0) return quote;
        from = quote + 1;
    }
}

/// Undoes the escape at `at`, which may be something else that a string can't hold; null then.
inline const char* takeEscape(const char* at, const char* end, char*& out) {
    if (*at != '\\' || end - at < 2) return nullptr;
    // Nearly all escapes in large texts are the slashes of base64.
    if (at[1] == '/') [[likely]] {
        *out++ = '/';
        return at + 2;
    }
    if (at[1] == 'u') return takeUnicode(at + 2, end, out);
    *out = simpleEscape(at[1]);
    return *out++ != 0 ? at + 2 : nullptr;
}

/// Copies [at, end) to `out` with its escapes undone; null where it isn't right. `out` has the room of the
/// escaped text: no escape is shorter than what it stands for.
char* undoEscapes(const char* at, const char* end, char* out, bool& nonASCII) {
#ifdef __SSE2__
    while (end - at >= 16) {
        const auto block = textscan::load<Stop::reading>(at);
        // The whole block is stored and only the part before the stop counts: what lies behind it in `out` is
        // overwritten by what comes. A byte above 0x7F behind the stop is met again.
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), block.bytes);
        nonASCII |= block.nonASCII != 0;
        if (block.stops == 0) {
            at += 16;
            out += 16;
            continue;
        }
        const int before = __builtin_ctz(block.stops);
        out += before;
        at = takeEscape(at + before, end, out);
        if (!at) return nullptr;
    }
#endif
    while (at < end) {
        if (textscan::stopsAt<Stop::reading>(*at)) {
            at = takeEscape(at, end, out);
            if (!at) return nullptr;
        } else {
            nonASCII |= static_cast<unsigned char>(*at) >= 0x80;
            *out++ = *at++;
        }
    }
    return out;
}

/// Whether [at, end) is right, without taking it anywhere.
bool escapesAreRight(const char* at, const char* end, bool& nonASCII) {
    while ((at = textscan::findStop<Stop::reading>(at, end, nonASCII)) != end) {
        char room[4];
        char* out = room;
        at = takeEscape(at, end, out);
        if (!at) return false;
    }
    return true;
}

}  // namespace

bool JSONReader::scanEscaped(RawText& raw) {
    raw.to = *raw.stop == '\\' ? findClosingQuote(raw.stop, end_) : nullptr;
    if (raw.to) return true;
    return corrupted(*raw.stop == '\\' ? "a string without end" : "a control character in a string");
}

bool JSONReader::unescape(const RawText& raw, std::string& out) {
    bool good = true;
    bool nonASCII = raw.nonASCII;
    const auto copy = [&](char* room, std::size_t) -> std::size_t {
        const auto clean = static_cast<std::size_t>(raw.stop - raw.from);
        std::memcpy(room, raw.from, clean);
        char* end = undoEscapes(raw.stop, raw.to, room + clean, nonASCII);
        good = end != nullptr;
        return good ? static_cast<std::size_t>(end - room) : 0;
    };
    out.resize_and_overwrite(static_cast<std::size_t>(raw.to - raw.from), copy);
    if (!good) return corrupted("a wrong escape or a control character in a string");
    return !nonASCII || checkUTF8(raw);
}

bool JSONReader::checkUTF8(const RawText& raw) {
    // Escapes are ASCII, so the text is right with them if it is right without.
    return isValidUTF8({raw.from, static_cast<std::size_t>(raw.to - raw.from)}) ||
           corrupted("invalid UTF-8 in a string");
}

bool JSONReader::skipString() {
    RawText raw;
    if (!scanString(raw)) return false;
    if (raw.stop != raw.to) {
        bool nonASCII = raw.nonASCII;
        if (!escapesAreRight(raw.stop, raw.to, nonASCII)) {
            return corrupted("a wrong escape or a control character in a string");
        }
        if (nonASCII && !checkUTF8(raw)) return false;
    }
    at_ = raw.to + 1;
    return true;
}

}  // namespace zqcore::platform
