#include "Classes/Core/Utility/DefaultsStorage.h"

#include <gtest/gtest.h>

#include <charconv>

#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

struct Page {
    ZQ_STRING_ENUM(Kind, home, hotkey, about)
    ZQ_INTEGER_ENUM(Size, small, large)
};

/// A type of its own, that no property list knows.
struct Version {
    int number = 0;
    friend bool operator==(const Version&, const Version&) = default;
};

class DefaultsStorageTest : public testing::Test {
  protected:
    std::optional<Value> stored() const { return defaults->objectForKey("k"); }

    testkit::ScratchFolder folder;
    const std::shared_ptr<NSUserDefaults> defaults = NSUserDefaults::atPath(folder / "app.plist");
};

TEST_F(DefaultsStorageTest, CastsOnlyWhatIsExact) {
    const Value large = (std::int64_t{1} << 53) + 1;
    const auto cast = [](const Value& object, auto kind) {
        return ObjectCoding<decltype(kind)>::cast(object);
    };
    struct Row {
        Value object;
        std::optional<std::int64_t> integer;
        std::optional<double> real;
        std::optional<bool> boolean;
        std::optional<std::string> text;
    };
    const Row rows[] = {
        {3, 3, 3.0, {}, {}},        {1, 1, 1.0, true, {}},
        {0, 0, 0.0, false, {}},     {1.0, 1, 1.0, true, {}},
        {0.0, 0, 0.0, false, {}},   {3.0, 3, 3.0, {}, {}},
        {1.5, {}, 1.5, {}, {}},     {true, 1, 1.0, true, {}},
        {"3", {}, {}, {}, "3"},     {"true", {}, {}, {}, "true"},
        {-1, -1, -1.0, {}, {}},     {large, large.asInt64(), {}, {}, {}},
        {1e300, {}, 1e300, {}, {}}, {9223372036854775808.0, {}, 9223372036854775808.0, {}, {}},
        {Data(), {}, {}, {}, {}},   {Value::Array{1}, {}, {}, {}, {}},
    };
    for (const auto& [object, integer, real, boolean, text] : rows) {
        EXPECT_EQ(cast(object, std::int64_t{}), integer) << object.description();
        EXPECT_EQ(cast(object, double{}), real) << object.description();
        EXPECT_EQ(cast(object, bool{}), boolean) << object.description();
        EXPECT_EQ(cast(object, std::string{}), text) << object.description();
    }
    EXPECT_FALSE(cast(Value(-1), std::uint32_t{}));
    EXPECT_FALSE(cast(Value(-1.0), std::uint64_t{}));
    EXPECT_EQ(cast(Value(UINT64_MAX), std::uint64_t{}), UINT64_MAX);
    EXPECT_FALSE(cast(Value(UINT64_MAX), std::int64_t{}));
    EXPECT_FALSE(cast(Value(UINT64_MAX), double{}));
    EXPECT_FALSE(cast(Value(300), std::int8_t{}));
    EXPECT_FALSE(cast(Value(0.1), float{}));
    EXPECT_FALSE(cast(Value(1e300), float{}));
    EXPECT_EQ(cast(Value(0.5), float{}), 0.5F);
    EXPECT_EQ(cast(Value(dateSince1970(1)), Date{}), dateSince1970(1));
    EXPECT_FALSE(cast(Value("x"), Data{}));
    EXPECT_EQ(cast(Value(Value::Array{1, 2.0, true}), std::vector<int>{}), (std::vector<int>{1, 2, 1}));
    EXPECT_FALSE(cast(Value(Value::Array{1, "2"}), std::vector<int>{})) << "one failure fails the whole";
    EXPECT_EQ(cast(Value(Value::Dictionary{{"a", 1}}), std::map<std::string, double>{}),
              (std::map<std::string, double>{{"a", 1.0}}));
    EXPECT_FALSE(cast(Value(Value::Dictionary{{"a", "1"}}), std::map<std::string, double>{}));
}

TEST_F(DefaultsStorageTest, AFreshKeyReadsItsDefaultAndStoresNothing) {
    DefaultsStorage<int> early(5, "k", defaults);
    EXPECT_EQ(early.wrappedValue(), 5);
    EXPECT_FALSE(stored());
    DefaultsStorage<int> setting(5, "k", defaults);
    const DefaultsStorage<int> copy = setting;
    setting.setWrappedValue(7);
    EXPECT_EQ(stored(), Value(7));
    EXPECT_EQ(copy.wrappedValue(), 7) << "copies share the current value";
    EXPECT_EQ(early.wrappedValue(), 5) << "what others change isn't seen";
    EXPECT_EQ(DefaultsStorage<int>(5, "k", defaults).wrappedValue(), 7);
    setting.changeWrappedValue([](int& value) { value *= 2; });
    EXPECT_EQ(stored(), Value(14));
}

TEST_F(DefaultsStorageTest, AnObjectOfAnotherKindGivesTheDefaultAndStays) {
    defaults->setObject("7", "k");
    EXPECT_EQ(DefaultsStorage<int>(5, "k", defaults).wrappedValue(), 5);
    EXPECT_EQ(DefaultsStorage<std::optional<int>>(5, "k", defaults).wrappedValue(), 5);
    EXPECT_EQ(stored(), Value("7"));
}

TEST_F(DefaultsStorageTest, AnAbsentValueRemovesTheKey) {
    DefaultsStorage<std::optional<int>> setting(5, "k", defaults);
    EXPECT_TRUE(setting.isOptional());
    setting.setWrappedValue(6);
    EXPECT_EQ(stored(), Value(6));
    setting.setWrappedValue(std::nullopt);
    EXPECT_EQ(setting.wrappedValue(), std::nullopt);
    EXPECT_FALSE(stored());
    EXPECT_EQ(DefaultsStorage<std::optional<int>>(5, "k", defaults).wrappedValue(), 5) << "and not absent";
}

TEST_F(DefaultsStorageTest, EnumerationsAreStoredByTheirRawValue) {
    using Kind = Page::Kind;
    using OptionalKind = std::optional<Kind>;
    const std::type_identity<Kind> type;
    EXPECT_EQ(DefaultsStorage<OptionalKind>(Kind::about, "k", defaults, type).wrappedValue(), Kind::about)
        << "no object: the default";
    DefaultsStorage<Kind>(Kind::home, "k", defaults).setWrappedValue(Kind::hotkey);
    EXPECT_EQ(stored(), Value("hotkey"));
    EXPECT_EQ(DefaultsStorage<Kind>(Kind::home, "k", defaults).wrappedValue(), Kind::hotkey);
    EXPECT_EQ(DefaultsStorage<OptionalKind>({}, "k", defaults, type).wrappedValue(), Kind::hotkey);

    for (const Value& unknown : {Value("elsewhere"), Value(1)}) {
        defaults->setObject(unknown, "k");
        EXPECT_EQ(DefaultsStorage<Kind>(Kind::about, "k", defaults).wrappedValue(), Kind::about);
        EXPECT_EQ(DefaultsStorage<OptionalKind>(Kind::about, "k", defaults, type).wrappedValue(),
                  std::nullopt)
            << "an object that names no case reads as absent, default or not";
        EXPECT_EQ(stored(), unknown);
    }
    DefaultsStorage<OptionalKind>(Kind::about, "k", defaults, type).setWrappedValue(std::nullopt);
    EXPECT_FALSE(stored());

    DefaultsStorage<Page::Size>(Page::Size::small, "k", defaults).setWrappedValue(Page::Size::large);
    EXPECT_EQ(stored(), Value(1));
    EXPECT_EQ(DefaultsStorage<Page::Size>(Page::Size::small, "k", defaults).wrappedValue(),
              Page::Size::large);
    defaults->setInteger(2, "k");
    EXPECT_EQ(DefaultsStorage<Page::Size>(Page::Size::small, "k", defaults).wrappedValue(),
              Page::Size::small);
}

TEST_F(DefaultsStorageTest, OwnFunctionsDecideOnTheForm) {
    const auto make = [&](int number) {
        return DefaultsStorage<Version>(
            {number}, "k", defaults,
            [](const Version& version) -> std::optional<Value> {
                if (version.number == 0) return std::nullopt;
                return Value("v" + std::to_string(version.number));
            },
            [](const Value& object) -> std::optional<Version> {
                Version version;
                const std::string* text = object.asString();
                if (!text || !text->starts_with('v')) return std::nullopt;
                std::from_chars(text->data() + 1, text->data() + text->size(), version.number);
                return version;
            });
    };
    auto setting = make(1);
    EXPECT_EQ(setting.wrappedValue(), Version{1});
    setting.setWrappedValue({3});
    EXPECT_EQ(stored(), Value("v3"));
    EXPECT_EQ(make(1).wrappedValue(), Version{3});
    setting.setWrappedValue({0});
    EXPECT_FALSE(stored()) << "nothing to store leaves no object";
    EXPECT_EQ(setting.wrappedValue(), Version{0});
    defaults->setInteger(3, "k");
    EXPECT_EQ(make(1).wrappedValue(), Version{1}) << "refused: the default";
}

TEST_F(DefaultsStorageTest, SubscribersSeeEveryWriteAfterTheStore) {
    DefaultsStorage<int> setting(5, "k", defaults);
    std::vector<int> seen;
    auto subscription = setting.projectedValue().sink([&](int value) {
        seen.push_back(value);
        EXPECT_EQ(setting.wrappedValue(), value);
        EXPECT_EQ(stored().value_or(Value(5)), Value(value)) << "the store is written first";
    });
    setting.setWrappedValue(6);
    setting.setWrappedValue(6);
    DefaultsStorage<int> copy = setting;
    copy.setWrappedValue(7);
    EXPECT_EQ(seen, (std::vector<int>{5, 6, 6, 7}));
    subscription.cancel();
    setting.setWrappedValue(8);
    EXPECT_EQ(seen.size(), 4U);
}

}  // namespace
}  // namespace zqcore
