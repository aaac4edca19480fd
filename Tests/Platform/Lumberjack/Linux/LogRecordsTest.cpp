#include "Platform/Lumberjack/Linux/LogRecords.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

namespace zqcore {
namespace {

using platform::LogRecords;

TEST(LogRecordsTest, TheChildOfAForkTakesMemoryThoughAnotherThreadWasAboutTo) {
    // Never ended, as the log's own: its chunks are never given back.
    static LogRecords& records = *new LogRecords;
    std::atomic<bool> stop{false};
    std::thread busy([&] {
        while (!stop) {
            LogRecords::complete(records.reserve(LogRecords::kLongest), LogRecords::kLongest);
            while (records.next()) records.retire();
        }
    });
    for (int i = 0; i < 100; ++i) {
        records.holdMemory();
        const pid_t child = ::fork();
        records.letGoOfMemory();
        if (child == 0) {
            ::alarm(10);
            records.abandon();
            ::_exit(records.next() ? 1 : 0);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << "fork " << i;
        if (status != 0) break;
    }
    stop = true;
    busy.join();
}

}  // namespace
}  // namespace zqcore
