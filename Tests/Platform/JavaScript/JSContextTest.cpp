#include "Platform/JavaScript/JSContext.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "Classes/Core/Extension/JSValueExtension.h"

namespace zqcore {
namespace {

class JSContextTest : public testing::Test {
  protected:
    std::shared_ptr<JSValue> value(std::string_view script) { return context.evaluateScript(script); }

    JSContext context;
};

TEST_F(JSContextTest, EachValueReadsAsItsOwnKind) {
    EXPECT_EQ(safeToBoolean(*value("1 < 2")), true);
    EXPECT_EQ(safeToNumber(*value("0.1 + 0.2")), 0.1 + 0.2);
    EXPECT_TRUE(std::isnan(*safeToNumber(*value("0 / 0"))));
    EXPECT_EQ(safeToString(*value("'译\\u0000😀'")), std::string("译\0😀", 8)) << "also past a NUL";
    EXPECT_EQ(safeToArray(*value("[1, 'two', [true], undefined, null]")),
              (Value::Array{1.0, "two", Value::Array{true}, nullptr, nullptr}));
    EXPECT_EQ(safeToDictionary(*value("({b: 1, a: {c: 'd'}, gone: undefined, none: null})")),
              (Value::Dictionary{{"b", 1.0}, {"a", Value::Dictionary{{"c", "d"}}}, {"none", nullptr}}));
    EXPECT_EQ(safeToDictionary(*value("['x']")), (Value::Dictionary{{"0", "x"}})) << "an array is an object";
    EXPECT_EQ(safeToObject(*value("new Date(1500)")), Value(dateSince1970(1.5)));
    EXPECT_EQ(safeToObject(*value("(function () {})")), Value(Value::Dictionary()));
    for (const char* script : {"null", "undefined", "Symbol('s')", "10n"}) {
        const auto other = value(script);
        EXPECT_FALSE(safeToBoolean(*other) || safeToNumber(*other) || safeToString(*other) ||
                     safeToDictionary(*other) || safeToArray(*other) || safeToObject(*other))
            << script;
        EXPECT_EQ(other->toObject(), Value()) << script;
    }
    EXPECT_EQ(safeToString(*value("5")), std::nullopt) << "no kind turns into another";
    EXPECT_EQ(value("5")->toString(), "5");
}

TEST_F(JSContextTest, AScriptThatFailsGivesUndefinedAndItsMessage) {
    EXPECT_FALSE(isValid(*value("throw new TypeError('bad')")));
    EXPECT_EQ(context.exception(), "TypeError: bad");
    EXPECT_FALSE(isValid(*value("{")));
    EXPECT_TRUE(context.exception().starts_with("SyntaxError")) << context.exception();
    EXPECT_EQ(safeToNumber(*value("var kept = 7; kept")), 7);
    EXPECT_EQ(context.exception(), "");
    EXPECT_EQ(safeToNumber(*value("kept")), 7) << "globals stay";
    EXPECT_FALSE(isValid(*JSContext().evaluateScript("kept"))) << "in their own context";
}

TEST_F(JSContextTest, NoObjectIsTooMuch) {
    EXPECT_EQ(value("var a = [1]; a.push(a); a")->toObject(), Value(Value::Array{1.0, nullptr}));
    EXPECT_EQ(safeToDictionary(*value("({get broken() { throw 1 }, whole: 2})")),
              (Value::Dictionary{{"whole", 2.0}}));
    auto nested =
        value("var deep = 'core'; for (var i = 0; i < 100000; ++i) deep = [deep]; deep")->toObject();
    int depth = 0;
    while (const auto* array = nested.asArray()) {
        ++depth;
        Value inner = array->at(0);
        nested = std::move(inner);
    }
    EXPECT_EQ(depth, 512);
    EXPECT_EQ(safeToArray(*value("new Array(4294967295)"))->size(), 1'000'000U);
    EXPECT_TRUE(value("var b = 1; for (var i = 0; i < 200; ++i) b = [b, b]; b")->toObject().asArray())
        << "shared members don't unfold without end";
    EXPECT_EQ(value("({toString() { throw 1 }})")->toString(), "");
}

TEST(JSContextLifetimeTest, AValueKeepsItsContext) {
    auto context = std::make_unique<JSContext>();
    const auto value = context->evaluateScript("({a: [1, 2]})");
    context.reset();
    EXPECT_EQ(safeToObject(*value), Value(Value::Dictionary{{"a", Value::Array{1.0, 2.0}}}));
}

}  // namespace
}  // namespace zqcore
