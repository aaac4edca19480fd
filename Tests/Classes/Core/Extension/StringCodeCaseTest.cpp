#include "Classes/Core/Extension/StringCodeCase.h"

#include <gtest/gtest.h>

#include <random>

#include "Classes/Core/Extension/StringExtension.h"
#include "Platform/Foundation/Text/CaseMapping.h"
#include "Platform/Foundation/Text/NSRegularExpression.h"

namespace zqcore {
namespace {

constexpr CodeCaseType kTypes[] = {CodeCaseType::camel, CodeCaseType::upperCamel, CodeCaseType::snake,
                                   CodeCaseType::kebab, CodeCaseType::constant};

struct Case {
    std::string_view text, words;
    std::string_view forms[5];
};

TEST(StringCodeCaseTest, TurnsIdentifiersFromOneConventionIntoAnother) {
    constexpr Case kCases[] = {
        {"userName", "user Name", {"userName", "UserName", "user_name", "user-name", "USER_NAME"}},
        {"parseHTTPResponse",
         "parse HTTP Response",
         {"parseHttpResponse", "ParseHttpResponse", "parse_http_response", "parse-http-response",
          "PARSE_HTTP_RESPONSE"}},
        {"foo_bar-baz/qux.txt",
         "foo bar baz qux txt",
         {"fooBarBazQuxTxt", "FooBarBazQuxTxt", "foo_bar_baz_qux_txt", "foo-bar-baz-qux-txt",
          "FOO_BAR_BAZ_QUX_TXT"}},
        {"Html5Parser",
         "Html Parser",
         {"htmlParser", "HtmlParser", "html_parser", "html-parser", "HTML_PARSER"}},
        {"", "", {"", "", "", "", ""}},
        {"---", "", {"", "", "", "", ""}},
        {" a_b ", "a b", {"aB", "AB", "a_b", "a-b", "A_B"}},
        {"aBCd", "aB Cd", {"abCd", "AbCd", "ab_cd", "ab-cd", "AB_CD"}},
    };
    for (const auto& [text, words, forms] : kCases) {
        EXPECT_EQ(zq_splitWords(text), words) << text;
        for (std::size_t i = 0; i < std::size(kTypes); ++i) {
            EXPECT_EQ(zq_mergeCodeCase(zq_splitWords(text), kTypes[i]), forms[i]) << text;
        }
    }
}

TEST(StringCodeCaseTest, EachOperationAlone) {
    EXPECT_EQ(zq_splitWords("hello world"), "hello world") << "a blank, so no identifier";
    EXPECT_EQ(zq_splitWords("\tuserName\u00e9 "), "userName\u00e9") << "only trimmed";
    EXPECT_EQ(zq_mergeCodeCase("v2 api", CodeCaseType::snake), "v2_api");
    EXPECT_EQ(zq_mergeCodeCase("a--b__c", CodeCaseType::kebab), "a-b-c");
    EXPECT_EQ(zq_mergeCodeCase("na\u00efve", CodeCaseType::snake), "na_ve");
    EXPECT_EQ(zq_mergeCodeCase("HTTP v2api", CodeCaseType::upperCamel), "HttpV2Api");
}

// The replacements as they are defined, run by the pattern engine.
std::string replaced(const std::string& text, const char* pattern, const char* with) {
    return NSRegularExpression::make(pattern)->stringByReplacingMatches(text, with);
}

std::string wordsByPatterns(const std::string& text) {
    auto result = zq_trimmingWhitespaceAndNewline(text);
    if (!zq_matchRegex(result, R"(^[0-9a-zA-Z_\-/\.]+$)")) return result;
    result = replaced(result, R"([_\-/\.\s]+)", " ");
    result = replaced(result, R"(([A-Z][a-z]+)|([0-9\W]+))", " $1 ");
    result = replaced(result, "[A-Z]{2,}", " $0");
    result = replaced(result, R"(\s{2,})", " ");
    return zq_trimmingWhitespaceAndNewline(result);
}

std::string mergedByPatterns(const std::string& text, CodeCaseType type) {
    const auto words = zq_componentsFilterEmpty(replaced(text, "[^a-zA-Z0-9]+", " "), " ");
    constexpr const char* kSeparators[] = {"", "", "_", "-", "_"};
    std::string result;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) result += kSeparators[static_cast<int>(type)];
        const bool lower = type == CodeCaseType::snake || type == CodeCaseType::kebab ||
                           (type == CodeCaseType::camel && i == 0);
        if (type == CodeCaseType::constant) {
            result += uppercased(words[i]);
        } else {
            result += lower ? lowercased(words[i]) : capitalized(words[i]);
        }
    }
    return result;
}

TEST(StringCodeCaseTest, AgreesWithThePatternsOnRandomTexts) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    constexpr std::string_view kPieces[] = {"a", "b", "q", "A", "B", "Z", "Q",  "0",      "9",      "_", "-",
                                            "/", ".", "x", "Y", "c", " ", "\n", "\u00e9", "\u4f60", "+"};
    for (int round = 0; round < 5'000; ++round) {
        // Most texts are identifiers; the last pieces make one something else.
        const auto choice = random() % 3 == 0 ? std::size(kPieces) : std::size(kPieces) - 5;
        std::string text;
        for (auto left = random() % 24; left > 0; --left) text += kPieces[random() % choice];
        ASSERT_EQ(zq_splitWords(text), wordsByPatterns(text)) << "seed " << seed << " text " << text;
        const auto type = kTypes[random() % std::size(kTypes)];
        ASSERT_EQ(zq_mergeCodeCase(text, type), mergedByPatterns(text, type))
            << "seed " << seed << " text " << text;
    }
}

}  // namespace
}  // namespace zqcore
