#include "Platform/Foundation/Text/Character.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Foundation/Text/CharacterSet.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

using Characters = std::vector<std::string>;

Characters charactersOf(std::string_view text) {
    Characters found;
    for (CharacterCursor cursor(text); const auto character = cursor.next();) found.emplace_back(*character);
    return found;
}

TEST(CharacterTest, CutsByGraphemeClusters) {
    const struct {
        std::string_view text;
        Characters characters;
    } cases[] = {
        {"", {}},
        {"abc", {"a", "b", "c"}},
        {"a\r\nb\r", {"a", "\r\n", "b", "\r"}},
        {"\n\r", {"\n", "\r"}},
        {"e\u0301x", {"e\u0301", "x"}},
        {"\u0301", {"\u0301"}},
        {"\r\u0301", {"\r", "\u0301"}},
        {"ab\u4E2D\u6587cd", {"a", "b", "\u4E2D", "\u6587", "c", "d"}},
        {"\U0001F468\u200D\U0001F469\u200D\U0001F467!", {"\U0001F468\u200D\U0001F469\u200D\U0001F467", "!"}},
        {"a\xFF\xFE"
         "b",
         {"a", "\xFF", "\xFE", "b"}},
    };
    for (const auto& [text, characters] : cases) EXPECT_EQ(charactersOf(text), characters) << text;
}

TEST(CharacterTest, PairsFlagsAcrossBatches) {
    std::string flags;
    Characters expected;
    for (int i = 0; i < 100; ++i) {
        flags += "\U0001F1E9\U0001F1EA";
        expected.emplace_back("\U0001F1E9\U0001F1EA");
    }
    flags += "\U0001F1E9";
    expected.emplace_back("\U0001F1E9");
    EXPECT_EQ(charactersOf(flags), expected);
    EXPECT_EQ(characterCount(flags + "ab"), 103U);
}

TEST(CharacterTest, InterleavedCursorsDoNotDisturbEachOther) {
    CharacterCursor a("\u4E2D\u6587e\u0301");
    CharacterCursor b("\u00E9\u0301\u00E8");
    EXPECT_EQ(a.next(), "\u4E2D");
    EXPECT_EQ(b.next(), "\u00E9\u0301");
    EXPECT_EQ(a.next(), "\u6587");
    EXPECT_EQ(b.next(), "\u00E8");
    EXPECT_EQ(a.next(), "e\u0301");
    EXPECT_EQ(b.next(), std::nullopt);
    EXPECT_EQ(a.next(), std::nullopt);
}

TEST(CharacterTest, EveryThreadCutsForItself) {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 200; ++round)
                ASSERT_EQ(characterCount("\u4E2De\u0301\U0001F600"), 3U);
        });
    }
}

TEST(CharacterTest, SetsFollowTheGeneralCategories) {
    const std::string_view punctuation = "!\"#%&'()*,-./:;?@[\\]_{}";
    for (char32_t c = 0; c < 0x80; ++c) {
        EXPECT_EQ(CharacterSet::isPunctuation(c),
                  c != 0 && punctuation.find(static_cast<char>(c)) != std::string_view::npos);
        EXPECT_EQ(CharacterSet::isDecimalDigit(c), c >= '0' && c <= '9');
        EXPECT_EQ(CharacterSet::isWhitespaceOrNewline(c), c == ' ' || (c >= 9 && c <= 13));
    }
    for (char32_t c : {0x85, 0xA0, 0x1680, 0x2000, 0x200B, 0x2028, 0x202F, 0x205F, 0x3000})
        EXPECT_TRUE(CharacterSet::isWhitespaceOrNewline(c)) << std::hex << static_cast<unsigned>(c);
    for (char32_t c : {0x180E, 0x200C, 0xFEFF, 0x110000})
        EXPECT_FALSE(CharacterSet::isWhitespaceOrNewline(c)) << std::hex << static_cast<unsigned>(c);
    EXPECT_TRUE(CharacterSet::isDecimalDigit(0xFF15));
    EXPECT_FALSE(CharacterSet::isDecimalDigit(0x00B2)) << "superscript two is No";
    EXPECT_TRUE(CharacterSet::isPunctuation(0x3002));
    EXPECT_FALSE(CharacterSet::isPunctuation(0x20AC)) << "the euro sign is Sc";
}

// Every scalar there and back, and every lead and second byte judged as the table of RFC 3629 has them.
TEST(CharacterTest, ScalarsAreReadAsTheValidatorReadsThem) {
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            for (const std::string_view rest : {"", "\x80", "\x80\x80"}) {
                const std::string text =
                    std::string{static_cast<char>(first), static_cast<char>(second)} + std::string(rest);
                const auto [value, length] = firstScalar(text);
                const bool read = value != kReplacementCharacter || length == 3;
                ASSERT_EQ(read, isValidUTF8(std::string_view(text).substr(0, length)))
                    << first << " " << second;
            }
        }
    }
    EXPECT_EQ(firstScalar("\U0010FFFF").value, 0x10FFFFU);
    EXPECT_EQ(firstScalar("").length, 0U);
}

/// Ends the process as `main` does, and reads a text when all statics of the first reading have ended.
[[noreturn]] void readToTheVeryEnd() {
    std::atexit([] { ::_exit(isValidUTF8("né") ? 0 : 1); });
    std::exit(isValidUTF8("é") ? 2 : 3);
}

TEST(CharacterTest, TextsAreReadToTheVeryEnd) {
    EXPECT_EXIT(readToTheVeryEnd(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zqcore::platform
