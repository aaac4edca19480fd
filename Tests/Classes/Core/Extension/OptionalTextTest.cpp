#include "Classes/Core/Extension/OptionalText.h"

#include <gtest/gtest.h>

#include "Platform/Base/NSObject.h"

namespace zqcore {
namespace {

struct Named final : NSObject {
    [[nodiscard]] std::string description() const override { return "a name"; }
};

TEST(OptionalTextTest, DescribesTheValueOrTellsItsAbsence) {
    EXPECT_EQ(orNil(std::optional<int>(-3)), "-3");
    EXPECT_EQ(orNil(std::optional<int>()), "(nil)");
    EXPECT_EQ(orNil(std::optional<std::string>("text")), "text");
    EXPECT_EQ(orNil(std::optional(true)), "true");
    EXPECT_EQ(orNil(std::optional(30.0)), "30.0");
    EXPECT_EQ(orNil(std::optional(0.1F)), "0.1");
    EXPECT_EQ(orNil(std::make_shared<Named>()), "a name");
    EXPECT_EQ(orNil(std::shared_ptr<Named>()), "(nil)");
    EXPECT_EQ(x(std::optional<int>(), "none"), "none");
    EXPECT_EQ(x(std::optional<int>(0), "none"), "0") << "a zero is a value";
}

TEST(OptionalTextTest, MakesTheOtherTextOnlyWhenNeeded) {
    int made = 0;
    const auto make = [&] {
        ++made;
        return "other";
    };
    EXPECT_EQ(orElse(std::optional<int>(1), make), "1");
    EXPECT_EQ(made, 0);
    EXPECT_EQ(orElse(std::optional<int>(), make), "other");
    EXPECT_EQ(made, 1);
    EXPECT_EQ(tap(std::string("a"), [](std::string& text) { text += "b"; }), "ab");
}

TEST(OptionalTextTest, NamesObjects) {
    const std::shared_ptr<NSObject> object = std::make_shared<Named>();
    EXPECT_NE(fullType(object).find("Named"), std::string::npos)
        << "the class of the object, not of the pointer";
    char pointer[24];
    std::snprintf(pointer, sizeof pointer, "%p", static_cast<void*>(object.get()));
    EXPECT_EQ(address(object), pointer);
    EXPECT_EQ(address(*object), pointer);
    EXPECT_EQ(sd(object), "<" + fullType(object) + ": " + pointer + ">");
}

}  // namespace
}  // namespace zqcore
