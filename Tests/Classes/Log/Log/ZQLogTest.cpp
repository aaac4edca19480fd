#include "Classes/Log/Log/ZQLog.h"

#include <gtest/gtest.h>

#include <source_location>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

using testkit::LogCapture;

TEST(ZQLogTest, WritesTheFlagsThatTheLevelLetsAndBuildsNoOther) {
    LogCapture capture;
    int built = 0;
    const auto message = [&] {
        ++built;
        return "text " + std::to_string(built);
    };
    ZQLogInfo(message);
    ZQLogError(message);
    ZQLogVerbose(message);
    EXPECT_EQ(capture.messages(LogCapture::info), std::vector<std::string>{"text 1"});
    EXPECT_EQ(capture.messages(LogCapture::error), std::vector<std::string>{"text 2"});
    EXPECT_EQ(built, 2) << "a line below the level is not built";

    ZQDefaultLogLevel = 31;
    ZQLogVerbose("now");
    EXPECT_TRUE(capture.has(LogCapture::verbose, "now")) << capture;
}

TEST(ZQLogTest, TakesTextsOfEveryKindAndTellsThePlaceOfTheCall) {
    LogCapture capture;
    const std::string kept(5'000, 'k');
    ZQLogInfo("literal");
    ZQLogInfo(std::string_view("view"));
    ZQLogInfo(kept);
    ZQLogInfo(std::string(5'000, 'm'));
    ZQLogInfo([] { return "callable"; });
    const auto line = std::source_location::current().line() - 1;
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(capture.messages(),
              (std::vector<std::string>{"literal", "view", kept, std::string(5'000, 'm'), "callable"}));
    EXPECT_EQ(kept.size(), 5'000U) << "a text of the caller's is not taken";
    EXPECT_EQ(lines[4].fileName, "ZQLogTest");
    EXPECT_EQ(lines[4].line, line);
    EXPECT_TRUE(lines[4].function.contains("TestBody")) << lines[4].function;
}

TEST(ZQLogTest, AnAssertionWritesAtEveryLevelBeforeItReturns) {
    LogCapture capture(0);
    bool built = false;
    ZQAssert(true, [&] {
        built = true;
        return "holds";
    });
    ZQAssert(false, "broken");
    EXPECT_FALSE(built);
    EXPECT_EQ(capture.messages(), std::vector<std::string>{"broken"});
    EXPECT_TRUE(capture.has(LogCapture::error, "broken"));
}

TEST(ZQLogTest, WritesTheCallStackAtVerboseLevelOnly) {
    LogCapture capture;
    logCallStackSymbols();
    EXPECT_TRUE(capture.silent()) << capture;
    ZQDefaultLogLevel = 16;
    logCallStackSymbols();
    const auto texts = capture.messages(LogCapture::verbose);
    ASSERT_EQ(texts.size(), 1U);
    const std::string start = "调用栈：\n\n0   ";
    ASSERT_TRUE(texts[0].starts_with(start)) << texts[0];
    std::istringstream rows(texts[0].substr(start.size() - 4));
    int number = 0;
    for (std::string row; std::getline(rows, row); ++number) {
        EXPECT_EQ(row.substr(0, 4), (std::to_string(number) + "   ").substr(0, 4)) << row;
        EXPECT_EQ(row.substr(39, 3), " 0x") << row;
        EXPECT_EQ(row.find_first_not_of("0123456789abcdef", 42), 58U) << row;
        EXPECT_NE(row.rfind(" + "), std::string::npos) << row;
    }
    EXPECT_GT(number, 5);
}

TEST(ZQLogTest, CapturesNestAndEndWithTheirScope) {
    LogCapture outer;
    ZQLogInfo("before");
    {
        LogCapture inner;
        ZQLogInfo("inside");
        EXPECT_EQ(inner.messages(), std::vector<std::string>{"inside"});
        inner.clear();
        EXPECT_TRUE(inner.silent());
    }
    std::thread later([] { ZQLogInfo("from another thread"); });
    EXPECT_TRUE(outer.waitFor("another")) << outer;
    later.join();
    EXPECT_EQ(outer.messages(), (std::vector<std::string>{"before", "inside", "from another thread"}));
}

}  // namespace
}  // namespace zqcore
