#include "Classes/Log/Log/ZQLog.h"

#include <gtest/gtest.h>

#include <string>

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

}  // namespace
}  // namespace zqcore
