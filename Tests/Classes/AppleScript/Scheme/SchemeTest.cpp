#include <gtest/gtest.h>

#include "Classes/AppleScript/Scheme/OrbelHelperHotkeyScheme.h"
#include "Classes/AppleScript/Scheme/OrbelHelperOpenScheme.h"
#include "Classes/AppleScript/Scheme/QueryString.h"
#include "Classes/Core/Utility/ZQInfo.h"

namespace zqcore {
namespace {

using Open = OrbelHelperOpenScheme;
using Hotkey = OrbelHelperHotkeyScheme;
using Ids = std::vector<std::string>;

TEST(SchemeTest, ReadsParametersAndWritesThemBack) {
    EXPECT_EQ(Open::action, "open");
    EXPECT_EQ(Hotkey::action, "hotkey");
    const SchemeParameters all{{"appid", "a"},
                               {"pid", "12"},
                               {"version", "1.2"},
                               {"build", "3"},
                               {"page", "updaterCheckInBackground"}};
    const auto open = Open::RequestParameter::make(all);
    EXPECT_EQ(open->page, Open::Page::updaterCheckInBackground);
    EXPECT_EQ(open->pid, "12");
    EXPECT_EQ(open->toParameters(), all);

    const auto nowhere = Open::RequestParameter::make(SchemeParameters{{"page", "nowhere"}, {"appid", "x"}});
    EXPECT_FALSE(nowhere->page);
    EXPECT_EQ(nowhere->toParameters(), (SchemeParameters{{"appid", "x"}}));
    EXPECT_TRUE(Open::RequestParameter::make()->toParameters().empty());
    EXPECT_TRUE(Hotkey::RequestParameter::make()->toParameters().empty());
}

TEST(SchemeTest, KeepsHotkeysAsOneText) {
    const struct {
        const char* text;
        Ids ids;
    } kCases[] = {{"a,b", {"a", "b"}}, {"a,,b", {"a", "", "b"}}, {"", {""}}, {" a ,", {" a ", ""}}};
    for (const auto& [text, ids] : kCases) {
        const SchemeParameters parameters{{"hotkeyaction", "register"}, {"hotkeyids", text}};
        const auto hotkey = Hotkey::RequestParameter::make(parameters);
        EXPECT_EQ(hotkey->hotkeyaction, Hotkey::HotkeyAction::register_);
        EXPECT_EQ(hotkey->hotkeyids, ids);
        EXPECT_EQ(hotkey->toParameters(), parameters);
    }
    const auto hotkey = Hotkey::RequestParameter::make();
    hotkey->hotkeyids = Ids{};
    EXPECT_EQ(hotkey->toParameters(), (SchemeParameters{{"hotkeyids", ""}}));
    EXPECT_EQ(Hotkey::hotkeyActionFromRawValue("registerAll"), Hotkey::HotkeyAction::registerAll);
    EXPECT_FALSE(Hotkey::hotkeyActionFromRawValue("register_"));
}

TEST(SchemeTest, FillsInTheRunningProcess) {
    const auto parameter = SchemeCommonParameter::make();
    parameter->fillCurrentAppInfo();
    EXPECT_EQ(parameter->pid, std::to_string(ZQInfo::pid()));
    EXPECT_EQ(parameter->toParameters().size(), 4U);
}

TEST(QueryStringTest, EncodesByTheQueryRule) {
    const struct {
        Value::Dictionary dictionary;
        const char* query;
    } kCases[] = {
        {{}, ""},
        {{{"b", "2"}, {"a", "1"}}, "a=1&b=2"},
        {{{"k", "a b&c=d+e,f:g/h?i~"}}, "k=a%20b%26c%3Dd%2Be%2Cf%3Ag/h?i~"},
        {{{"k", "你"}}, "k=%E4%BD%A0"},
        {{{"t", true}, {"f", false}, {"i", 7}, {"r", 1.5}, {"w", 1.0}}, "f=0&i=7&r=1.5&t=1&w=1"},
        {{{"k", Value::Array{1, Value::Array{"x"}, Value::Dictionary{{"m", 2}}}}},
         "k%5B%5D=1&k%5B%5D%5B%5D=x&k%5B%5D%5Bm%5D=2"},
        {{{"k", Value::Dictionary{{"z", 1}, {"b", Value::Array{}}, {"a", Value::Array{3}}}}},
         "k%5Ba%5D%5B%5D=3&k%5Bz%5D=1"},
        {{{"Z", "1"}, {"a", "2"}, {"é", "3"}, {"A", "4"}}, "A=4&Z=1&a=2&%C3%A9=3"},
    };
    for (const auto& [dictionary, query] : kCases) EXPECT_EQ(toQueryString(dictionary), query);
    EXPECT_EQ(toQueryString(SchemeParameters{{"page", "main"}, {"appid", "x y"}}), "appid=x%20y&page=main");

    Value deep(1);
    for (int i = 0; i < 5'000; ++i) {
        Value::Array outer;
        outer.push_back(std::move(deep));
        deep = Value(std::move(outer));
    }
    EXPECT_TRUE(toQueryString({{"k", deep}}).ends_with("%5D=1"));
}

}  // namespace
}  // namespace zqcore
