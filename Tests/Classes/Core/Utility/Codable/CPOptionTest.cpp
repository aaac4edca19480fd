#include "Classes/Core/Utility/Codable/CPOption.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "Classes/Core/Utility/Codable/CPOptionImpl.h"
#include "Platform/Foundation/JSON/JSONDecoder.h"
#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

using testkit::LogCapture;

struct Inner {
    std::optional<std::int64_t> number;
    ZQ_FIELDS(Inner, number)
};

struct Model {
    CPOption<CPOptionImpl::OptionString> string;
    CPOption<CPOptionImpl::OptionBool> boolean;
    CPOption<CPOptionImpl::OptionInt> integer;
    CPOption<CPOptionImpl::OptionDouble> real;
    CPOption<CPOptionImpl::OptionCGFloat> length;
    CPOption<CPOptionImpl::OptionX<Inner>> inner;
    std::optional<std::int64_t> after;
    ZQ_FIELDS(Model, string, boolean, integer, real, length, inner, after)
};

Model decoded(const std::string& text) {
    auto model = JSONDecoder().decode<Model>(text);
    EXPECT_TRUE(model) << text << ": " << (model ? "" : model.error().description());
    return model ? *model : Model{};
}

struct Row {
    const char* json;
    std::optional<std::string> string;
    std::optional<bool> boolean;
    std::optional<std::int64_t> integer;
    std::optional<double> real;
    std::optional<double> length;
};

TEST(CPOptionTest, ReadsWhatItCanAndNeverFails) {
    LogCapture capture;
    const Row kRows[] = {
        {R"("abc")", "abc", {}, {}, {}, {}},
        {R"("12")", "12", {}, 12, 12.0, 12.0},
        {R"("1.5")", "1.5", {}, {}, 1.5, 1.5},
        {R"("true")", "true", {}, {}, {}, {}},
        {R"("+5")", "+5", {}, 5, 5.0, {}},
        {R"("+-5")", "+-5", {}, {}, {}, {}},
        {R"("12abc")", "12abc", {}, {}, {}, {}},
        {R"("9223372036854775808")", "9223372036854775808", {}, {}, 0x1p63, 0x1p63},
        {R"(".5")", ".5", {}, {}, .5, .5},
        {R"("0x1p3")", "0x1p3", {}, {}, 8.0, {}},
        {R"(" 1")", " 1", {}, {}, {}, {}},
        {R"("1,234")", "1,234", {}, {}, {}, {}},
        {R"("")", "", {}, {}, {}, {}},
        {"1", "1", true, 1, 1.0, 1.0},
        {"0", "0", false, 0, 0.0, 0.0},
        {"1.0", "1", true, 1, 1.0, 1.0},
        {"7", "7", {}, 7, 7.0, 7.0},
        {"1.5", "1.5", {}, 1, 1.5, 1.5},
        {"-1.5", "-1.5", {}, -1, -1.5, -1.5},
        {"1e19", "1e+19", {}, {}, 1e19, 1e19},
        {"-9223372036854775808.0", "-9223372036854775808", {}, INT64_MIN, -0x1p63, -0x1p63},
        {"true", {}, true, 1, {}, {}},
        {"false", {}, false, 0, {}, {}},
        {"null", {}, {}, {}, {}, {}},
        {R"({"a":[1,{}]})", {}, {}, {}, {}, {}},
        {"[[1],2]", {}, {}, {}, {}, {}},
        {"1e400", {}, {}, {}, {}, {}},
    };
    for (const auto& row : kRows) {
        const std::string json = row.json;
        const auto model = decoded(R"({"string":)" + json + R"(,"boolean":)" + json + R"(,"integer":)" +
                                   json + R"(,"real":)" + json + R"(,"length":)" + json + R"(,"after":3})");
        EXPECT_EQ(model.string.wrappedValue, row.string) << json;
        EXPECT_EQ(model.boolean.wrappedValue, row.boolean) << json;
        EXPECT_EQ(model.integer.wrappedValue, row.integer) << json;
        EXPECT_EQ(model.real.wrappedValue, row.real) << json;
        EXPECT_EQ(model.length.wrappedValue, row.length) << json;
        EXPECT_EQ(model.after, 3) << json << ": the rest of the record decodes";
    }
}

TEST(CPOptionTest, TellsEachTry) {
    LogCapture capture;
    decoded(R"({"string":null,"after":1})");
    EXPECT_TRUE(capture.silent()) << capture;

    decoded(R"({"integer":true})");
    auto messages = capture.messages();
    ASSERT_EQ(messages.size(), 4U) << capture;
    EXPECT_TRUE(messages[0].starts_with("OptionInt catch error: ")) << messages[0];
    EXPECT_TRUE(messages[1].starts_with("OptionInt String catch error: "));
    EXPECT_TRUE(messages[2].starts_with("OptionInt Double catch error: "));
    EXPECT_EQ(messages[3], "OptionInt try Bool success ✅: 1");
    EXPECT_EQ(capture.messages(LogCapture::error).size(), 3U);

    capture.clear();
    decoded(R"({"integer":"12abc","real":"x","length":"x","boolean":2,"string":1.5})");
    EXPECT_TRUE(capture.has(LogCapture::info, "OptionInt try String success ✅: string=12abc; int=(null)"));
    EXPECT_TRUE(capture.has(LogCapture::info, "OptionDouble try String success ✅: string=x; double=(null)"));
    EXPECT_TRUE(capture.has(LogCapture::info, "OptionString try Double success ✅: 1.5"));
    EXPECT_EQ(capture.messages(LogCapture::info).size(), 3U) << "no line for 2, nor for an unread length";
}

TEST(CPOptionTest, AWrongRecordIsEmptyAndTold) {
    LogCapture capture;
    const auto model = decoded(R"({"inner":{"number":"x","more":[1]},"after":2})");
    EXPECT_FALSE(model.inner.wrappedValue);
    EXPECT_EQ(model.after, 2);
    const auto messages = capture.messages(LogCapture::error);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_TRUE(messages[0].starts_with("CPOptionCodable ") &&
                messages[0].find(" decode catch error: number: ") != std::string::npos)
        << messages[0];
    EXPECT_EQ(decoded(R"({"inner":{"number":4}})").inner.wrappedValue->number, 4);
    EXPECT_FALSE(JSONDecoder().decode<Model>(R"({"inner":{"number":"x",}})")) << "broken text stays broken";
}

TEST(CPOptionTest, WritesItsOwnKindAndLeavesTheEmptyOut) {
    LogCapture capture;
    auto model = decoded(R"({"integer":"12"})");
    EXPECT_EQ(JSONEncoder().encode(model)->view(), R"({"integer":12})");
    model.string.wrappedValue = "a/b";
    model.boolean.wrappedValue = false;
    model.real.wrappedValue = 2.0;
    EXPECT_EQ(JSONEncoder().encode(model)->view(),
              R"({"string":"a\/b","boolean":false,"integer":12,"real":2})");
    capture.clear();
    EXPECT_FALSE(JSONEncoder().encode(CPOption<CPOptionImpl::OptionInt>{}));
    ASSERT_EQ(capture.lines().size(), 1U);
    EXPECT_TRUE(capture.contains(" encode 异常，理论上不该走这个分支")) << capture;

    const std::vector<CPOption<CPOptionImpl::OptionInt>> row{{1}, {}, {3}};
    EXPECT_EQ(JSONEncoder().encode(row)->view(), "[1,{},3]") << "an element can't be left out";
    EXPECT_EQ(capture.lines().size(), 2U);
}

TEST(CPOptionTest, WhatCannotBeWrittenIsToldAndHarmsNothingElse) {
    LogCapture capture;
    auto model = decoded(R"({"real":"nan","integer":1,"after":2})");
    model.string.wrappedValue = "\xFF";
    capture.clear();
    EXPECT_EQ(JSONEncoder().encode(model)->view(), R"({"string":{},"integer":1,"real":{},"after":2})");
    const auto messages = capture.messages(LogCapture::error);
    ASSERT_EQ(messages.size(), 2U) << capture;
    EXPECT_TRUE(messages[0].starts_with("CPOptionCodable ") &&
                messages[0].find("OptionString encode catch error: ") != std::string::npos)
        << messages[0];
    EXPECT_NE(messages[1].find("OptionDouble encode catch error: "), std::string::npos) << messages[1];
}

/// A tree of tolerant fields.
struct Node {
    CPOption<CPOptionImpl::OptionDouble> weight;
    CPOption<CPOptionImpl::OptionX<std::vector<std::shared_ptr<Node>>>> kids;
    std::optional<std::int64_t> after;
    ZQ_FIELDS(Node, weight, kids, after)
};

std::shared_ptr<Node> chain(int length) {
    auto node = std::make_shared<Node>();
    node->weight.wrappedValue = std::nan("");
    node->after = 1;
    while (--length > 0) {
        const auto parent = std::make_shared<Node>();
        parent->kids.wrappedValue.emplace().push_back(std::exchange(node, parent));
        parent->after = 1;
    }
    return node;
}

TEST(CPOptionTest, WritesAFieldWithinFieldsOnceAndTellsItsFailureOnce) {
    LogCapture capture;
    EXPECT_EQ(JSONEncoder().encode(*chain(3))->view(),
              R"({"kids":[{"kids":[{"weight":{},"after":1}],"after":1}],"after":1})");
    const auto messages = capture.messages(LogCapture::error);
    ASSERT_EQ(messages.size(), 1U) << capture;
    EXPECT_TRUE(messages[0].contains(" encode catch error: kids[0].kids[0].weight: ")) << messages[0];
    // Each level once, or this doesn't end in a lifetime.
    EXPECT_TRUE(JSONEncoder().encode(*chain(200)));
    EXPECT_EQ(capture.messages(LogCapture::error).size(), 2U);
}

TEST(CPOptionTest, AFieldThatIsNestedTooDeepIsLeftOutNotTheRecord) {
    LogCapture capture;
    const auto node = chain(1);
    node->weight.wrappedValue.reset();
    node->kids.wrappedValue.emplace().push_back(node);  // it holds itself: there is no end to it
    const auto bytes = JSONEncoder().encode(*node);
    node->kids.wrappedValue.reset();
    ASSERT_TRUE(bytes);
    EXPECT_TRUE(bytes->view().starts_with(R"({"kids":[{"kids":[)"));
    EXPECT_TRUE(bytes->view().contains(R"({"kids":{},"after":1}],"after":1})"));
    EXPECT_TRUE(JSONDecoder().decode<Node>(bytes->view())) << "no deeper than may be read";
    EXPECT_TRUE(capture.contains("nested too deep")) << capture;
}

TEST(CPOptionTest, AFieldThatFailsBehindAnotherFailureIsStillTold) {
    LogCapture capture;
    struct Outer {
        std::optional<double> plain;
        CPOption<CPOptionImpl::OptionDouble> tolerant;
        ZQ_FIELDS(Outer, plain, tolerant)
    };
    const auto bytes = JSONEncoder().encode(Outer{std::nan(""), {std::nan("")}});
    ASSERT_FALSE(bytes);
    EXPECT_TRUE(bytes.error().description().starts_with("plain: ")) << "the first stays";
    EXPECT_EQ(capture.messages(LogCapture::error).size(), 1U) << capture;
}

}  // namespace
}  // namespace zqcore
