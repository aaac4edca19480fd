#include <gtest/gtest.h>

#include "Classes/Log/Log/ZQConsoleLogFormatter.h"
#include "Classes/Log/Log/ZQFileLogFormatter.h"
#include "TestKit/TimeZoneGuard.h"

namespace zqcore {
namespace {

TEST(ZQLogFormatterTest, MarksEachFlag) {
    struct Case {
        std::uint64_t flag;
        std::string mark;
    };
    for (const auto& [flag, mark] :
         {Case{1, "❌"}, Case{2, "W"}, Case{4, "I"}, Case{8, "D"}, Case{16, "V"}, Case{0, "V"}, Case{3, "V"},
          Case{5, "V"}, Case{6, "V"}, Case{7, "V"}, Case{9, "V"}, Case{~0ULL, "V"}}) {
        const DDLogMessage message{.message = "text", .flag = flag};
        EXPECT_EQ(ZQConsoleLogFormatter().formatLogMessage(message), "[" + mark + "] text") << flag;
        EXPECT_TRUE(ZQFileLogFormatter().formatLogMessage(message)->contains(" ● " + mark + "] ")) << flag;
    }
}

TEST(ZQLogFormatterTest, WritesTheFileLineWithItsSixValues) {
    const testkit::TimeZoneGuard guard("Asia/Shanghai");
    DDLogMessage message{.message = "带宽 100 %@\nsecond row",
                         .flag = 1,
                         .file = "/x/ZQManager.swift",
                         .fileName = "ZQManager",
                         .function = "close(_:)",
                         .line = 4'294'967'295U,
                         .timestamp = Date{std::chrono::milliseconds(1'704'164'645'678)}};
    ZQFileLogFormatter formatter;
    EXPECT_EQ(formatter.formatLogMessage(message),
              "[2024-01-02 11:04:05.678 ● ZQManager ● 4294967295 ● ❌] close(_:) ● 带宽 100 %@\nsecond row");
    message = {};
    EXPECT_EQ(formatter.formatLogMessage(message), "[1970-01-01 08:00:00.000 ●  ● 0 ● V]  ● ");
}

}  // namespace
}  // namespace zqcore
