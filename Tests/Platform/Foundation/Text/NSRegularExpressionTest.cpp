#include "Platform/Foundation/Text/NSRegularExpression.h"

#include <gtest/gtest.h>

#include "Platform/Foundation/Text/CaseMapping.h"

namespace zqcore {
namespace {

TEST(NSRegularExpressionTest, ExpandsTemplatesAsThePlatformDoes) {
    const struct {
        const char *pattern, *text, *with, *result;
    } kCases[] = {
        {"(a)(b)?", "ab a", "<$1|$2>", "<a|b> <a|>"},
        {"(a)", "a", "$0$12$2$x$", "aa2$x$"},
        {"a", "a", R"(\$0\\)", "$0\\"},
        {"x*", "abc", "-", "-a-b-c-"},
        {"([A-Z][a-z]+)|([0-9\\W]+)", "Html5Parser foo", " $1 ", " Html    Parser   foo"},
        {"é|😀", "caf\u00e9😀!", "[$0]", "caf[\u00e9][😀]!"},
        {"q", "none", "r", "none"},
    };
    for (const auto& [pattern, text, with, result] : kCases) {
        EXPECT_EQ(NSRegularExpression::make(pattern)->stringByReplacingMatches(text, with), result)
            << pattern << " in " << text;
    }
}

TEST(NSRegularExpressionTest, SurvivesBadAndRunawayPatterns) {
    EXPECT_FALSE(NSRegularExpression::make("(a"));
    EXPECT_FALSE(NSRegularExpression::make("[z-a]"));
    const auto runaway = NSRegularExpression::make("(?:a|a)*b");
    EXPECT_FALSE(runaway->matchesWhole(std::string(20, 'a')));
    EXPECT_FALSE(NSRegularExpression::make("(.|\\n)*x")->matchesWhole(std::string(4'000'000, 'y')))
        << "out of backtracking room";
}

TEST(NSRegularExpressionTest, FindsWithinARange) {
    const auto letter = NSRegularExpression::make("^b|好");
    EXPECT_EQ(letter->rangeOfFirstMatch("abab", {1, 4}), (TextRange{1, 2}));
    EXPECT_EQ(letter->rangeOfFirstMatch("abab", {2, 4}), std::nullopt);
    EXPECT_EQ(letter->rangeOfFirstMatch("你好", {0, 6}), (TextRange{3, 6}));
}

TEST(CaseMappingTest, MapsFullyAndWithoutLocale) {
    EXPECT_EQ(uppercased("straße i"), "STRASSE I");
    EXPECT_EQ(lowercased("ΑΣ ÀI"), "ας ài");
    const struct {
        const char *text, *capitalized;
    } kCases[] = {{"HTTP", "Http"},   {"v2api", "V2Api"}, {"2nd", "2Nd"},     {"a-b", "A-B"},
                  {"don't", "Don't"}, {"a.b", "A.b"},     {"a_b c", "A_B C"}, {"ÉCOLE d'été", "École D'été"},
                  {"ΑΣ", "Ας"},       {"ßa", "Ssa"},      {"你a", "你A"},     {"", ""}};
    for (const auto& [text, expected] : kCases) EXPECT_EQ(capitalized(text), expected);
}

}  // namespace
}  // namespace zqcore
