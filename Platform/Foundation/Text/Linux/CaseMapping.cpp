#include "Platform/Foundation/Text/CaseMapping.h"

#include <unicode/locid.h>
#include <unicode/stringoptions.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

icu::UnicodeString fromUTF8(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

std::string toUTF8(const icu::UnicodeString& text) {
    std::string bytes;
    text.toUTF8String(bytes);
    return bytes;
}

bool isCased(UChar32 scalar) { return u_hasBinaryProperty(scalar, UCHAR_CASED); }
bool keepsRun(UChar32 scalar) { return u_hasBinaryProperty(scalar, UCHAR_CASE_IGNORABLE); }

/// In ASCII these are what Unicode's case-ignorable property holds besides letters' marks.
bool keepsRunInASCII(char c) { return c == '\'' || c == '.' || c == ':' || c == '^' || c == '`'; }

std::string capitalizedASCII(std::string_view text) {
    std::string result(text);
    bool inRun = false;
    for (char& c : result) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter) {
            c = inRun ? asciiLower(c) : asciiUpper(c);
            inRun = true;
        } else if (!keepsRunInASCII(c)) {
            inRun = false;
        }
    }
    return result;
}

/// Appends a run that begins with a cased letter. The rest is lowered together with that letter, since the
/// form of a final sigma hangs on what stands before it.
void appendRun(icu::UnicodeString& result, const icu::UnicodeString& run) {
    const auto& root = icu::Locale::getRoot();
    icu::UnicodeString first(run.char32At(0));
    auto lowered = run;
    lowered.toLower(root);
    auto loweredFirst = first;
    loweredFirst.toLower(root);
    result.append(first.toTitle(nullptr, root, U_TITLECASE_NO_BREAK_ADJUSTMENT));
    result.append(lowered, loweredFirst.length(), lowered.length() - loweredFirst.length());
}

}  // namespace

std::string lowercased(std::string_view text) {
    if (!isASCII(text)) return toUTF8(fromUTF8(text).toLower(icu::Locale::getRoot()));
    std::string result(text);
    for (char& c : result) c = asciiLower(c);
    return result;
}

std::string uppercased(std::string_view text) {
    if (!isASCII(text)) return toUTF8(fromUTF8(text).toUpper(icu::Locale::getRoot()));
    std::string result(text);
    for (char& c : result) c = asciiUpper(c);
    return result;
}

std::string capitalized(std::string_view text) {
    if (isASCII(text)) return capitalizedASCII(text);
    const auto input = fromUTF8(text);
    icu::UnicodeString result;
    for (std::int32_t i = 0; i < input.length();) {
        const UChar32 scalar = input.char32At(i);
        const std::int32_t begin = i;
        i = input.moveIndex32(i, 1);
        if (!isCased(scalar)) {
            result.append(scalar);
            continue;
        }
        while (i < input.length() && (isCased(input.char32At(i)) || keepsRun(input.char32At(i)))) {
            i = input.moveIndex32(i, 1);
        }
        appendRun(result, input.tempSubString(begin, i - begin));
    }
    return toUTF8(result);
}

}  // namespace zqcore::platform
