#include "Platform/Foundation/JSON/JSONWriter.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <random>

#include "Platform/Base/Value.h"
#include "Platform/Foundation/JSON/JSONDecoder.h"
#include "Platform/Foundation/JSON/NSJSONSerialization.h"

namespace zqcore {
namespace {

std::string written(double value) {
    JSONWriter writer;
    writer.real(value);
    return writer.take().value_or("(error)");
}

std::string written(std::string_view value) {
    JSONWriter writer;
    writer.string(value);
    return writer.take().value_or("(error)");
}

TEST(JSONWriterTest, DoublesInTheirShortestForm) {
    const std::pair<double, std::string_view> cases[] = {
        {0.0, "0"},
        {-0.0, "-0"},
        {30.0, "30"},
        {12.5, "12.5"},
        {-1.5, "-1.5"},
        {0.0001, "0.0001"},
        {0.00001, "1e-05"},
        {0.00012345, "0.00012345"},
        {9007199254740992.0, "9007199254740992"},
        {9007199254740994.0, "9.007199254740994e+15"},
        {1e15, "1000000000000000"},
        {1e16, "1e+16"},
        {1e100, "1e+100"},
        {0.1, "0.1"},
        {1.0 / 3, "0.3333333333333333"},
        {5e-324, "5e-324"},
        {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    };
    for (const auto& [value, text] : cases) {
        EXPECT_EQ(written(value), text);
        EXPECT_EQ(describeDouble(value),
                  text.find_first_of(".e") == text.npos ? std::string(text) + ".0" : text);
    }
    for (const double bad :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(written(bad), "(error)");
    }
}

TEST(JSONWriterTest, AnyDoubleReadsBackBitByBit) {
    const auto seed = std::random_device{}();
    std::mt19937_64 random(seed);
    for (int i = 0; i < 20'000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (!std::isfinite(value)) continue;
        const std::string text = written(value);
        const auto read = JSONDecoder{}.decode<double>(text);
        ASSERT_TRUE(read) << text << " seed " << seed;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(*read), std::bit_cast<std::uint64_t>(value))
            << text << " seed " << seed;
    }
}

TEST(JSONWriterTest, TextOfEveryByte) {
    for (int c = 0; c < 0x80; ++c) {
        static constexpr const char* named[] = {"\\b", "\\t", "\\n", nullptr, "\\f", "\\r"};
        std::string expected(1, static_cast<char>(c));
        if (c == '"' || c == '\\' || c == '/') expected = '\\' + expected;
        if (c < 0x20) {
            char buffer[8];
            std::snprintf(buffer, sizeof buffer, "\\u%04x", static_cast<unsigned>(c));
            expected = c >= 8 && c <= 13 && named[c - 8] ? named[c - 8] : buffer;
        }
        // Alone, and on either side of a block of sixteen, short and long enough to be counted first.
        for (const std::size_t around : {0U, 15U, 17U, 400U}) {
            const std::string rest(around, 'x');
            const std::string text = rest + static_cast<char>(c) + rest;
            ASSERT_EQ(written(text), '"' + rest + expected + rest + '"') << c << " among " << around;
            ASSERT_EQ(*JSONDecoder{}.decode<std::string>(written(text)), text);
        }
    }
    EXPECT_EQ(written("\x7F中😀\xE2\x80\xA8"), "\"\x7F中😀\xE2\x80\xA8\"");
    EXPECT_EQ(written(std::string(1000, '\x01')).size(), 6002U);
    for (const std::string_view bad : {"\x80", "aaaaaaaaaaaaaaaaaaaaaaa\xFF", "\xED\xA0\x80"}) {
        EXPECT_EQ(written(bad), "(error)");
    }
}

TEST(JSONWriterTest, GenericValues) {
    const Value value(Value::Dictionary{{"z", Value(UINT64_MAX)},
                                        {"a/b", Value(Value::Array{INT64_MIN, 2.0, true, nullptr, "/"})},
                                        {"", Value::Dictionary{}}});
    const auto text = NSJSONSerialization::data(value);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->view(),
              R"({"z":18446744073709551615,"a\/b":[-9223372036854775808,2,true,null,"\/"],"":{}})");
}

TEST(JSONWriterTest, WhatIsAValidObject) {
    const auto nested = [](int levels) {
        Value value(Value::Array{});
        for (int i = 1; i < levels; ++i) {
            Value::Array outer;
            outer.push_back(std::move(value));
            value = Value(std::move(outer));
        }
        return value;
    };
    EXPECT_TRUE(NSJSONSerialization::isValidJSONObject(nested(512)));
    EXPECT_TRUE(NSJSONSerialization::data(nested(512)));
    EXPECT_FALSE(NSJSONSerialization::isValidJSONObject(nested(513)));
    EXPECT_FALSE(NSJSONSerialization::data(nested(513)));
    EXPECT_FALSE(NSJSONSerialization::isValidJSONObject(nested(1'000'000)));
    for (const Value& bad :
         {Value(3), Value("x"), Value(), Value(Value::Array{Data()}), Value(Value::Array{Date()}),
          Value(Value::Array{std::numeric_limits<double>::infinity()})}) {
        EXPECT_FALSE(NSJSONSerialization::isValidJSONObject(bad)) << bad.description();
    }
}

struct Holder {
    std::optional<double> number;
    std::vector<std::shared_ptr<Holder>> list;
    ZQ_FIELDS(Holder, number, list)
};

TEST(JSONWriterTest, AFailureNamesItsField) {
    Holder holder;
    holder.list = {std::make_shared<Holder>(), std::make_shared<Holder>()};
    holder.list[1]->number = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(JSONEncoder{}.encode(holder).error().path, "list[1].number");
    holder.list[1] = nullptr;
    EXPECT_EQ(JSONEncoder{}.encode(holder).error().path, "list[1]");
    EXPECT_FALSE(JSONEncoder{}.encode(std::shared_ptr<Holder>()).has_value()) << "nothing at the top level";
    EXPECT_FALSE(JSONEncoder{}.encode(std::optional<double>()).has_value());
}

TEST(JSONWriterTest, ARecordWithinItselfStopsAtTheLimit) {
    const auto chain = [](int levels) {
        auto holder = std::make_shared<Holder>();
        for (int i = 1; i < levels; ++i) {
            auto outer = std::make_shared<Holder>();
            outer->list.push_back(std::move(holder));
            holder = std::move(outer);
        }
        return holder;
    };
    // Each level is an object and an array.
    EXPECT_TRUE(JSONEncoder{}.encode(chain(256)));
    EXPECT_FALSE(JSONEncoder{}.encode(chain(257)));
    std::string text;
    for (int i = 0; i < 100'000; ++i) text += R"({"list":[)";
    EXPECT_FALSE(JSONDecoder{}.decode<Holder>(text));
    EXPECT_EQ(JSONDecoder{}.decode<Holder>(R"({"list":[{}]})").error().path, "list[0].list")
        << "a required field";
}

}  // namespace
}  // namespace zqcore
