#include "Platform/Foundation/PropertyList.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>

namespace zqcore {
namespace {

using Format = PropertyList::Format;

Value everyKind() {
    const auto manyTexts = [] {
        Value::Array texts;
        for (int i = 0; i < 300; ++i) texts.emplace_back("text " + std::to_string(i % 280));
        return texts;
    };
    return Value::Dictionary{
        {"true", true},
        {"false", false},
        {"one", 1},
        {"byte", 255},
        {"short", 65535},
        {"word", 4294967295U},
        {"negative", -1},
        {"least", std::numeric_limits<std::int64_t>::min()},
        {"most", std::numeric_limits<std::int64_t>::max()},
        {"unsigned", std::numeric_limits<std::uint64_t>::max()},
        {"real", 1.0},
        {"tiny", 5e-324},
        {"negative zero", -0.0},
        {"infinite", std::numeric_limits<double>::infinity()},
        {"empty", ""},
        {"chinese", "设置 <&> 😀 \r\n\t"},
        {"fifteen chars.", "123456789012345"},
        {"data", Data(std::string("\0\xFF\x01", 3))},
        {"no data", Data()},
        {"date", dateSince1970(1700000000)},
        {"before 2001", dateSince1970(-1.0)},
        {"", Value::Array{}},
        {"nested", Value::Array{Value::Dictionary{}, Value::Array{Value::Array{3}}, "text 1"}},
        {"many", manyTexts()},
    };
}

TEST(PropertyListTest, EveryKindComesBackAsItWas) {
    const Value value = everyKind();
    for (const Format form : {Format::binary, Format::xml}) {
        const auto bytes = PropertyList::write(value, form);
        ASSERT_TRUE(bytes);
        Format seen{};
        const auto back = PropertyList::read(bytes->view(), &seen);
        ASSERT_TRUE(back) << back.error().description();
        EXPECT_EQ(*back, value);
        EXPECT_EQ(seen, form);
        EXPECT_TRUE(std::signbit(*back->asDictionary()->find("negative zero")->asReal()));
    }
}

TEST(PropertyListTest, BinaryKeepsWhatXMLCannot) {
    const Date fine = dateSince1970(1700000000.0) + std::chrono::milliseconds(125);
    const Value value = Value::Array{fine, std::string("nul \0 inside", 12), std::string("\x01")};
    const auto bytes = PropertyList::write(value, Format::binary);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(PropertyList::read(bytes->view()), value);
    EXPECT_FALSE(PropertyList::write(value, Format::xml)) << "control characters";
}

TEST(PropertyListTest, AnotherImplementationAgrees) {
    const Value value = everyKind();
    const auto bytes = PropertyList::write(value, Format::binary);
    plist_t judge = nullptr;
    plist_from_bin(bytes->view().data(), static_cast<std::uint32_t>(bytes->size()), &judge);
    ASSERT_TRUE(judge);
    const auto node = [&](const char* key) { return plist_dict_get_item(judge, key); };
    EXPECT_EQ(plist_dict_get_size(judge), value.asDictionary()->size());
    EXPECT_TRUE(plist_bool_val_is_true(node("true")));
    EXPECT_EQ(plist_uint_val_compare(node("word"), 4294967295U), 0);
    EXPECT_EQ(plist_real_val_compare(node("real"), 1.0), 0);
    EXPECT_EQ(plist_string_val_compare(node("chinese"), "设置 <&> 😀 \r\n\t"), 0);
    EXPECT_EQ(plist_date_val_compare(node("date"), 1700000000 - 978307200, 0), 0);
    EXPECT_EQ(plist_array_get_size(node("many")), 300U);

    char* text = nullptr;
    std::uint32_t size = 0;
    plist_to_bin(judge, &text, &size);
    auto back = PropertyList::read({text, size});
    ASSERT_TRUE(back) << back.error().description();
    // It has one type for integers, so the two ends of 64 bits are the same to it.
    for (const char* lost : {"unsigned", "negative", "least"}) back->asDictionary()->erase(lost);
    Value expected = value;
    for (const char* lost : {"unsigned", "negative", "least"}) expected.asDictionary()->erase(lost);
    EXPECT_EQ(*back, expected);
    std::free(text);
    plist_free(judge);
}

TEST(PropertyListTest, ReadsXMLAsPeopleWriteIt) {
    struct Case {
        const char* element;
        Value value;
    };
    const Case cases[] = {
        {"<string>a&amp;b&lt;&#x41;&#66;<![CDATA[<x>&]]></string>", "a&b<AB<x>&"},
        {"<string/>", ""},
        {"<string></string >", ""},
        {"<integer> +7 </integer>", 7},
        {"<integer>0xFF</integer>", 255},
        {"<integer>-9223372036854775808</integer>", std::numeric_limits<std::int64_t>::min()},
        {"<real>1e3</real>", 1000.0},
        {"<true></true>", true},
        {"<data>\n\tYQ==\n</data>", Data(std::string("a"))},
        {"<date>2001-01-01T00:00:01Z</date>", dateSince1970(978307201)},
        {"<!-- c --><array><!-- c --><false/></array>", Value::Array{false}},
        {"<dict><key>k</key><integer>1</integer><key>k</key><integer>2</integer></dict>",
         Value::Dictionary{{"k", 1}}},
    };
    for (const auto& [element, value] : cases) {
        const std::string text = std::string(
                                     "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!DOCTYPE plist SYSTEM \"x\">\n"
                                     "<plist version=\"1.0\">") +
                                 element + "</plist>\n<!-- end -->\n";
        const auto read = PropertyList::read(text);
        ASSERT_TRUE(read) << element << ": " << read.error().description();
        EXPECT_EQ(*read, value) << element;
    }
}

TEST(PropertyListTest, RefusesXMLThatIsDamaged) {
    for (const char* element : {
             "<integer>abc</integer>",
             "<integer></integer>",
             "<integer>18446744073709551616</integer>",
             "<integer>-9223372036854775809</integer>",
             "<integer>1.5</integer>",
             "<real>1x</real>",
             "<real/>",
             "<date>2021-13-01T00:00:00Z</date>",
             "<date>2021-02-30T00:00:00Z</date>",
             "<date>now</date>",
             "<data>Y</data>",
             "<data>Y!==</data>",
             "<string>\xFF</string>",
             "<string>&nbsp;</string>",
             "<string>&#xD800;</string>",
             "<string>&",
             "<string>",
             "<string></dict>",
             "<true>1</true>",
             "<uid>1</uid>",
             "<dict><string>no key</string></dict>",
             "<dict><key>k</key></dict>",
             "<true/><true/>",
             "",
             "text",
             "<array><true/></dict>",
             "<null/>",
         }) {
        EXPECT_FALSE(PropertyList::read(std::string("<plist>") + element + "</plist>")) << element;
    }
    for (const char* text : {"", " ", "<plist/>", "<plist><true/></plist>x", "<plist><true/>", "<dict/>",
                             "<!--", "<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>"}) {
        EXPECT_FALSE(PropertyList::read(text)) << text;
    }
}

TEST(PropertyListTest, NestingEndsAtItsLimitInBothForms) {
    const auto nested = [](int depth) {
        Value value = 1;
        for (int i = 0; i < depth; ++i) {
            Value::Array outer;
            outer.push_back(std::move(value));
            value = std::move(outer);
        }
        return value;
    };
    for (const Format form : {Format::binary, Format::xml}) {
        const auto bytes = PropertyList::write(nested(512), form);
        ASSERT_TRUE(bytes);
        EXPECT_TRUE(PropertyList::read(bytes->view()));
        EXPECT_FALSE(PropertyList::write(nested(513), form));
    }
    std::string deep = "<plist>";
    for (int i = 0; i < 100'000; ++i) deep += "<array>";
    EXPECT_FALSE(PropertyList::read(deep));
}

TEST(PropertyListTest, AFileThatUnfoldsWithoutEndIsRefused) {
    // Arrays of 200 references to the next array: a kilobyte that stands for 200^5 values.
    std::string bytes = "bplist00";
    std::string table;
    for (char level = 1; level <= 6; ++level) {
        table += static_cast<char>(bytes.size() >> 8);
        table += static_cast<char>(bytes.size());
        bytes += level == 6 ? std::string("\x09") : "\xAF\x10\xC8" + std::string(200, level);
    }
    const auto end = static_cast<std::uint16_t>(bytes.size());
    bytes += table + std::string(6, '\0') + "\x02\x01" + std::string(7, '\0') + "\x06" +
             std::string(14, '\0') + static_cast<char>(end >> 8) + static_cast<char>(end);
    const auto read = PropertyList::read(bytes);
    ASSERT_FALSE(read);
    EXPECT_NE(read.error().localizedDescription().find("beyond measure"), std::string::npos)
        << read.error().description();
}

TEST(PropertyListTest, NoChangeOfAByteAndNoCutBringsItDown) {
    const Value value = Value::Dictionary{{"a", Value::Array{1, 2.5, true, "text", "设"}},
                                          {"b", Data(std::string("xyz"))},
                                          {"c", dateSince1970(1)},
                                          {"d", Value::Dictionary{{"e", -5}}}};
    std::mt19937 random(1);
    for (const Format form : {Format::binary, Format::xml}) {
        const std::string good(PropertyList::write(value, form)->view());
        for (std::size_t i = 0; i < good.size(); ++i) {
            // The XML form ends in a line feed that may as well be missing.
            const bool whole = form == Format::xml && i + 1 == good.size();
            EXPECT_EQ(PropertyList::read(std::string_view(good).substr(0, i)) == value, whole) << i;
            for (const unsigned change : {0x01U, 0x80U, 0xFFU, static_cast<unsigned>(random())}) {
                std::string bad = good;
                bad[i] = static_cast<char>(bad[i] ^ change);
                // Whatever reads is a property list again.
                const auto read = PropertyList::read(bad);
                EXPECT_FALSE(read && PropertyList::whyInvalid(*read)) << i;
            }
        }
    }
}

TEST(PropertyListTest, TellsWhereAValueIsInvalid) {
    EXPECT_EQ(PropertyList::whyInvalid(Value()), "value: null");
    EXPECT_EQ(PropertyList::whyInvalid(Value::Dictionary{{"k", Value::Array{1, nullptr}}}), ".k[1]: null");
    EXPECT_EQ(PropertyList::whyInvalid(Value::Array{"\xC0\x80"}), "[0]: not UTF-8");
    EXPECT_TRUE(PropertyList::whyInvalid(Value::Dictionary{{"\xFF", 1}}));
    EXPECT_FALSE(PropertyList::whyInvalid(everyKind()));
    const auto refused = PropertyList::write(Value::Array{nullptr}, Format::binary);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code(), 3852);
    EXPECT_EQ(PropertyList::read("bplist01").error().code(), 3840);
}

}  // namespace
}  // namespace zqcore
