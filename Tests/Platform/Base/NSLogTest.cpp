#include "Platform/Base/NSLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zqcore {
namespace {

std::vector<std::string>& lines() {
    static std::vector<std::string> kept;
    return kept;
}

TEST(NSLogTest, TheFirstHandlerHearsWhatWasReportedBefore) {
    testing::internal::CaptureStderr();
    NSLog("early");
    setNSLogHandler([](std::string_view line) {
        lines().emplace_back(line);
        NSLog("inner");
    });
    NSLog("late");
    setNSLogHandler(nullptr);
    NSLog("last");
    setNSLogHandler([](std::string_view line) { lines().emplace_back(line); });
    EXPECT_EQ(lines(), (std::vector<std::string>{"early", "late"}));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "early\ninner\ninner\nlast\n");
    setNSLogHandler(nullptr);
}

}  // namespace
}  // namespace zqcore
