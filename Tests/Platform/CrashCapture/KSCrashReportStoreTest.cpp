#include "Platform/CrashCapture/KSCrashReportStore.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "Platform/CrashCapture/ReportFields.h"
#include "Platform/CrashCapture/TornReport.h"
#include "Platform/Foundation/JSON/JSONReader.h"
#include "TestKit/ManualClock.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::platform {
namespace {

using crash::ReportFields;
using testkit::ScratchFolder;

constexpr std::string_view kReport =
    R"({"report":{"type":"standard","timestamp":1614834367123456,"version":"3.3.0","id":"A"},
"system":{"process_id":7},
"crash":{"error":{"type":"signal","signal":{"signal":11,"name":"SIGSEGV \"quoted\" [{"}},"threads":[{"index":0,"crashed":true}]},
"complete":true})";

std::string fileOf(int number, const char* extension = ".json") {
    return "Reports/App-report-000000000000000" + std::to_string(number) + extension;
}

TEST(KSCrashReportStore, KeepsTheNewestFiveWithTheirLogs) {
    const ScratchFolder folder;
    for (int i = 1; i <= 8; ++i) {
        folder.write(fileOf(i), kReport);
        folder.write(fileOf(i, ".log"), "line");
    }
    folder.write("Reports/App-report-1.json", kReport);
    folder.write("Reports/Other-report-0000000000000001.json", kReport);
    KSCrashReportStore store(folder.path(), "App");
    ASSERT_TRUE(store.prepare());
    EXPECT_EQ(store.readyReports(), (std::vector<std::uint64_t>{4, 5, 6, 7, 8})) << "oldest first";
    EXPECT_FALSE(std::filesystem::exists(folder / fileOf(3, ".log")));
    EXPECT_TRUE(std::filesystem::exists(folder / fileOf(4, ".log")));
    EXPECT_TRUE(std::filesystem::exists(folder / "Reports/App-report-1.json")) << "not a name of its own";
    EXPECT_TRUE(std::filesystem::exists(folder / "Reports/Other-report-0000000000000001.json"));
}

TEST(KSCrashReportStore, ReadsThePendingLinesAsText) {
    const ScratchFolder folder;
    folder.write(fileOf(1), kReport);
    folder.write(fileOf(1, ".log"), "[1] \xFF\n[2] 写\xE5\x86");
    const KSCrashReportStore store(folder.path(), "App");
    const Value::Dictionary report = store.read(1).value_or(Value::Dictionary());
    EXPECT_FALSE(store.read(2)) << "nothing is there";
    EXPECT_EQ(ReportFields(&report).in("user").shown("pending_log"), "[1] \uFFFD\n[2] 写\uFFFD\uFFFD");
}

TEST(KSCrashReportStore, NumbersRiseAboveAllThatAreThereAndFromRunToRun) {
    testkit::ManualClock clock;
    const ScratchFolder folder;
    KSCrashReportStore store(folder.path(), "App");
    const std::uint64_t first = store.nextNumber();
    clock.advance(std::chrono::microseconds(1));
    EXPECT_EQ(store.nextNumber(), first + 1);
    folder.write("Reports/App-report-ffffffffffffff00.json", kReport);
    EXPECT_EQ(store.nextNumber(), 0xffffffffffffff01U);
}

TEST(KSCrashReportStore, LeavesAReportAloneThatIsBeingWritten) {
    const ScratchFolder folder;
    const std::string path = folder.write(fileOf(1), kReport);
    KSCrashReportStore store(folder.path(), "App");
    const int writer = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(flock(writer, LOCK_EX | LOCK_NB), 0);
    EXPECT_TRUE(store.readyReports().empty());
    close(writer);
    EXPECT_EQ(store.readyReports().size(), 1U);
}

TEST(KSCrashReportStore, FailsWhereAFileIsInTheWay) {
    const ScratchFolder folder;
    folder.write("Reports", "in the way");
    EXPECT_FALSE(KSCrashReportStore(folder.path(), "App").prepare());
}

TEST(StoredReport, GivesTheTimestampAsTextByTheVersionOfTheReport) {
    struct Case {
        const char* members;
        Value timestamp;
    };
    const Case cases[] = {
        {R"("version":"3.3.0","timestamp":1614834367123456)", "2021-03-04T05:06:07.123456Z"},
        {R"("version":"3.10.1","timestamp":1614834367000007)", "2021-03-04T05:06:07.000007Z"},
        {R"("version":"3.2.0","timestamp":1614834367)", "2021-03-04T05:06:07Z"},
        {R"("version":"3.3.0","timestamp":"2021-03-04T05:06:07.1Z")", "2021-03-04T05:06:07.1Z"},
        {R"("version":"3.3.0","timestamp":-5)", ""},
        {R"("version":"3.3.0","timestamp":9223372036854775807)", ""},
    };
    for (const auto& [members, timestamp] : cases) {
        const auto report =
            crash::parseStoredReport(std::string("{\"report\":{") + members + "},\"complete\":true}");
        ASSERT_NE(ReportFields(&report).in("report").find("timestamp"), nullptr) << members;
        EXPECT_EQ(*ReportFields(&report).in("report").find("timestamp"), timestamp) << members;
    }
}

// A process may be killed at any byte of its report.
TEST(StoredReport, GivesWhatThereIsOfAReportTornAnywhere) {
    const Value::Dictionary whole = crash::parseStoredReport(kReport);
    EXPECT_EQ(whole.find("incomplete"), nullptr);
    bool hadSystem = false;
    for (std::size_t length = 0; length < kReport.size(); ++length) {
        const std::string_view torn = kReport.substr(0, length);
        const std::string closed = crash::closeTornJSON(torn);
        JSONReader reader(closed);
        Value value;
        EXPECT_TRUE(closed.empty() || (reader.readValue(value) && reader.finish()))
            << length << ": " << closed;
        const Value::Dictionary report = crash::parseStoredReport(torn);
        EXPECT_TRUE(ReportFields(&report).isTrue("incomplete")) << length;
        const bool hasSystem = ReportFields(&report).in("system").find("process_id") != nullptr;
        EXPECT_TRUE(hasSystem || !hadSystem) << "more of the file must not give less";
        hadSystem = hasSystem;
    }
    EXPECT_TRUE(hadSystem);
    const Value::Dictionary rubbish = crash::parseStoredReport("]}rubbish");
    EXPECT_TRUE(ReportFields(&rubbish).isTrue("incomplete"));
}

}  // namespace
}  // namespace zqcore::platform
