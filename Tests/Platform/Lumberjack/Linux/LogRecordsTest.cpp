#include "Platform/Lumberjack/Linux/LogRecords.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

namespace zqcore {
namespace {

using platform::LogRecords;

void putAndTake(LogRecords& records, int count) {
    for (int i = 0; i < count; ++i)
        LogRecords::complete(records.reserve(LogRecords::kLongest), LogRecords::kLongest);
    while (records.next()) {
    }
    records.retire();
}

long pageFaults() {
    rusage usage{};
    ::getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_minflt;
}

TEST(LogRecordsTest, ALargeBurstDoesntLeaveColdMemoryToTheSmallOnesAfterIt) {
    // Never ended, as the log's own: its chunks are never given back.
    static LogRecords& records = *new LogRecords;
    putAndTake(records, 2000);
    putAndTake(records, 60);
    const long before = pageFaults();
    for (int round = 0; round < 20; ++round) putAndTake(records, 60);
    // Twenty times four cold chunks would be more than a thousand.
    EXPECT_LT(pageFaults() - before, 200);
}

TEST(LogRecordsTest, TheChildOfAForkTakesMemoryThoughAnotherThreadWasAboutTo) {
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
