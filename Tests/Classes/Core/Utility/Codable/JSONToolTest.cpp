#include "Classes/Core/Utility/Codable/JSONTool.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "Classes/AppleScript/RequestCommand/ASModel.h"
#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

/// An application's own field type, whose coder throws.
struct Touchy {
    bool operator==(const Touchy&) const = default;
};

}  // namespace

template <>
struct platform::JSONCoder<Touchy> {
    static bool decode(JSONReader&, Touchy&) { throw std::runtime_error("not this one"); }
    static void encode(JSONWriter&, const Touchy&) { throw 7; }
    static std::string typeText() { return "touchy"; }
};

namespace {

using testkit::LogCapture;

struct TouchyModel : JSONModel<TouchyModel> {
    std::optional<Touchy> field;
    ZQ_FIELDS(TouchyModel, field)
};

struct Measure : JSONModel<Measure> {
    std::optional<double> number;
    std::optional<std::string> text;
    std::vector<std::shared_ptr<Measure>> inner;
    ZQ_FIELDS(Measure, number, text, inner)
};

class JSONToolTest : public testing::Test {
  protected:
    LogCapture capture;

    /// The one line, without its location, which must be that of `line` of this file.
    std::string onlyLine(unsigned line) {
        const auto lines = capture.lines();
        EXPECT_EQ(lines.size(), 1U) << capture;
        if (lines.size() != 1) return {};
        EXPECT_EQ(lines[0].flag, LogCapture::error);
        EXPECT_EQ(lines[0].line, line) << "the caller's own place";
        const std::string place = "[JSONToolTest.cpp#" + std::to_string(line) + "]";
        EXPECT_TRUE(lines[0].message.starts_with(place)) << lines[0].message;
        capture.clear();
        return lines[0].message.substr(std::min(lines[0].message.size(), place.size()));
    }
};

TEST_F(JSONToolTest, ModelsGoThereAndBackInSilence) {
    const auto client = ASClient::make();
    EXPECT_EQ(client->encodeToJSONString(), "{}");
    client->pid = 7;
    client->version = "1.0";
    EXPECT_EQ(client->encodeToJSONString(), R"({"pid":7,"version":"1.0"})");
    EXPECT_EQ(client->encodeToJSONData()->view(), R"({"pid":7,"version":"1.0"})");
    EXPECT_EQ(*client->encodeToJSONObject()->asDictionary()->find("pid"), Value(7));
    EXPECT_EQ(ASClient::fromJSONString(R"({"pid":7})")->pid, 7);
    EXPECT_EQ(ASClient::fromJSONData(Data(std::string(R"({"pid":7})")))->pid, 7);
    EXPECT_EQ(ASClient::fromJSONObject(Value(Value::Dictionary{{"pid", 7}}))->pid, 7);
    EXPECT_EQ(JSONTool::decodeToModel<std::vector<int>>("[1,2]"), (std::vector{1, 2}));
    EXPECT_TRUE(capture.silent()) << capture;
}

TEST_F(JSONToolTest, ACoderThatThrowsIsAFailureLikeAnyOther) {
    EXPECT_FALSE(TouchyModel::fromJSONString(R"({"field":{}})"));
    EXPECT_TRUE(onlyLine(__LINE__ - 1).ends_with("error=exception: not this one (byte 9)"));
    TouchyModel model;
    EXPECT_EQ(model.encodeToJSONString(), "{}");
    model.field.emplace();
    EXPECT_FALSE(model.encodeToJSONString());
    EXPECT_TRUE(onlyLine(__LINE__ - 1).ends_with("error=unknown exception"));
}

TEST_F(JSONToolTest, DeepCopySharesNothing) {
    const auto response = ASCommonResponseModel::make(ASError::Code::internalError);
    const auto copy = response->deepCopy();
    ASSERT_TRUE(copy);
    EXPECT_NE(copy, response);
    EXPECT_NE(copy->error, response->error);
    EXPECT_EQ(copy->encodeToJSONString(), response->encodeToJSONString());
    Measure broken;
    broken.number = std::nan("");
    EXPECT_EQ(broken.deepCopy(), nullptr);
}

TEST_F(JSONToolTest, EncodingFailures) {
    Measure model;
    model.inner.push_back(Measure::make());
    model.inner[0]->number = std::nan("");
    EXPECT_FALSE(model.encodeToJSONString());
    EXPECT_EQ(onlyLine(__LINE__ - 1),
              "encode model 失败: model=" + std::string(fullTypeName<Measure>()) +
                  R"( {"inner":[{"number":nan,"inner":[]}]}; error=inner[0].number: nan can't be written)");
    EXPECT_FALSE(model.encodeToJSONObject());
    onlyLine(__LINE__ - 1);

    EXPECT_FALSE(JSONTool::encodeToData(Value::Array{Data()}));
    EXPECT_EQ(onlyLine(__LINE__ - 1),
              "encode data 失败，无效 json 对象: obj=" + Value(Value::Array{Data()}).description());
    for (const Value& bad : {Value(), Value(Value::Array{std::nan("")}), Value(Data())}) {
        EXPECT_FALSE(JSONTool::encodeToData(bad));
        EXPECT_EQ(onlyLine(__LINE__ - 1), "encode data 失败，无效 json 对象: obj=" + bad.description());
    }
    const Value broken(Value::Array{"\xFF"});
    EXPECT_FALSE(JSONTool::encodeToString(broken));
    EXPECT_TRUE(onlyLine(__LINE__ - 1)
                    .starts_with("encode any 失败: obj=[\xFF]; error=Error Domain=NSCocoaErrorDomain"));
}

TEST_F(JSONToolTest, WhatIsEncodableByItselfIsForwarded) {
    for (const auto& [value, text] : {std::pair{Value("a/b"), R"("a\/b")"},
                                      {Value(7), "7"},
                                      {Value(true), "true"},
                                      {Value(1.5), "1.5"}}) {
        EXPECT_EQ(JSONTool::encodeToString(value), text);
        EXPECT_EQ(onlyLine(__LINE__ - 1),
                  "encode any 需要转发到 encode encodable: obj=" + value.description());
    }
    const auto client = ASClient::make();
    client->name = "n";
    EXPECT_EQ(JSONTool::encodeToString(GenericValue(client)), R"({"name":"n"})");
    EXPECT_EQ(onlyLine(__LINE__ - 1),
              R"(encode any 需要转发到 encode encodable: obj=zqcore::ASClient {"name":"n"})");
    EXPECT_EQ(JSONTool::encodeToString(Value(Value::Dictionary{{"a", 1}, {"b", "x"}})), R"({"a":1,"b":"x"})");
    EXPECT_TRUE(capture.silent()) << "a dictionary of mixed values goes the second way";
    EXPECT_EQ(ASClient::fromJSONObject(client)->name, "n");
    onlyLine(__LINE__ - 1);
}

TEST_F(JSONToolTest, DecodingFailures) {
    EXPECT_FALSE(JSONTool::decodeToJSONObject(""));
    EXPECT_TRUE(onlyLine(__LINE__ - 1).starts_with("decode json objct 失败：data=0 bytes; error="));
    EXPECT_FALSE(JSONTool::decodeToJSONObject("3"));
    EXPECT_TRUE(onlyLine(__LINE__ - 1).starts_with("decode json objct 失败：data=1 bytes; error="));
    EXPECT_FALSE(JSONTool::decodeToJSONObject("[\"\xFF\"]"));
    EXPECT_EQ(onlyLine(__LINE__ - 1), "json objct string to data 失败: string=[\"\xFF\"]");
    EXPECT_FALSE(JSONTool::decodeToJSONObject(Data(std::string("[\"\xFF\"]"))));
    EXPECT_TRUE(onlyLine(__LINE__ - 1).starts_with("decode json objct 失败：data=5 bytes; error="));

    EXPECT_FALSE(ASClient::fromJSONString(""));
    EXPECT_EQ(onlyLine(__LINE__ - 1),
              "decode model 失败: type=zqcore::ASClient; data=0 bytes; error=unexpected end of text");
    EXPECT_FALSE(ASClient::fromJSONString(R"({"pid":"7"})"));
    EXPECT_EQ(onlyLine(__LINE__ - 1),
              "decode model 失败: type=zqcore::ASClient; data=11 bytes; error=pid: expected an integer, "
              "found a string (byte 7)");
    EXPECT_FALSE(ASClient::fromJSONString("{\"name\":\"\xC0\xAF\"}"));
    EXPECT_EQ(onlyLine(__LINE__ - 1), "model string to data 失败: string={\"name\":\"\xC0\xAF\"}");
    EXPECT_FALSE(ASClient::fromJSONObject(Value()));
    EXPECT_EQ(onlyLine(__LINE__ - 1), "encode data 失败，无效 json 对象: obj=(null)");
    EXPECT_TRUE(JSONTool::decodeToJSONObject("[3]"));
    EXPECT_TRUE(capture.silent());
}

}  // namespace
}  // namespace zqcore
