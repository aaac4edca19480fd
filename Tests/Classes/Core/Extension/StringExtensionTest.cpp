#include "Classes/Core/Extension/StringExtension.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "Classes/Core/Extension/StringPath.h"
#include "Classes/Core/Extension/StringSubscript.h"
#include "Platform/Foundation/Text/NSRegularExpression.h"
#include "Platform/Foundation/Text/Utf16.h"
#include "Platform/Scripting/NSWorkspace.h"
#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

using Strings = std::vector<std::string>;

TEST(StringExtensionTest, MatchesThePatternWithTheWholeText) {
    const struct {
        const char *text, *regex;
        bool matches;
    } kCases[] = {
        {"abc", "[a-c]+", true}, {"abcd", "[a-c]+", false}, {"ab", "a|ab", true},
        {"", "a*", false},       {"a", "", false},          {"abc\n", "abc$", false},
        {"a\nb", "a.b", false},  {"٣", "\\d", true},        {"你好", "..", true},
    };
    for (const auto& [text, regex, matches] : kCases) {
        EXPECT_EQ(zq_matchRegex(text, regex), matches) << text << " by " << regex;
    }
    testkit::LogCapture capture;
    EXPECT_FALSE(zq_matchRegex("abc", "(abc"));
    EXPECT_TRUE(capture.has(testkit::LogCapture::error, "Invalid pattern: (abc")) << capture;
}

TEST(StringExtensionTest, TrimsCollapsesAndRemoves) {
    EXPECT_EQ(zq_trimmingWhitespaceAndNewline(" \t\r\n\u3000\u200b\u2028a b\u00a0\u0085"), "a b");
    EXPECT_EQ(zq_trimmingWhitespaceAndNewline("\xFF \x80"), "\xFF \x80");
    EXPECT_EQ(zq_trimmingWhitespaceAndNewline(" \n"), "");
    EXPECT_EQ(zq_replacingMultipleWhitespaceToSingle("a \t\n b\u3000c\u200bd\te"), "a b c\u200bd e");
    EXPECT_EQ(zq_replacingMultipleNewLineToSingle("a\r\n\u2028\nb\rc  d\u2029"), "a\nb\nc  d\u2029");
    EXPECT_EQ(zq_removingCharacters("a1\u4f60b2\u00e9",
                                    NSCharacterSet::characterSetWithCharactersInString("ab\u4f60")),
              "a\u4f60b");
    EXPECT_EQ(zq_removingCharacters("a1b2", NSCharacterSet::decimalDigitCharacterSet().invertedSet()), "ab");
    EXPECT_EQ(zq_componentsFilterEmpty(",a,,b,", ","), (Strings{"a", "b"}));
    EXPECT_EQ(zq_componentsFilterEmpty("a::b:c", "::"), (Strings{"a", "b:c"}));
    EXPECT_EQ(zq_componentsFilterEmpty("abc", ""), (Strings{"abc"}));
    EXPECT_EQ(zq_componentsFilterEmpty("你，，好", "，"), (Strings{"你", "好"}));
}

std::string literallyReplaced(std::string text, std::string_view what, std::string_view with) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size()) {
        text.replace(at, what.size(), with);
    }
    return text;
}

TEST(StringExtensionTest, EntitiesAreTheRowOfReplacements) {
    EXPECT_EQ(zq_escapingXML("<a href=\"x\">'&'</a>"),
              "&lt;a href=&quot;x&quot;&gt;&#x27;&amp;&#x27;&lt;/a&gt;");
    EXPECT_EQ(zq_unescapingXML("&amp;lt;&#39;&#x92;&#x96;&gt;&QUOT;"), "<''->&QUOT;");
    EXPECT_EQ(zq_unescapingXML(zq_escapingXML("&#39;")), "'") << "decoded one step further";
    constexpr std::pair<const char*, const char*> kSteps[] = {
        {"&amp;", "&"},  {"&quot;", "\""}, {"&#x27;", "'"}, {"&#39;", "'"},
        {"&#x92;", "'"}, {"&#x96;", "-"},  {"&gt;", ">"},   {"&lt;", "<"}};
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    constexpr std::string_view kPieces[] = {"&",     "amp;", "&amp;", "lt;", "gt;", "#", "x",  "27;", "#39;",
                                            "quot;", "92;",  "96;",   "<",   ">",   "'", "\"", "a",   ";"};
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        for (auto left = random() % 16; left > 0; --left) text += kPieces[random() % std::size(kPieces)];
        std::string expected = text;
        for (const auto& [what, with] : kSteps) expected = literallyReplaced(expected, what, with);
        ASSERT_EQ(zq_unescapingXML(text), expected) << "seed " << seed << " text " << text;
        if (text.find('&') == std::string::npos) {
            ASSERT_EQ(zq_unescapingXML(zq_escapingXML(text)), text);
        }
    }
}

TEST(StringExtensionTest, CollapsingAgreesWithThePatternEngine) {
    const auto blanks = NSRegularExpression::make(R"(\s+)");
    const auto lines = NSRegularExpression::make("[\\n\\r\\U00002028]+");
    std::string all;
    for (char32_t scalar = 1; scalar < 0x3100; ++scalar) {
        const auto unit = static_cast<char16_t>(scalar);
        all += fromUTF16(std::u16string_view(&unit, 1)) + "x";
    }
    EXPECT_EQ(zq_replacingMultipleWhitespaceToSingle(all), blanks->stringByReplacingMatches(all, " "));
    EXPECT_EQ(zq_replacingMultipleNewLineToSingle(all), lines->stringByReplacingMatches(all, "\n"));
}

TEST(StringExtensionTest, FindsRanges) {
    using Ranges = std::vector<TextRange>;
    const struct {
        std::string text, of;
        unsigned options;
        Ranges ranges;
    } kCases[] = {
        {"abcabcab", "ab", 0, {{0, 2}, {3, 5}, {6, 8}}},
        {"aaaa", "aa", 0, {{0, 2}, {2, 4}}},
        {"", "a", 0, {}},
        {"abc", "", 0, {}},
        {"aAbA", "a", NSCaseInsensitiveSearch, {{0, 1}, {1, 2}, {3, 4}}},
        {"Straße STRASSE", "strasse", NSCaseInsensitiveSearch, {{0, 7}, {8, 15}}},
        // Composed and decomposed are the same character, and a letter isn't found under a mark.
        {"caf\u00e9 cafe\u0301 cafe", "caf\u00e9", 0, {{0, 5}, {6, 12}}},
        {"caf\u00e9 cafe\u0301 cafe", "cafe", 0, {{13, 17}}},
        {"caf\u00e9 cafe\u0301 cafe", "cafe", NSLiteralSearch, {{6, 10}, {13, 17}}},
        {"caf\u00e9 cafe", "cafe", NSDiacriticInsensitiveSearch, {{0, 5}, {6, 10}}},
        {"ＡＢ AB", "ab", NSCaseInsensitiveSearch | NSWidthInsensitiveSearch, {{0, 6}, {7, 9}}},
        {"aab", "a", NSAnchoredSearch, {{0, 1}, {1, 2}}},
        {"abab", "ab", NSBackwardsSearch, {{2, 4}}},
        {"你好你", "你", 0, {{0, 3}, {6, 9}}},
        {"a1b22c", "[0-9]+", NSRegularExpressionSearch, {{1, 2}, {3, 5}}},
        {"AaB", "a", NSRegularExpressionSearch | NSCaseInsensitiveSearch, {{0, 1}, {1, 2}}},
        {"你a", "x*", NSRegularExpressionSearch, {{0, 0}, {3, 3}}},
        {"abc", "(", NSRegularExpressionSearch, {}},
    };
    for (const auto& [text, of, options, ranges] : kCases) {
        const auto found = zq_ranges(text, of, options);
        EXPECT_TRUE(found == ranges) << of << " in " << text << " by " << options << " found "
                                     << found.size();
    }
}

TEST(StringExtensionTest, CountsAndConverts) {
    EXPECT_EQ(zq_NSStringLength("a\u00e9\u4f60😀"), 5U);
    EXPECT_EQ(toNSString("a😀"), u"a\xD83D\xDE00");
    EXPECT_EQ(asNotEmpty(""), std::nullopt);
    EXPECT_EQ(asNotEmpty(" "), " ");
    EXPECT_EQ(toUTF8Data("\u00e9")->size(), 2U);
    EXPECT_FALSE(toUTF8Data("\xC3"));
}

TEST(StringSubscriptTest, LimitsPositionsToTheText) {
    constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr auto kGreatest = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(subscript("abc", HalfOpenRange{1, 99}), "bc");
    EXPECT_EQ(subscript("abc", HalfOpenRange{2, 1}), "");
    EXPECT_EQ(subscript("abc", HalfOpenRange{kLeast, kLeast}), "");
    EXPECT_EQ(subscript("abc", HalfOpenRange{kGreatest, kLeast}), "");
    EXPECT_EQ(subscript("abc", ClosedRange{5, 9}), "");
    EXPECT_EQ(subscript("abc", ClosedRange{-4, 1}), "ab");
    EXPECT_EQ(subscript("abc", ClosedRange{1, kGreatest}), "bc");
    EXPECT_EQ(subscript("abc", PartialRangeThrough{1}), "ab");
    EXPECT_EQ(subscript("abc", PartialRangeThrough{-7}), "a");
    EXPECT_EQ(subscript("abc", PartialRangeFrom{-3}), "abc");
    EXPECT_EQ(subscript("👨‍👩‍👧e\u0301\r\nx", ClosedRange{1, 2}), "e\u0301\r\n")
        << "characters, not units";
}

TEST(StringPathTest, JoinsWithOneSlash) {
    EXPECT_EQ(appendingHTTPPath("http://a/b", "c"), "http://a/b/c");
    EXPECT_EQ(appendingHTTPPath("http://a/b/", "c"), "http://a/b/c");
    EXPECT_EQ(appendingHTTPPath("http://a/b", "/c"), "http://a/b/c");
    EXPECT_EQ(appendingHTTPPath("http://a/b//", "//c"), "http://a/b///c");
    EXPECT_EQ(appendingHTTPPath("", ""), "/");
    EXPECT_EQ(lastPathComponent("/tmp/lock/"), "lock");
    EXPECT_EQ(deletingLastPathComponent("/tmp/a.tiff"), "/tmp");
    EXPECT_EQ(deletingPathExtension("b.bundle/"), "b");
    EXPECT_EQ(appendingFilePath("/tmp/", "/x"), "/tmp/x");
}

TEST(StringPathTest, OpensUrlsWithTheWorkspace) {
    std::vector<std::string> opened;
    NSWorkspace::shared().setURLOpenerForTesting([&](const NSURL& url) {
        opened.push_back(url.absoluteString());
        return url.absoluteString() != "gone:";
    });
    EXPECT_TRUE(openUrl("https://a/b c?q=\u4f60&r=%20%zz#x"));
    EXPECT_FALSE(openUrl(""));
    EXPECT_FALSE(openUrl("no scheme"));
    EXPECT_FALSE(openUrl("a\xC3:"));
    EXPECT_FALSE(openUrl("gone:"));
    EXPECT_EQ(opened, (Strings{"https://a/b%20c?q=%E4%BD%A0&r=%20%25zz#x", "gone:"}));
    NSWorkspace::shared().setURLOpenerForTesting({});
}

}  // namespace
}  // namespace zqcore
