#include "Platform/Foundation/JSON/JSONReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Platform/Base/Value.h"
#include "Platform/Foundation/JSON/NSJSONSerialization.h"

namespace zqcore {
namespace {

/// Read as a generic value and passed unread: both must judge alike.
bool reads(std::string_view text) {
    Value value;
    JSONReader reading(text);
    const bool read = reading.readValue(value) && reading.finish();
    JSONReader skipping(text);
    const bool skipped = skipping.skipValue() && skipping.finish();
    EXPECT_EQ(read, skipped) << text;
    return read;
}

std::optional<std::string> stringOf(std::string_view text) {
    JSONReader reader(text);
    std::string out;
    if (!reader.readString(out) || !reader.finish()) return std::nullopt;
    return out;
}

TEST(JSONReaderTest, Grammar) {
    for (const std::string_view good :
         {"3", "null", "true", " [ ] ", "\t\r\n{}\n", "[1,2]", R"({"a":{"b":[null,true,false]}})", "\"\x7F\"",
          "\"\xE2\x80\xA8\"", "\xEF\xBB\xBF{}", R"({"":0,"":1})"}) {
        EXPECT_TRUE(reads(good)) << good;
    }
    using namespace std::string_view_literals;
    for (const std::string_view bad :
         {""sv,         " \n"sv,         "{} x"sv,    "{}{}"sv,     "{}\0"sv,
          "[1,]"sv,     R"({"a":1,})"sv, "[,]"sv,     "[1,,2]"sv,   "[1 2]"sv,
          "[1"sv,       "{"sv,           R"({"a")"sv, R"({"a":)"sv, R"({"a" 1})"sv,
          "{a:1}"sv,    "{'a':1}"sv,     "{1:2}"sv,   "{,}"sv,      "nul"sv,
          "nullx"sv,    "True"sv,        "NaN"sv,     "Infinity"sv, "// c\n1"sv,
          "[1]/**/"sv,  "]"sv,           "[}"sv,      "{]"sv,       "\xFE\xFF\0{"sv,
          "\f{}"sv,     "\xC2\xA0{}"sv,  "\""sv,      "\"\\"sv,     "\"\\\""sv,
          "\"a\nb\""sv, "\"\x1F\""sv,    "\"\0\""sv}) {
        EXPECT_FALSE(reads(bad)) << bad;
    }
}

TEST(JSONReaderTest, EscapesAndSurrogates) {
    using namespace std::string_literals;
    EXPECT_EQ(stringOf(R"("\"\\\/\b\f\n\r\t/")"), "\"\\/\b\f\n\r\t/");
    EXPECT_EQ(stringOf(R"("\u0041\u00e9\u20AC\u0000")"), "A\xC3\xA9\xE2\x82\xAC"s + '\0');
    EXPECT_EQ(stringOf(R"("\ud83d\uDE00")"), "\xF0\x9F\x98\x80");
    for (const std::string_view bad :
         {R"("\ud83d")", R"("\ude00")", R"("\ud83dx")", R"("\ud83d\n")", R"("\ud83d\u0041")",
          R"("\ud83d\ud83d")", R"("\x41")", R"("\u12g4")", R"("\u12")", R"("\U0041")", R"("\ ")"}) {
        EXPECT_FALSE(stringOf(bad)) << bad;
        EXPECT_FALSE(reads(bad)) << bad;
    }
}

TEST(JSONReaderTest, InvalidUTF8IsRefusedWhereverItStands) {
    for (const std::string bytes :
         {"\x80", "\xC0\xAF", "\xE2\x82", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF"}) {
        for (const std::string& before :
             {std::string(), std::string(40, 'x'), std::string("\\/"), std::string(20, 'x') + "\\n"}) {
            for (const std::string& after : {std::string(), std::string(40, 'y'), std::string("\\t")}) {
                const std::string text = '"' + before + bytes + after + '"';
                EXPECT_FALSE(stringOf(text)) << before << " ... " << after;
                EXPECT_FALSE(reads("{" + text + ":1}"));
                EXPECT_FALSE(reads("[" + text + "]"));
            }
        }
    }
}

// Blocks of sixteen, their borders, and escapes on each place of them.
TEST(JSONReaderTest, EveryPlaceOfAnEscapeInALongText) {
    const std::string clean(70, 'a');
    EXPECT_EQ(stringOf('"' + clean + '"'), clean);
    for (std::size_t i = 0; i <= clean.size(); ++i) {
        for (const auto& [escape, plain] :
             {std::pair{"\\/", "/"}, {"\\\\", "\\"}, {"\\\"", "\""}, {"\\u00e9", "\xC3\xA9"}}) {
            const auto with = [&](std::string_view part) {
                return clean.substr(0, i) + std::string(part) + clean.substr(i);
            };
            EXPECT_EQ(stringOf('"' + with(escape) + '"'), with(plain)) << i;
        }
        EXPECT_FALSE(stringOf('"' + clean.substr(0, i) + '\x01' + clean.substr(i) + '"')) << i;
        EXPECT_FALSE(stringOf("\"\\n" + clean.substr(0, i) + '\x01' + clean.substr(i) + '"')) << i;
        EXPECT_FALSE(stringOf('"' + clean.substr(0, i))) << i;
    }
}

struct NumberCase {
    std::string_view token;
    std::optional<std::int64_t> integer;
    std::optional<double> real;
};

class JSONNumberTest : public testing::TestWithParam<NumberCase> {};

TEST_P(JSONNumberTest, ReadsByValue) {
    const auto& [token, integer, real] = GetParam();
    JSONReader first(token);
    std::int64_t wholeNumber = 0;
    EXPECT_EQ(first.readInt64(wholeNumber), integer.has_value()) << token;
    if (integer) {
        EXPECT_EQ(wholeNumber, *integer) << token;
    }
    JSONReader second(token);
    double number = 0;
    EXPECT_EQ(second.readDouble(number), real.has_value()) << token;
    if (real) {
        EXPECT_EQ(number, *real) << token;
        EXPECT_EQ(std::signbit(number), std::signbit(*real)) << token;
    }
    EXPECT_EQ(reads(token), real.has_value());
}

constexpr auto none = std::nullopt;
INSTANTIATE_TEST_SUITE_P(
    Tokens, JSONNumberTest,
    testing::Values(
        NumberCase{"0", 0, 0.0}, NumberCase{"-0", 0, -0.0}, NumberCase{"1.0", 1, 1.0},
        NumberCase{"1e2", 100, 100.0}, NumberCase{"1.5e1", 15, 15.0}, NumberCase{"1.5", none, 1.5},
        NumberCase{"1e-1", none, 0.1}, NumberCase{"10e-1", 1, 1.0},
        NumberCase{"9223372036854775807", INT64_MAX, 9223372036854775808.0},
        NumberCase{"-9223372036854775808", INT64_MIN, -9223372036854775808.0},
        NumberCase{"9223372036854775808", none, 9223372036854775808.0}, NumberCase{"1e19", none, 1e19},
        NumberCase{"18446744073709551616", none, 18446744073709551616.0},
        NumberCase{"99999999999999999999", none, 1e20},
        NumberCase{"-9223372036854775809", none, -9223372036854775808.0},
        NumberCase{"1e18", 1'000'000'000'000'000'000, 1e18},
        NumberCase{"9007199254740993.0", 9007199254740993, 9007199254740992.0},
        NumberCase{"9007199254740993", 9007199254740993, 9007199254740992.0},
        NumberCase{"9007199254740993.5", none, 9007199254740994.0},
        NumberCase{"9223372036854775807.0", none, 9223372036854775808.0},
        NumberCase{"-9223372036854775808.0", INT64_MIN, -9223372036854775808.0},
        NumberCase{"0.9007199254740993e16", 9007199254740993, 9007199254740992.0},
        NumberCase{"1.0000000000000001", 1, 1.0}, NumberCase{"0e999", 0, 0.0}, NumberCase{"0.000", 0, 0.0},
        NumberCase{"4.9e-324", none, 4.9e-324}, NumberCase{"1e400", none, none},
        NumberCase{"-1e400", none, none}, NumberCase{"1e-400", none, none}, NumberCase{"01", none, none},
        NumberCase{"+1", none, none}, NumberCase{".5", none, none}, NumberCase{"1.e5", none, none},
        NumberCase{"-", none, none}, NumberCase{"-a", none, none}));

TEST(JSONReaderTest, NumbersThatTheGrammarRefuses) {
    for (const std::string_view bad :
         {"01", "-01", "+1", ".5", "1.", "1.e5", "1e", "1e+", "-", "0x1", "1.2.3", "1e5.5", "--1"}) {
        EXPECT_FALSE(reads(bad)) << bad;
    }
}

TEST(JSONReaderTest, NestingIsLimitedAndNeverRecursive) {
    const auto nested = [](std::size_t levels) {
        return std::string(levels, '[') + std::string(levels, ']');
    };
    EXPECT_TRUE(reads(nested(512)));
    EXPECT_FALSE(reads(nested(513)));
    EXPECT_FALSE(reads(std::string(5'000'000, '[')));
    std::string objects;
    for (int i = 0; i < 513; ++i) objects += R"({"a":)";
    EXPECT_FALSE(reads(objects + '1' + std::string(513, '}')));
}

TEST(JSONReaderTest, GenericValues) {
    const auto value = NSJSONSerialization::JSONObject(
        R"({"b":1,"b":2,"a":[9223372036854775807,18446744073709551615,18446744073709551616,-0,1.0,true,null,"x"]})",
        NSJSONReadingMutableContainers);
    ASSERT_TRUE(value);
    EXPECT_EQ(value->asDictionary()->size(), 2U);
    EXPECT_EQ(value->asDictionary()->begin()->first, "b") << "the order of the text";
    EXPECT_EQ(*value->asDictionary()->find("b"), Value(1)) << "the first of two equal keys";
    const auto& array = *value->asDictionary()->find("a")->asArray();
    const Value expected[] = {Value(INT64_MAX), Value(UINT64_MAX), Value(18446744073709551616.0),
                              Value(-0.0),      Value(1.0),        Value(true),
                              Value(),          Value("x")};
    ASSERT_EQ(array.size(), std::size(expected));
    for (std::size_t i = 0; i < array.size(); ++i) EXPECT_EQ(array[i], expected[i]) << i;
    EXPECT_TRUE(std::signbit(*array[3].asReal()));
}

TEST(JSONReaderTest, FragmentsNeedTheirBit) {
    for (const std::string_view text : {"3", "\"x\"", "null", "true"}) {
        const auto refused = NSJSONSerialization::JSONObject(text, NSJSONReadingMutableContainers);
        ASSERT_FALSE(refused) << text;
        EXPECT_EQ(refused.error().code(), 3840);
        EXPECT_EQ(refused.error().domain(), NSCocoaErrorDomain);
        EXPECT_TRUE(NSJSONSerialization::JSONObject(text, NSJSONReadingFragmentsAllowed)) << text;
    }
}

TEST(JSONReaderTest, AMismatchLeavesItsValueForAnotherTry) {
    JSONReader reader(R"([12, 1e400, "x", nul])");
    ASSERT_TRUE(reader.beginArray());
    ASSERT_EQ(reader.nextElement(), JSONReader::Step::item);
    std::string text;
    EXPECT_FALSE(reader.readString(text));
    ASSERT_TRUE(reader.takeMismatch());
    std::int64_t number = 0;
    EXPECT_TRUE(reader.readInt64(number));
    EXPECT_EQ(number, 12);
    ASSERT_EQ(reader.nextElement(), JSONReader::Step::item);
    double real = 0;
    EXPECT_FALSE(reader.readDouble(real));
    EXPECT_EQ(reader.takeMismatch()->kind, JSONError::Kind::outOfRange);
    EXPECT_TRUE(reader.skipValue(JSONReader::SkippedNumbers::any))
        << "what has been tried in vain may be passed";
    ASSERT_EQ(reader.nextElement(), JSONReader::Step::item);
    EXPECT_FALSE(reader.readInt64(number));
    ASSERT_TRUE(reader.takeMismatch());
    EXPECT_TRUE(reader.readString(text));
    ASSERT_EQ(reader.nextElement(), JSONReader::Step::item);
    EXPECT_FALSE(reader.skipValue());
    EXPECT_FALSE(reader.takeMismatch()) << "a broken text is final";
}

}  // namespace
}  // namespace zqcore
