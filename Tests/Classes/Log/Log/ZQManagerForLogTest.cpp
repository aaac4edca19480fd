#include "Classes/Log/Log/ZQManagerForLog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <thread>

#include "Classes/Core/Utility/ZQInfo.h"
#include "Classes/Core/Utility/ZQPathFetcher.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Base/NSLog.h"
#include "Platform/Dispatch/ClockDriver.h"
#include "Platform/Foundation/NSSearchPath.h"
#include "Platform/Foundation/NSUserDefaults.h"
#include "Platform/Lumberjack/DDLog.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/LogCapture.h"
#include "TestKit/TemporaryHome.h"
#include "Tests/Platform/Lumberjack/LogTestSupport.h"

namespace zqcore {
namespace {

using testing_support::contentOf;
using testing_support::MemoryLogger;
using testing_support::namesIn;

/// What stands in all files of a logger's directory, nothing if there is none.
std::string filesOf(std::string_view name) {
    DDLog::flushLog();
    const std::string directory = *ZQManagerForLog::logDirectoryWithName(name);
    std::string content;
    if (!std::filesystem::exists(directory)) return "(no directory)";
    for (const std::string& file : namesIn(directory)) content += contentOf(directory + '/' + file);
    return content;
}

/// Puts the level back, since other tests of the same process go by it.
class ZQManagerForLogTest : public testing::Test {
  protected:
    ZQManagerForLogTest() {
        ZQManagerForLog::initialize();
        ZQDefaultLogLevel = 7;
    }
    ~ZQManagerForLogTest() override {
        NSUserDefaults::standardUserDefaults()->setObject(Value(), "ZQLog_logLevel");
        ZQDefaultLogLevel = 7;
    }
};

TEST(ZQManagerForLogFirstUseTest, ALevelPutInForceAfterTheFirstUseIsKept) {
    const auto& defaults = NSUserDefaults::standardUserDefaults();
    defaults->setInteger(3, "ZQLog_logLevel");
    ZQManagerForLog::restoreLogLevel();
    ZQDefaultLogLevel = 31;
    EXPECT_EQ(logging::level(), 31U) << "the first line restored the stored level once more";
    defaults->setObject(Value(), "ZQLog_logLevel");
    ZQDefaultLogLevel = 7;
}

std::string text(const std::optional<std::string>& value) { return value.value_or("(null)"); }

TEST_F(ZQManagerForLogTest, WritesTheBannerLetterByLetter) {
    const auto output = std::make_shared<MemoryLogger>();
    const auto ddlog = DDLog::make();
    ddlog->addLogger(output);
    ZQManagerForLog::configDDLog(*ddlog, "Banner");
    DDLog::flushLog();
    std::ostringstream expected;
    expected << "\n=========> 🚀\n"
             << ZQInfo::appIdentifier() << " " << ZQInfo::appFullVersion() << " " << ZQInfo::pid() << "\n"
             << ZQInfo::macOSVersion() << "\n"
             << ZQInfo::macModel() << " " << ZQInfo::macArchitecture() << "\n"
             << "guid " << text(ZQInfo::macGuid()) << "\n"
             << "启动 ZQLog(Banner)...\n\n"
             << "日志文件夹:\n"
             << ZQPathFetcher::zqcoreLogsDirectory() << "/ZQLogs/Banner\n"
             << "bundle:\n"
             << ZQPathFetcher::bundleDirectory() << "\nsandbox:\n"
             << ZQPathFetcher::sandboxDirectory() << "\ndocuments:\n"
             << ZQPathFetcher::documentsDirectory() << "\nlibrary:\n"
             << ZQPathFetcher::libraryDirectory() << "\ncaches:\n"
             << ZQPathFetcher::cachesDirectory() << "\ntemp:\n"
             << ZQPathFetcher::temporaryDirectory() << "\nuserdefaults:\n"
             << ZQPathFetcher::userDefaultsPlistFilePath() << "\napplication scripts:\n"
             << text(ZQPathFetcher::applicationScriptsDirectory()) << "\napplication scripts(original):\n"
             << text(ZQPathFetcher::originalApplicationScriptsDirectory()) << "\napplication support:\n"
             << ZQPathFetcher::applicationSupportDirectory() << "\ndownloads:\n"
             << ZQPathFetcher::downloadsDirectory() << "\n<=========";
    ASSERT_EQ(output->lines().size(), 1U);
    EXPECT_EQ(output->lines()[0], expected.str());
    const std::string file = filesOf("Banner");
    EXPECT_TRUE(file.contains(" ● ZQManagerForLog ● ")) << file;
    EXPECT_TRUE(file.ends_with(" ● I] +[ZQManagerForLog configDDLog:name:] ● " + expected.str() + "\n"))
        << file;
}

TEST_F(ZQManagerForLogTest, GivesLoggersByName) {
    EXPECT_EQ(ZQManagerForLog::createDDLogWithName(""), nullptr);
    EXPECT_EQ(ZQManagerForLog::logDirectoryWithName(""), std::nullopt);
    EXPECT_EQ(ZQManagerForLog::createDDLogWithName("Default"), ZQManagerForLog::sharedDDLog());
    EXPECT_EQ(ZQManagerForLog::defaultLogDirectory(), ZQManagerForLog::rootLogDirectory() + "/Default");

    const auto a = ZQManagerForLog::createDDLogWithName("Extra");
    const auto b = ZQManagerForLog::createDDLogWithName("Extra");
    EXPECT_NE(a, b);
    ZQLogInfo("by a", a.get());
    ZQLogError("by b", b.get());
    DDLog::flushLog();
    EXPECT_EQ(namesIn(*ZQManagerForLog::logDirectoryWithName("Extra")).size(), 1U) << "one file for both";
    const std::string file = filesOf("Extra");
    const auto second = file.find("启动 ZQLog(Extra)", file.find("启动 ZQLog(Extra)") + 1);
    ASSERT_NE(second, std::string::npos) << "a banner each";
    EXPECT_LT(second, file.find(" ● by a\n"));
    EXPECT_LT(file.find(" ● by a\n"), file.find(" ● by b\n"));
}

TEST_F(ZQManagerForLogTest, ANamelessLoggerHasTheFilesOfAnApplicationThatNamesNoFolder) {
    const auto ddlog = DDLog::make();
    ZQManagerForLog::configDDLog(*ddlog, "");
    DDLog::flushLog();
    const std::string logs = std::string(std::getenv("XDG_CACHE_HOME")) + "/Logs";
    const auto folders = namesIn(logs);
    ASSERT_EQ(folders.size(), 1U);
    EXPECT_EQ(namesIn(logs + "/" + *folders.begin()).size(), 1U);
}

TEST_F(ZQManagerForLogTest, TheSharedLoggerIsSetUpOnceByWhomeverComesFirst) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) threads.emplace_back([i] { ZQLogInfo("thread " + std::to_string(i)); });
    for (auto& thread : threads) thread.join();
    const std::string file = filesOf("Default");
    EXPECT_EQ(file.find("启动 ZQLog(Default)"), file.rfind("启动 ZQLog(Default)"));
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(file.contains(" ● thread " + std::to_string(i) + "\n")) << file;
}

/// Answers as the system does, and reports something meanwhile, as a damaged property list makes it.
class ReportingSearchPaths final : public SearchPaths {
  public:
    ReportingSearchPaths() { installForTesting(this); }
    ~ReportingSearchPaths() override { installForTesting(nullptr); }
    std::string homeDirectory() const override { return system().homeDirectory(); }
    std::string temporaryDirectory() const override { return system().temporaryDirectory(); }
    std::string userDirectory(NSSearchPathDirectory directory) const override {
        NSLog("something is damaged");
        return system().userDirectory(directory);
    }
};

TEST_F(ZQManagerForLogTest, AReportFromInsideWhatTheSetUpAsksForDoesNotSetUp) {
    {
        const ReportingSearchPaths paths;
        EXPECT_FALSE(ZQPathFetcher::sandboxDirectory().empty()) << "the banner tells it too";
        EXPECT_FALSE(ZQPathFetcher::downloadsDirectory().empty());
        ClockDriver::waitUntilQuiet();
    }
    const std::string file = filesOf("Default");
    EXPECT_TRUE(file.contains(" ● something is damaged\n")) << file;
}

TEST_F(ZQManagerForLogTest, WithoutTheInfoBitBothOutputsAreThereAndNoBanner) {
    ZQDefaultLogLevel = 3;
    const auto ddlog = ZQManagerForLog::createDDLogWithName("Quiet");
    EXPECT_EQ(filesOf("Quiet"), "") << "the directory is made by the clean-up, a file only by a line";
    ZQLogInfo("kept back", ddlog.get());
    ZQLogError("first line", ddlog.get());
    const std::string file = filesOf("Quiet");
    EXPECT_TRUE(file.ends_with(" ● first line\n")) << file;
    EXPECT_FALSE(file.contains("ZQLog(")) << file;
}

TEST_F(ZQManagerForLogTest, RestoresNumbersOfEveryKindAndNothingElse) {
    struct Case {
        Value stored;
        std::uint64_t level;
    };
    const auto& defaults = NSUserDefaults::standardUserDefaults();
    for (const auto& [stored, level] :
         {Case{Value(31), 31}, Case{Value(0), 0}, Case{Value(true), 1}, Case{Value(3.7), 3},
          Case{Value(-1), 4'294'967'295U}, Case{Value("7"), 99}, Case{Value(Value::Array{}), 99}}) {
        ZQDefaultLogLevel = 99;
        defaults->setObject(stored, "ZQLog_logLevel");
        ZQManagerForLog::restoreLogLevel();
        EXPECT_EQ(ZQDefaultLogLevel, level) << stored.description();
    }
    defaults->setObject(Value(), "ZQLog_logLevel");
    ZQDefaultLogLevel = 99;
    ZQManagerForLog::restoreLogLevel();
    EXPECT_EQ(ZQDefaultLogLevel, 99U);
}

TEST_F(ZQManagerForLogTest, StoresTheLow32BitsOfTheLevelAtOnce) {
    ZQManagerForLog::setLogLevel((std::uint64_t{1} << 40) | 31);
    EXPECT_EQ(ZQDefaultLogLevel, (std::uint64_t{1} << 40) | 31);
    EXPECT_EQ(NSUserDefaults::standardUserDefaults()->objectForKey("ZQLog_logLevel"), Value(31));
}

TEST_F(ZQManagerForLogTest, TheLevelHoldsInTheNextLaunch) {
    DDLog::flushLog();
    const testkit::TemporaryHome home;  // for the children: none of this process's files lie in it
    const std::string program = std::string(ZQ_TEST_PROGRAMS) + "/LogLevel";
    testkit::ChildProcess set({program, "16"});
    EXPECT_EQ(set.readLine(), "level 7");
    EXPECT_EQ(set.wait(), 0);
    testkit::ChildProcess zero({program, "0"});
    EXPECT_EQ(zero.readLine(), "level 16");
    EXPECT_EQ(zero.wait(), 0);
    testkit::ChildProcess silent({program});
    EXPECT_EQ(silent.readLine(), "level 0");
    EXPECT_EQ(silent.readLine(), "info and error silent");
    const auto assertion = silent.readLine().value_or("");
    EXPECT_TRUE(assertion.ends_with(" ● ❌] int main(int, char**) ● assertion")) << assertion;
    EXPECT_EQ(silent.readLine(), std::nullopt) << "no banner";
    EXPECT_EQ(silent.wait(), 0);
}

}  // namespace
}  // namespace zqcore
