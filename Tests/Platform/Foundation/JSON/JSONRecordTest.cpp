#include "Platform/Foundation/JSON/JSONRecord.h"

#include <gtest/gtest.h>

#include <limits>

#include "Platform/Foundation/JSON/JSONEncoder.h"

namespace zqcore {
namespace {

struct Item {
    std::optional<std::string> kind;
    std::optional<std::int32_t> count;
    ZQ_FIELDS(Item, kind, count)
};

struct Body {
    std::optional<bool> silent;
    std::optional<std::int64_t> modifiers;
    std::optional<double> scale;
    std::optional<CGPoint> location;
    std::optional<std::vector<std::string>> names;
    std::optional<std::vector<std::shared_ptr<Item>>> items;
    ZQ_FIELDS(Body, silent, modifiers, scale, location, names, items)
};

struct Envelope {
    std::optional<std::string> path;
    std::shared_ptr<Body> body;
    ZQ_FIELDS(Envelope, path, body)
};

TEST(JSONRecordTest, WritesDeclaredOrderAndReadsItBack) {
    Envelope envelope{"selected/text", std::make_shared<Body>()};
    envelope.body->silent = false;
    envelope.body->modifiers = -7;
    envelope.body->scale = 1e16;
    envelope.body->location = CGPoint{12.5, 30};
    envelope.body->names = std::vector<std::string>{"a", "\xE4\xB8\xAD\n"};
    envelope.body->items = std::vector{std::make_shared<Item>(Item{"x", 3}), std::make_shared<Item>()};
    const auto text = JSONEncoder{}.encode(envelope);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->view(),
              R"({"path":"selected\/text","body":{"silent":false,"modifiers":-7,"scale":1e+16,)"
              R"("location":[12.5,30],"names":["a","中\n"],"items":[{"kind":"x","count":3},{}]}})");
    const auto read = JSONDecoder{}.decode<Envelope>(text->view());
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_EQ(JSONEncoder{}.encode(*read)->view(), text->view());
    EXPECT_EQ(read->body->items->front()->count, 3);
}

TEST(JSONRecordTest, RefusalNamesThePathOfTheField) {
    const struct {
        std::string_view text, path;
    } kCases[] = {
        {"", ""},
        {"[]", ""},
        {"{} x", ""},
        {R"({"path":3})", "path"},
        {R"({"body":[]})", "body"},
        {R"({"body":{"items":[{},{"kind":5}]}})", "body.items[1].kind"},
        {R"({"body":{"items":[null]}})", "body.items[0]"},
        {R"({"body":{"names":["a",null]}})", "body.names[1]"},
        {R"({"body":{"items":[{"count":2147483648}]}})", "body.items[0].count"},
        {R"({"body":{"location":[1]}})", "body.location[1]"},
        {R"({"body":{"location":{"x":1}}})", "body.location"},
        {R"({"body":{"silent":1}})", "body.silent"},
        {R"({"other":[1,]})", ""},
    };
    for (const auto& [text, path] : kCases) {
        const auto read = JSONDecoder{}.decode<Envelope>(text);
        ASSERT_FALSE(read) << text;
        EXPECT_EQ(read.error().path, path) << text << ": " << read.error().description();
    }
}

TEST(JSONRecordTest, NullMissingUnknownAndRepeatedKeys) {
    const auto read = JSONDecoder{}.decode<Envelope>(
        R"({"path":null,"path":"late","other":{"deep":[1,"\u0041",{"x":null}]},"b\u006fdy":{"modifiers":1e2,"modifiers":5}})");
    ASSERT_TRUE(read) << read.error().description();
    EXPECT_FALSE(read->path) << "the first of two equal keys counts, a null too";
    EXPECT_EQ(read->body->modifiers, 100);
}

}  // namespace
}  // namespace zqcore
