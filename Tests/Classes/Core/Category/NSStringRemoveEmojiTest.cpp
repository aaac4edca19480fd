#include "Classes/Core/Category/NSStringRemoveEmoji.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <set>

#include "Classes/Core/Category/NSCharacterSetEmojiCharacterSet.h"
#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/Utf16.h"

namespace zqcore {
namespace {

std::string utf8(std::initializer_list<char32_t> scalars) {
    std::string text;
    for (const char32_t scalar : scalars) appendScalar(text, scalar);
    return text;
}

std::string keycap(char key, bool selectorFirst) {
    const char32_t first = selectorFirst ? 0xFE0F : 0x20E3;
    const char32_t second = selectorFirst ? 0x20E3 : 0xFE0F;
    return utf8({static_cast<char32_t>(key), first, second});
}

TEST(NSStringRemoveEmojiTest, JudgesEveryCharacterByItsFirstUnit) {
    // The platform's list of units and its two ranges, over the whole of Unicode.
    const std::set<unsigned> units{0x00A9, 0x00AE, 0x10E6, 0x200D, 0x203C, 0x2049, 0x2640, 0x2642, 0x27F9,
                                   0x2934, 0x2935, 0x2B05, 0x2B06, 0x2B07, 0x2B1B, 0x2B1C, 0x2B50, 0x2B55,
                                   0x3030, 0x303D, 0x30C4, 0x3297, 0x3299, 0xD83C, 0xD83E, 0xFE0F};
    for (char32_t scalar = 1; scalar <= 0x10FFFF; ++scalar) {
        if (scalar >= 0xD800 && scalar < 0xE000) continue;
        const std::string text = utf8({scalar});
        const bool listed = units.contains(toUTF16(text)[0]);
        const bool ranged =
            scalar >= 0x10000 ? scalar >= 0x1D000 && scalar <= 0x1F77F : scalar >= 0x2100 && scalar <= 0x27BF;
        if (isFuckEmoji(text) != listed || zq_containsEmoji(text) != (listed || ranged)) {
            ADD_FAILURE() << std::hex << static_cast<unsigned>(scalar);
        }
    }
    EXPECT_FALSE(zq_containsEmoji(""));
    EXPECT_FALSE(zq_containsEmoji("a😀")) << "only the first character is looked at";
    EXPECT_TRUE(zq_containsEmoji("😀a"));
    EXPECT_FALSE(zq_containsEmoji("\xF0\x9F\x98")) << "a cut character";
}

TEST(NSStringRemoveEmojiTest, KnowsTheKeycaps) {
    for (const char key : {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '#', '*', 'a', '/', ':'}) {
        const bool listed = std::string_view("0123456789#*").find(key) != std::string_view::npos;
        EXPECT_EQ(isFuckEmoji(keycap(key, true)), listed) << key;
        EXPECT_EQ(isFuckEmoji(keycap(key, false)), listed && key != '*') << key;
        EXPECT_EQ(zq_removingEmoji("x" + keycap(key, true) + "y"),
                  listed ? "xy" : "x" + keycap(key, true) + "y");
        EXPECT_FALSE(isFuckEmoji(std::string(1, key)));
    }
    EXPECT_EQ(zq_removingEmoji("1" + keycap('1', true) + "1"), "11");
    EXPECT_EQ(zq_removingEmoji(keycap('*', false)), keycap('*', false));
    EXPECT_FALSE(zq_containsEmoji(keycap('1', true) + "x")) << "the keycaps are compared as a whole";
    const std::string marked = keycap('1', true) + utf8({0x301});
    EXPECT_EQ(zq_removingEmoji(marked), marked) << "one more mark, and it is another sequence";
}

TEST(NSStringRemoveEmojiTest, TakesWholeSequencesAndNothingElse) {
    const std::string family = utf8({0x1F468, 0x200D, 0x1F469, 0x200D, 0x1F467});
    const std::string flag = utf8({0x1F1E8, 0x1F1F3});
    const std::string waving = utf8({0x1F44B, 0x1F3FD});
    const struct {
        std::string text, removed, joined;
        std::vector<std::string> ranges;
    } kCases[] = {
        {"plain text 123 #*", "plain text 123 #*", "", {}},
        {"你好，世界。“引号”—…", "你好，世界。“引号”—…", "", {}},
        {"😀a", "a", "😀", {"{0, 2}"}},
        {"a→b™c℃d", "abcd", "→™℃", {"{1, 1}", "{3, 1}", "{5, 1}"}},
        {"テツト", "テト", "ツ", {"{1, 1}"}},
        {"©2026®", "2026", "©®", {"{0, 1}", "{5, 1}"}},
        {"好" + family + flag + waving + "!", "好!", family + flag + waving, {"{1, 8}", "{9, 4}", "{13, 4}"}},
        {flag + utf8({0x1F1E8}) + "x", "x", flag + utf8({0x1F1E8}), {"{0, 4}", "{4, 2}"}},
        // A mark belongs to the letter before it, whatever it would be by itself.
        {utf8({'a', 0xFE0F, 'b'}), utf8({'a', 0xFE0F, 'b'}), "", {}},
        {utf8({0xFE0F, 'b'}), "b", utf8({0xFE0F}), {"{0, 1}"}},
        {"\r\n" + utf8({0xFE0F}), "\r\n", utf8({0xFE0F}), {"{2, 1}"}},
        // An orange circle is outside the ranges, and what is joined to it stays with it.
        {utf8({0x1F7E0, 0x200D, 0x1F600, 0x1F600}), utf8({0x1F7E0, 0x200D, 0x1F600}), "😀", {"{5, 2}"}},
        // A prefix takes the emoji into its own sequence.
        {utf8({0x600, 0x1F600, 0x1F600}), utf8({0x600, 0x1F600}), "😀", {"{3, 2}"}},
        {"\xFF😀\xC3", "\xFF\xC3", "😀", {"{1, 2}"}},
    };
    for (const auto& [text, removed, joined, ranges] : kCases) {
        EXPECT_EQ(zq_removingEmoji(text), removed) << text;
        EXPECT_EQ(zq_allEmojiString(text), joined) << text;
        EXPECT_EQ(zq_allEmojiRanges(text), ranges) << text;
        EXPECT_EQ(zq_allEmoji(text).size(), ranges.size()) << text;
    }
    EXPECT_EQ(zq_stringByReplaceingEmojiWithString("a" + family + "😀b", "[e]"), "a[e][e]b");
}

/// The rule as it reads: cut the whole text, judge each piece.
std::string removedByTheRule(std::string_view text) {
    std::string kept;
    for (CharacterCursor cursor(text); auto character = cursor.next();) {
        if (!zq_containsEmoji(*character)) kept += *character;
    }
    return kept;
}

TEST(NSStringRemoveEmojiTest, AgreesWithCuttingTheWholeTextOnRandomTexts) {
    const unsigned seed = std::random_device{}();
    std::mt19937 random(seed);
    constexpr char32_t kScalars[] = {
        'a',     '1',     '#',     '*',     ' ',     '\n',    0x00A9,  0x0301,  0x0600,  0x0903,  0x0915,
        0x094D,  0x0937,  0x10E6,  0x1100,  0x1161,  0xAC00,  0x200B,  0x200D,  0x20E3,  0x2192,  0x2764,
        0x4F60,  0x597D,  0x3002,  0x30C4,  0x30C8,  0xFE0F,  0xFF0C,  0x1D165, 0x1D173, 0x1F1E8, 0x1F1F3,
        0xE0067, 0x1F3FD, 0x1F44B, 0x1F468, 0x1F600, 0x1F7E0, 0x1F923, 0x1F9D1, 0x20000};
    for (int round = 0; round < 20'000; ++round) {
        std::string text;
        const auto length = random() % 40;
        for (unsigned i = 0; i < length; ++i) appendScalar(text, kScalars[random() % std::size(kScalars)]);
        ASSERT_EQ(zq_removingEmoji(text), removedByTheRule(text)) << "seed " << seed << " text " << text;
    }
}

TEST(NSStringRemoveEmojiTest, KeepsFastOnHostileTexts) {
    // Each of these would take hours if looking back went to the beginning of the text.
    for (const auto& piece : {utf8({0x600, 0x1F600}), utf8({'a', 0xFE0F}), utf8({0x1F7E0, 0x200D, 0x1F600}),
                              utf8({0x1F1E8}), utf8({0x301, 0x200D}), keycap('*', false)}) {
        std::string text;
        while (text.size() < 2'000'000) text += piece;
        EXPECT_LE(zq_removingEmoji(text).size(), text.size());
    }
}

TEST(NSCharacterSetEmojiCharacterSetTest, HoldsTheScalarsOfTheSystemText) {
    const auto set = zq_emojiCharacterSet();
    std::size_t count = 0;
    for (const auto& [first, last] : set.ranges()) count += last - first + 1;
    EXPECT_EQ(count, 1170U);
    const auto text = zq_allSystemEmoji();
    EXPECT_TRUE(text.starts_with("😀😃😄😁😆😅"));
    EXPECT_TRUE(text.ends_with("⌘⎋⏎⏏⎈⎌⍟❥ツღ☻"));
    // Every range, by its first and last member.
    constexpr NSCharacterSet::Range kRanges[] = {
        {0x23, 0x23},       {0x2A, 0x2A},       {0x30, 0x39},       {0xA9, 0xA9},       {0xAE, 0xAE},
        {0x10E6, 0x10E6},   {0x200D, 0x200D},   {0x203C, 0x203C},   {0x2049, 0x2049},   {0x20E3, 0x20E3},
        {0x2122, 0x2122},   {0x2139, 0x2139},   {0x2192, 0x2192},   {0x2194, 0x2199},   {0x21A9, 0x21AA},
        {0x21B6, 0x21B7},   {0x21D2, 0x21D2},   {0x21E8, 0x21E8},   {0x21F0, 0x21F0},   {0x2318, 0x2318},
        {0x231A, 0x231B},   {0x2328, 0x2328},   {0x235F, 0x235F},   {0x2388, 0x2388},   {0x238B, 0x238C},
        {0x23CE, 0x23CF},   {0x23E9, 0x23F3},   {0x23F8, 0x23FA},   {0x24C2, 0x24C2},   {0x25AA, 0x25AB},
        {0x25B6, 0x25B6},   {0x25C0, 0x25C0},   {0x25FB, 0x25FE},   {0x2600, 0x2604},   {0x260E, 0x260E},
        {0x2611, 0x2611},   {0x2614, 0x2615},   {0x2618, 0x2618},   {0x261C, 0x261D},   {0x261F, 0x2620},
        {0x2622, 0x2623},   {0x2626, 0x2626},   {0x262A, 0x262A},   {0x262E, 0x262F},   {0x2638, 0x263B},
        {0x263E, 0x263E},   {0x2640, 0x2640},   {0x2642, 0x2642},   {0x2648, 0x2656},   {0x265B, 0x265C},
        {0x2660, 0x2660},   {0x2663, 0x2663},   {0x2665, 0x2666},   {0x2668, 0x2668},   {0x267B, 0x267B},
        {0x267F, 0x267F},   {0x2692, 0x2697},   {0x2699, 0x2699},   {0x269B, 0x269C},   {0x26A0, 0x26A1},
        {0x26AA, 0x26AB},   {0x26B0, 0x26B1},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},   {0x26C8, 0x26C8},
        {0x26CE, 0x26CF},   {0x26D1, 0x26D1},   {0x26D3, 0x26D4},   {0x26E9, 0x26EA},   {0x26F0, 0x26F5},
        {0x26F7, 0x26FA},   {0x26FD, 0x26FD},   {0x2702, 0x2702},   {0x2705, 0x2706},   {0x2708, 0x270D},
        {0x270F, 0x270F},   {0x2712, 0x2712},   {0x2714, 0x2714},   {0x2716, 0x2716},   {0x271D, 0x271D},
        {0x2721, 0x2721},   {0x2728, 0x2728},   {0x2733, 0x2734},   {0x2744, 0x2744},   {0x2747, 0x2747},
        {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2763, 0x2766},
        {0x2795, 0x2797},   {0x27A1, 0x27A1},   {0x27A9, 0x27B0},   {0x27B2, 0x27B3},   {0x27B5, 0x27B5},
        {0x27B7, 0x27BD},   {0x27BF, 0x27BF},   {0x27F9, 0x27F9},   {0x2934, 0x2935},   {0x2B05, 0x2B07},
        {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},   {0x3030, 0x3030},   {0x303D, 0x303D},
        {0x30C4, 0x30C4},   {0x3297, 0x3297},   {0x3299, 0x3299},   {0xFE0F, 0xFE0F},   {0x1F004, 0x1F004},
        {0x1F0CF, 0x1F0CF}, {0x1F170, 0x1F171}, {0x1F17E, 0x1F17F}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A},
        {0x1F1E6, 0x1F1FF}, {0x1F201, 0x1F202}, {0x1F21A, 0x1F21A}, {0x1F22F, 0x1F22F}, {0x1F232, 0x1F23A},
        {0x1F250, 0x1F251}, {0x1F300, 0x1F321}, {0x1F324, 0x1F393}, {0x1F396, 0x1F397}, {0x1F399, 0x1F39B},
        {0x1F39E, 0x1F3F0}, {0x1F3F3, 0x1F3F5}, {0x1F3F7, 0x1F48C}, {0x1F48E, 0x1F4FD}, {0x1F4FF, 0x1F51B},
        {0x1F51D, 0x1F53D}, {0x1F549, 0x1F54E}, {0x1F550, 0x1F567}, {0x1F56F, 0x1F570}, {0x1F573, 0x1F57A},
        {0x1F587, 0x1F587}, {0x1F58A, 0x1F58D}, {0x1F590, 0x1F590}, {0x1F595, 0x1F596}, {0x1F5A4, 0x1F5A5},
        {0x1F5A8, 0x1F5A8}, {0x1F5B1, 0x1F5B2}, {0x1F5BC, 0x1F5BC}, {0x1F5C2, 0x1F5C4}, {0x1F5D1, 0x1F5D3},
        {0x1F5DC, 0x1F5DE}, {0x1F5E1, 0x1F5E1}, {0x1F5E3, 0x1F5E3}, {0x1F5E8, 0x1F5E8}, {0x1F5EF, 0x1F5EF},
        {0x1F5F3, 0x1F5F3}, {0x1F5FA, 0x1F647}, {0x1F649, 0x1F64F}, {0x1F680, 0x1F6C5}, {0x1F6CB, 0x1F6D2},
        {0x1F6E0, 0x1F6E5}, {0x1F6E9, 0x1F6E9}, {0x1F6EB, 0x1F6EC}, {0x1F6F0, 0x1F6F0}, {0x1F6F3, 0x1F6F6},
        {0x1F910, 0x1F91E}, {0x1F920, 0x1F927}, {0x1F930, 0x1F930}, {0x1F933, 0x1F93A}, {0x1F93C, 0x1F93E},
        {0x1F940, 0x1F945}, {0x1F947, 0x1F94B}, {0x1F950, 0x1F95E}, {0x1F980, 0x1F991}, {0x1F9C0, 0x1F9C0}};
    EXPECT_EQ(set.ranges(), std::vector<NSCharacterSet::Range>(std::begin(kRanges), std::end(kRanges)));
    EXPECT_NE(zq_emojiCharacterSet().ranges().data(), set.ranges().data());
}

}  // namespace
}  // namespace zqcore
