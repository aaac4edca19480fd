#include "Platform/Foundation/Text/NSRegularExpression.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

#include <limits>

#include "Platform/Foundation/Text/Utf16.h"

namespace zqcore::platform {
namespace {

// ICU counts in 32 bits, and a text may double on its way into UTF-16.
constexpr std::size_t kLongestText = std::numeric_limits<std::int32_t>::max() / 2;

icu::UnicodeString fromUTF8(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

/// A text of bytes that ICU reads in place.
class ByteText final {
  public:
    explicit ByteText(std::string_view text, UErrorCode& status) {
        utext_openUTF8(&text_, text.data(), static_cast<std::int64_t>(text.size()), &status);
    }
    ~ByteText() { utext_close(&text_); }
    ByteText(const ByteText&) = delete;
    ByteText& operator=(const ByteText&) = delete;

    [[nodiscard]] UText* get() { return &text_; }

  private:
    UText text_ = UTEXT_INITIALIZER;
};

/// Reads the group number behind a `$` and passes it; a second digit counts only while there is such a group.
std::int32_t groupNumber(const icu::UnicodeString& text, std::int32_t& position, std::int32_t groups) {
    std::int32_t number = text[position++] - u'0';
    while (position < text.length() && text[position] >= u'0' && text[position] <= u'9') {
        const std::int32_t longer = number * 10 + (text[position] - u'0');
        if (longer > groups) break;
        number = longer;
        ++position;
    }
    return number;
}

void appendExpansion(icu::UnicodeString& result, const icu::UnicodeString& replacement,
                     const icu::RegexMatcher& matcher, const icu::UnicodeString& input, UErrorCode& status) {
    for (std::int32_t i = 0; i < replacement.length();) {
        const char16_t unit = replacement[i++];
        const bool more = i < replacement.length();
        if (unit == u'\\' && more) {
            result.append(replacement[i++]);
        } else if (unit == u'$' && more && replacement[i] >= u'0' && replacement[i] <= u'9') {
            const auto group = groupNumber(replacement, i, matcher.groupCount());
            if (group > matcher.groupCount()) continue;
            const auto start = matcher.start(group, status);
            if (start >= 0) result.append(input, start, matcher.end(group, status) - start);
        } else {
            result.append(unit);
        }
    }
}

NSError invalidPattern(const std::string& why) {
    constexpr long formattingError = 2048;
    return {NSCocoaErrorDomain, formattingError, "The pattern is invalid: " + why};
}

}  // namespace

struct NSRegularExpression::Compiled {
    std::unique_ptr<icu::RegexPattern> pattern;
};

NSRegularExpression::NSRegularExpression(std::unique_ptr<Compiled> compiled) noexcept
    : compiled_(std::move(compiled)) {}

NSRegularExpression::~NSRegularExpression() = default;

std::expected<std::shared_ptr<const NSRegularExpression>, NSError>
NSRegularExpression::regularExpressionWithPattern(std::string_view pattern, Options options) {
    if (pattern.size() > kLongestText) return std::unexpected(invalidPattern("too long"));
    UErrorCode status = U_ZERO_ERROR;
    UParseError place{};
    const std::uint32_t flags = options & caseInsensitive ? std::uint32_t{UREGEX_CASE_INSENSITIVE} : 0U;
    std::unique_ptr<icu::RegexPattern> compiled(
        icu::RegexPattern::compile(fromUTF8(pattern), flags, place, status));
    if (U_FAILURE(status) || !compiled) {
        return std::unexpected(invalidPattern(std::string(u_errorName(status)) + " at line " +
                                              std::to_string(place.line) + ", unit " +
                                              std::to_string(place.offset)));
    }
    auto owned = std::make_unique<Compiled>(std::move(compiled));
    return std::shared_ptr<const NSRegularExpression>(new NSRegularExpression(std::move(owned)));
}

std::shared_ptr<const NSRegularExpression> NSRegularExpression::make(std::string_view pattern,
                                                                     Options options) {
    return regularExpressionWithPattern(pattern, options).value_or(nullptr);
}

bool NSRegularExpression::matchesWhole(std::string_view text) const {
    if (text.size() > kLongestText) return false;
    UErrorCode status = U_ZERO_ERROR;
    const auto input = fromUTF8(text);
    const std::unique_ptr<icu::RegexMatcher> matcher(compiled_->pattern->matcher(input, status));
    return U_SUCCESS(status) && matcher->matches(status) && U_SUCCESS(status);
}

std::optional<TextRange> NSRegularExpression::rangeOfFirstMatch(std::string_view text,
                                                                TextRange range) const {
    UErrorCode status = U_ZERO_ERROR;
    ByteText input(text, status);
    const std::unique_ptr<icu::RegexMatcher> matcher(compiled_->pattern->matcher(status));
    if (U_FAILURE(status)) return std::nullopt;
    matcher->reset(input.get());
    matcher->region(static_cast<std::int64_t>(range.begin), static_cast<std::int64_t>(range.end), status);
    if (!matcher->find(status) || U_FAILURE(status)) return std::nullopt;
    return TextRange{static_cast<std::size_t>(matcher->start64(status)),
                     static_cast<std::size_t>(matcher->end64(status))};
}

std::vector<NSRange> NSRegularExpression::matchesInString(std::string_view text) const {
    if (text.size() > kLongestText) return {};
    const std::u16string units = toUTF16(text);
    // The matcher keeps a reference to it; the units themselves aren't copied.
    const icu::UnicodeString input(false, units.data(), static_cast<std::int32_t>(units.size()));
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::RegexMatcher> matcher(compiled_->pattern->matcher(input, status));
    std::vector<NSRange> matches;
    while (U_SUCCESS(status) && matcher->find(status) && U_SUCCESS(status)) {
        const auto start = static_cast<std::size_t>(matcher->start(status));
        matches.push_back({start, static_cast<std::size_t>(matcher->end(status)) - start});
    }
    return matches;
}

std::string NSRegularExpression::stringByReplacingMatches(std::string_view text,
                                                          std::string_view withTemplate) const {
    if (text.size() > kLongestText || withTemplate.size() > kLongestText) return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    const auto input = fromUTF8(text);
    const auto replacement = fromUTF8(withTemplate);
    const std::unique_ptr<icu::RegexMatcher> matcher(compiled_->pattern->matcher(input, status));
    if (U_FAILURE(status)) return std::string(text);
    icu::UnicodeString result;
    std::int32_t copied = 0;
    bool found = false;
    while (matcher->find(status) && U_SUCCESS(status)) {
        found = true;
        const auto start = matcher->start(status);
        result.append(input, copied, start - copied);
        appendExpansion(result, replacement, *matcher, input, status);
        copied = matcher->end(status);
    }
    if (!found) return std::string(text);
    result.append(input, copied, input.length() - copied);
    std::string bytes;
    result.toUTF8String(bytes);
    return bytes;
}

}  // namespace zqcore::platform
