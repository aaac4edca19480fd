#include "Classes/Core/Extension/JSValueExtension.h"

#include <gtest/gtest.h>

namespace zqcore {
namespace {

/// Claims kinds as it is told, and converts whatever it is asked.
class FakeValue final : public JSValue {
  public:
    explicit FakeValue(std::string_view kinds) : kinds_(kinds) {}

    [[nodiscard]] bool isUndefined() const override { return is('u'); }
    [[nodiscard]] bool isNull() const override { return is('0'); }
    [[nodiscard]] bool isBoolean() const override { return is('b'); }
    [[nodiscard]] bool isNumber() const override { return is('n'); }
    [[nodiscard]] bool isString() const override { return is('s'); }
    [[nodiscard]] bool isObject() const override { return is('o'); }
    [[nodiscard]] bool isArray() const override { return is('a'); }
    [[nodiscard]] bool toBool() const override { return true; }
    [[nodiscard]] double toNumber() const override { return 1.5; }
    [[nodiscard]] std::string toString() const override { return "text"; }
    [[nodiscard]] Value::Dictionary toDictionary() const override { return {{"key", 1}}; }
    [[nodiscard]] Value::Array toArray() const override { return {1, 2}; }
    [[nodiscard]] Value toObject() const override { return "object"; }

  private:
    [[nodiscard]] bool is(char kind) const { return kinds_.find(kind) != std::string::npos; }
    std::string kinds_;
};

TEST(JSValueExtensionTest, ReadsAValueOfItsOwnKindAndNothingElse) {
    // The kinds that a value claims, and the reads that then succeed, by the same letters.
    const struct {
        std::string_view kinds, reads;
        bool valid;
    } kCases[] = {{"u", "", false},    {"0", "", false}, {"b", "b", true},
                  {"n", "n", true},    {"s", "s", true}, {"o", "do", true},
                  {"oa", "dao", true}, {"", "", true},   {"0bnsoa", "", false}};
    for (const auto& [kinds, reads, valid] : kCases) {
        const FakeValue value(kinds);
        std::string succeeded;
        if (safeToBoolean(value) == true) succeeded += 'b';
        if (safeToNumber(value) == 1.5) succeeded += 'n';
        if (safeToString(value) == "text") succeeded += 's';
        if (safeToDictionary(value) == Value::Dictionary{{"key", 1}}) succeeded += 'd';
        if (safeToArray(value) == Value::Array{1, 2}) succeeded += 'a';
        if (safeToObject(value) == Value("object")) succeeded += 'o';
        EXPECT_EQ(succeeded, reads) << "of kinds " << kinds;
        EXPECT_EQ(isValid(value), valid) << "of kinds " << kinds;
    }
}

}  // namespace
}  // namespace zqcore
