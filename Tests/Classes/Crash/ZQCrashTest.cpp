#include "Classes/Crash/ZQCrash.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "Classes/Crash/ZQCrashDateSink.h"
#include "Classes/Crash/ZQCrashWriteSink.h"
#include "Platform/CrashCapture/KSCrash.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/LogCapture.h"
#include "TestKit/Sanitized.h"
#include "TestKit/ScratchFolder.h"
#include "TestKit/TimeZoneGuard.h"

namespace zqcore {
namespace {

using testkit::ChildProcess;
using testkit::contentOf;
using testkit::kSanitized;
using testkit::LogCapture;
using testkit::ScratchFolder;
using Lines = std::vector<std::string>;

// A home of its own, which the children share.
class ZQCrashTest : public testing::Test {
  protected:
    ZQCrashTest() {
        ::setenv("HOME", home_.path().c_str(), 1);
        for (const char* name : {"XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"}) ::unsetenv(name);
    }

    // Stored reports of this program, each the JSON of its "report".
    void store(const Lines& members) const {
        const std::string name = NSProcessInfo::processInfo().processName();
        for (std::size_t i = 0; i < members.size(); ++i) {
            home_.write(".cache/KSCrash/" + name + "/Reports/" + name + "-report-000000000000000" +
                            std::to_string(i + 1) + ".json",
                        "{\"report\":" + members[i] + ",\"complete\":true}");
        }
    }
    [[nodiscard]] bool storeIsEmpty() const {
        const std::string name = NSProcessInfo::processInfo().processName();
        return std::filesystem::is_empty(home_ / (".cache/KSCrash/" + name + "/Reports"));
    }

    static Lines exportedNames() {
        Lines names;
        for (const auto& report : ZQCrash::exportedReports()) {
            names.push_back(std::filesystem::path(report.path).filename().string());
        }
        return names;
    }

    ScratchFolder home_;
    testkit::TimeZoneGuard zone_{"Asia/Shanghai"};
};

TEST_F(ZQCrashTest, ExportsEachStoredReportUnderItsOwnTimeAndOnlyOnce) {
    store({R"({"version":"3.3.0","id":"FIRST","timestamp":1614834367123456})",
           R"({"version":"3.3.0","id":"SECOND","timestamp":1614834368000000})"});
    LogCapture log;
    ZQCrash::install();
    EXPECT_EQ(log.messages(), (Lines{"启用 ZQCrash 完成", "导出崩溃日志：count=2; result=true; error=nil"}));
    EXPECT_EQ(exportedNames(), (Lines{"crash-report-2021-03-04-13-06-07.123+0800.crash",
                                      "crash-report-2021-03-04-13-06-08.000+0800.crash"}));
    const std::vector<ZQCrash::ExportedReport> reports = ZQCrash::exportedReports();
    EXPECT_EQ(reports[0].date, Date(std::chrono::milliseconds(1614834367123)));
    EXPECT_TRUE(contentOf(reports[0].path).starts_with("Incident Identifier: FIRST\n"));
    EXPECT_TRUE(contentOf(reports[1].path).starts_with("Incident Identifier: SECOND\n"));
    EXPECT_TRUE(storeIsEmpty());
    EXPECT_EQ(std::filesystem::status(reports[0].path).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
        << "log lines are in it";

    log.clear();
    store({R"({"version":"3.3.0","id":"THIRD","timestamp":1614834369000000})"});
    ZQCrash::install();
    EXPECT_TRUE(log.silent()) << "a second call does nothing";
    EXPECT_EQ(exportedNames().size(), 2U);
}

TEST_F(ZQCrashTest, TellsThatThereWasNothing) {
    LogCapture log;
    ZQCrash::install();
    EXPECT_EQ(log.messages(LogCapture::info), (Lines{"启用 ZQCrash 完成", "无崩溃日志"}));
    EXPECT_FALSE(std::filesystem::exists(ZQCrash::exportDirectory()));
    EXPECT_TRUE(ZQCrash::exportedReports().empty());
}

TEST_F(ZQCrashTest, KeepsReportsThatItCouldNotWrite) {
    store({R"({"version":"3.3.0","timestamp":1614834367123456})"});
    std::filesystem::create_directories(std::filesystem::path(ZQCrash::exportDirectory()).parent_path());
    std::ofstream(ZQCrash::exportDirectory()) << "in the way";
    LogCapture log;
    ZQCrash::install();
    EXPECT_TRUE(log.contains("写入 crash 日志失败: Error Domain=NSCocoaErrorDomain"));
    EXPECT_TRUE(log.has("导出崩溃日志：count=1; result=false; error=nil"));
    EXPECT_FALSE(storeIsEmpty());
}

TEST_F(ZQCrashTest, LeavesOutAReportThatItCannotReadAndKeepsIt) {
    store({R"({"version":"3.3.0","timestamp":1614834367123456})"});
    const std::string name = NSProcessInfo::processInfo().processName();
    // A folder in the place of a file: no file, whoever asks.
    const std::string unreadable = home_.write(
        ".cache/KSCrash/" + name + "/Reports/" + name + "-report-0000000000000002.json/note", "kept");
    LogCapture log;
    ZQCrash::install();
    EXPECT_TRUE(log.has("导出崩溃日志：count=1; result=true; error=nil")) << log;
    EXPECT_EQ(exportedNames().size(), 1U);
    EXPECT_EQ(contentOf(unreadable), "kept");
}

TEST_F(ZQCrashTest, GoesOnWithTheExportWhereCaptureCannotBeInstalled) {
    home_.write(".cache/KSCrash", "in the way");
    LogCapture log;
    ZQCrash::install();
    EXPECT_TRUE(log.contains("启用 ZQCrash 失败：Error Domain=NSCocoaErrorDomain"));
    EXPECT_TRUE(log.has("无崩溃日志"));
}

TEST_F(ZQCrashTest, GivesAReportWithoutATimeAFileAllTheSame) {
    store({R"({"version":"3.3.0","id":"TIMELESS"})"});
    LogCapture log;
    ZQCrash::install();
    EXPECT_EQ(log.messages(LogCapture::error), (Lines{"reportInfo 未找到时间戳", "report 日期为空"}));
    const auto reports = ZQCrash::exportedReports();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_FALSE(reports[0].date);
    constexpr std::string_view kForm = "crash-report-date-empty-00000000-0000-0000-0000-000000000000.crash";
    EXPECT_EQ(exportedNames()[0].size(), kForm.size());
    EXPECT_TRUE(exportedNames()[0].starts_with("crash-report-date-empty-"));
}

TEST_F(ZQCrashTest, DateSinkTellsEachReasonAndPassesTheReportsOn) {
    const auto with = [](Value report) {
        return KSCrashReportDictionary::make(Value::Dictionary{{"report", std::move(report)}});
    };
    const auto at = [&](const char* time) { return with(Value::Dictionary{{"timestamp", time}}); };
    const KSCrashReports reports{KSCrashReportString::make("text"),         nullptr,
                                 KSCrashReportDictionary::make({}),         with(7),
                                 with(Value::Dictionary{{"timestamp", 7}}), at("2021-03-04T05:06:07Z"),
                                 at("2021-03-04T05:06:07.123456Z")};
    LogCapture log;
    int answers = 0;
    ZQCrashDateSink().filterReports(reports, [&](const auto& filtered, bool completed, const auto& error) {
        ++answers;
        EXPECT_EQ(filtered, reports);
        EXPECT_TRUE(completed);
        EXPECT_FALSE(error);
    });
    ZQCrashDateSink().filterReports({}, nullptr);
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(log.messages(LogCapture::error),
              (Lines{"report 不是 dict", "report 不是 dict", "reportInfo 不是 dict", "reportInfo 不是 dict",
                     "reportInfo 未找到时间戳", "reportInfo 时间戳转换失败: 2021-03-04T05:06:07Z"}));
    ASSERT_EQ(ZQCrashDateSink::dates().size(), 1U);
    EXPECT_EQ(ZQCrashDateSink::dates().at(6), Date(std::chrono::milliseconds(1614834367123)));
}

TEST_F(ZQCrashTest, WriteSinkWritesTheTextsAndReplacesWhatIsThere) {
    ZQCrashDateSink::dates()[1] = Date(std::chrono::milliseconds(1614834367123));
    const std::string path = ZQCrash::exportDirectory() + "/crash-report-2021-03-04-13-06-07.123+0800.crash";
    std::filesystem::create_directories(path + "/a folder in the way");
    LogCapture log;
    int answers = 0;
    const KSCrashReports reports{KSCrashReportDictionary::make({}), KSCrashReportString::make("文\n")};
    ZQCrashWriteSink().filterReports(reports, [&](const auto& filtered, bool completed, const auto& error) {
        ++answers;
        EXPECT_EQ(filtered, reports);
        EXPECT_FALSE(completed) << "one was no text";
        EXPECT_FALSE(error);
    });
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(log.messages(LogCapture::error), Lines{"report 不是 string"});
    EXPECT_EQ(contentOf(path), "文\n");
}

// The whole road: a process dies, and the next one of its kind writes the report.
TEST_F(ZQCrashTest, ExportsAtTheNextStartWhatARealCrashLeft) {
    if (kSanitized)
        GTEST_SKIP() << "a sanitizer takes the fatal signals and the end of the process for itself";
    const auto run = [](const char* fault) {
        ChildProcess child({ZQ_TEST_PROGRAMS "/CrashChild", fault, "queue"});
        Lines lines;
        while (auto line = child.readLine()) {
            lines.push_back(*line);
            if (*line == "ready" && std::string_view(fault) == "none") child.kill();
        }
        return lines;
    };
    EXPECT_EQ(run("throw"), Lines{"ready"});
    const Lines second = run("none");
    ASSERT_EQ(second.size(), 2U);
    ASSERT_TRUE(second[0].starts_with("exported ")) << second[0];
    const std::string text = contentOf(second[0].substr(9));
    for (const char* part :
         {"Process:             CrashChild [", "Exception Type:  EXC_CRASH (SIGABRT)\n",
          "*** Terminating app due to uncaught exception 'childfaults::OddError', reason: 'no such thing: ",
          "name:  Dispatch queue: com.example.faulty\n", "childfaults::throwError() + ",
          "Binary Images:\n"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    }
    EXPECT_EQ(run("none"), second) << "exported once, and kept";
}

// Lines that a process logged just before its death are in the log file, or in the report's directory and
// then in the exported text; here the real logger of a real child, which dies on its main thread and on a
// queue.
TEST_F(ZQCrashTest, LosesNoLineThatWasLoggedBeforeACrash) {
    if (kSanitized)
        GTEST_SKIP() << "a sanitizer takes the fatal signals and the end of the process for itself";
    constexpr int kSaid = 400;
    struct Case {
        const char* fault;
        const char* where;
        bool stalled;
    };
    for (const auto& [fault, where, stalled] : {Case{"segv", "main", true}, Case{"abort", "queue", true},
                                                Case{"segv", "main", false}, Case{"bus", "queue", false}}) {
        SCOPED_TRACE(std::string(fault) + " on " + where + (stalled ? ", stalled" : ""));
        const ScratchFolder home;
        ::setenv("HOME", home.path().c_str(), 1);
        const auto run = [&](const Lines& words) {
            ChildProcess child(words);
            Lines lines;
            while (auto line = child.readLine()) lines.push_back(*line);
            return lines;
        };
        run({ZQ_TEST_PROGRAMS "/CrashChild", fault, where, "said=" + std::to_string(kSaid),
             stalled ? "stalled" : "free"});
        std::string inFile;
        std::string inReport;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path())) {
            if (entry.path().extension() != ".log") continue;
            const bool ofReport = entry.path().parent_path().filename() == "Reports";
            (ofReport ? inReport : inFile) += contentOf(entry.path().string());
        }
        EXPECT_NE((inFile + inReport).find("启用 ZQCrash 完成"), std::string::npos);
        std::size_t last = 0;
        int held = 0;
        for (int i = 0; i < kSaid; ++i) {
            const std::string text = "said " + std::to_string(i) + "\n";
            const auto place = inReport.find("] " + text);
            EXPECT_TRUE(place != std::string::npos || inFile.find(text) != std::string::npos) << text;
            if (place == std::string::npos) continue;
            EXPECT_GE(place, last) << "in their order";
            last = place;
            ++held;
        }
        if (!stalled) continue;
        EXPECT_EQ(held, kSaid) << "none of them could reach the file";
        EXPECT_EQ(inFile.find("said 1\n"), std::string::npos);
        const Lines next = run({ZQ_TEST_PROGRAMS "/CrashChild", "none"});
        ASSERT_TRUE(!next.empty() && next[0].starts_with("exported "))
            << "its report comes with the next start";
        const std::string text = contentOf(next[0].substr(9));
        EXPECT_NE(text.find("Log lines that had not reached the file:\n["), std::string::npos);
        EXPECT_TRUE(text.ends_with("] said " + std::to_string(kSaid - 1) + "\n"));
    }
}

}  // namespace
}  // namespace zqcore
