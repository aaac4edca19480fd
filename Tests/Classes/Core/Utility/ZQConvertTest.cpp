#include "Classes/Core/Utility/ZQConvert.h"

#include <gtest/gtest.h>

#include <cctype>
#include <random>

namespace zqcore {
namespace {

Data bytes(std::string_view text) { return Data(std::string(text)); }

std::string randomBytes(std::mt19937& random, std::size_t size) {
    std::string text(size, '\0');
    for (auto& character : text) character = static_cast<char>(random());
    return text;
}

TEST(ZQConvertTest, ReadsHexadecimalText) {
    using namespace std::string_view_literals;
    const struct {
        std::string_view text;
        std::optional<std::string_view> bytes;
    } cases[] = {
        {"", ""sv},
        {"aB", "\xAB"sv},
        {"00fF10", "\x00\xFF\x10"sv},
        {"abc", std::nullopt},
        {"0G", std::nullopt},
        {"0x", std::nullopt},
        {"12 34", std::nullopt},
        {"a\r\nb", std::nullopt},
        {"\uFF11\uFF26", "\x1F"sv},
        {"\uFF41b", "\xAB"sv},
        {"\uFF11", std::nullopt},
        {"\u0661\u0662", std::nullopt},
        {"1\u0301a", std::nullopt},
        {"a\xFF", std::nullopt},
    };
    for (const auto& [text, expected] : cases) {
        const auto read = ZQConvert::dataFromHexString(text);
        ASSERT_EQ(read.has_value(), expected.has_value()) << text;
        if (expected) {
            EXPECT_EQ(read->view(), *expected) << text;
        }
    }
}

TEST(ZQConvertTest, WritesHexadecimalText) {
    std::string all(256, '\0');
    for (int i = 0; i < 256; ++i) all[static_cast<std::size_t>(i)] = static_cast<char>(i);
    const Data data(all);
    EXPECT_EQ(toHexLowerString(bytes(std::string_view(all).substr(0, 10))), "00010203040506070809");
    EXPECT_EQ(toHexLowerString(bytes("\xAB\x01\xFF")), "ab01ff");
    EXPECT_EQ(toHexUpperString(bytes("\xAB\x01\xFF")), "AB01FF");
    EXPECT_EQ(ZQConvert::dataFromHexString(toHexLowerString(data)), data);
    EXPECT_EQ(ZQConvert::dataFromHexString(toHexUpperString(data)), data);
}

TEST(ZQConvertTest, HexadecimalTextIsReadWhollyOrNotAtAll) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    for (int round = 0; round < 20'000; ++round) {
        std::string raw(random() % 40, '\0');
        for (char& byte : raw) byte = static_cast<char>(random());
        const Data data(raw);
        auto text = round % 2 == 0 ? toHexLowerString(data) : toHexUpperString(data);
        ASSERT_EQ(text.size(), 2 * raw.size());
        ASSERT_EQ(ZQConvert::dataFromHexString(text), data) << "seed " << seed << " text " << text;
        if (text.empty()) continue;
        // Any ASCII character in the place of a digit.
        char& digit = text[random() % text.size()];
        digit = static_cast<char>(random() % 128);
        ASSERT_EQ(ZQConvert::dataFromHexString(text).has_value(),
                  std::isxdigit(static_cast<unsigned char>(digit)) != 0)
            << "seed " << seed << " text " << text;
        text.pop_back();
        ASSERT_EQ(ZQConvert::dataFromHexString(text), std::nullopt) << "seed " << seed << " text " << text;
    }
}

TEST(ZQConvertTest, ReadsBase64AroundForeignCharacters) {
    const struct {
        std::string_view text;
        std::optional<std::string_view> bytes;
    } cases[] = {
        {"YQ==", "a"},
        {"Y Q\n=\t=", "a"},
        {"Y-Q_==", "a"},
        {"YR==", "a"},
        {"YWI=", "ab"},
        {"YWJj", "abc"},
        {"\u4E2DYW\uFF21Jj", "abc"},
        {"", ""},
        {"!!", ""},
        {"====", ""},
        {"Y===", ""},
        {"YQ", std::nullopt},
        {"YQ=", std::nullopt},
        {"=YQ=", std::nullopt},
        {"YQ==YQ==", std::nullopt},
        {"YQ=a", std::nullopt},
        {"YWJj=", std::nullopt},
    };
    for (const auto& [text, expected] : cases) {
        const auto read = ZQConvert::dataFromBase64String(text);
        ASSERT_EQ(read.has_value(), expected.has_value()) << text;
        if (expected) {
            EXPECT_EQ(read->view(), *expected) << text;
        }
    }
}

// Long enough for every road through the vector code, its ends and its way back after a foreign character.
TEST(ZQConvertTest, Base64ComesBackFromEveryLength) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    for (std::size_t size = 0; size < 300; ++size) {
        const Data data(randomBytes(random, size));
        auto text = toBase64String(data);
        ASSERT_EQ(text.size(), (size + 2) / 3 * 4);
        ASSERT_EQ(ZQConvert::dataFromBase64String(text), data) << size;
        for (const std::size_t line : {1U, 7U, 33U, 76U}) {
            auto broken = text;
            for (auto at = line; at < broken.size(); at += line + 1) broken.insert(at, 1, '\n');
            ASSERT_EQ(ZQConvert::dataFromBase64String(broken), data) << size << " in lines of " << line;
        }
    }
}

TEST(ZQConvertTest, EveryCharacterOfABlockIsJudged) {
    std::string text(64, 'A');
    for (std::size_t at : {0U, 31U, 32U, 63U}) {
        for (int character = 0; character < 256; ++character) {
            auto changed = text;
            changed[at] = static_cast<char>(character);
            const bool letter = std::isalnum(character) != 0 || character == '+' || character == '/';
            const bool closing = character == '=' && at == 63;
            ASSERT_EQ(ZQConvert::dataFromBase64String(changed).has_value(), letter || closing)
                << character << " at " << at;
        }
    }
}

TEST(ZQConvertTest, Base64IsTheStandardOne) {
    EXPECT_EQ(toBase64String(bytes("")), "");
    EXPECT_EQ(toBase64String(bytes("f")), "Zg==");
    EXPECT_EQ(toBase64String(bytes("fo")), "Zm8=");
    EXPECT_EQ(toBase64String(bytes("foobar")), "Zm9vYmFy");
    // All 64 letters, through the vector code and after it.
    std::string all;
    for (unsigned i = 0; i < 64; i += 4) {
        const unsigned bits = i << 18U | (i + 1) << 12U | (i + 2) << 6U | (i + 3);
        for (unsigned shift : {16U, 8U, 0U}) all += static_cast<char>(bits >> shift);
    }
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(toBase64String(bytes(all + all)), alphabet + alphabet);
}

TEST(ZQConvertTest, OnlyUTF8IsText) {
    using namespace std::string_view_literals;
    for (const auto text : {"a\xC0\x80"sv, "\xED\xA0\x80"sv, "\xF4\x90\x80\x80"sv, "\xE4\xB8"sv, "\x80"sv}) {
        EXPECT_FALSE(ZQConvert::dataFromUTF8String(std::string(text)));
        EXPECT_FALSE(toUTF8String(bytes(text)));
        EXPECT_FALSE(toUTF8String(bytes(std::string(100, 'a') + std::string(text))));
    }
    const auto text = "\0a\u00E9\u4E2D\U0001F600"sv;
    EXPECT_EQ(ZQConvert::dataFromUTF8String(std::string(text))->view(), text);
    EXPECT_EQ(toUTF8String(bytes(text)), text);
}

}  // namespace
}  // namespace zqcore
