#include "Platform/Lumberjack/DDFileLogger.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/xattr.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Platform/Lumberjack/DDLogFileManagerDefault.h"
#include "TestKit/ManualClock.h"
#include "TestKit/ScratchFolder.h"
#include "Tests/Platform/Lumberjack/LogTestSupport.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;
using testing_support::contentOf;
using testing_support::say;
using Names = std::vector<std::string>;

constexpr const char* kFirst = "App 2024-01-02--03-04-05-000.log";
constexpr const char* kNextDay = "App 2024-01-03--03-04-05-000.log";

class DDFileLoggerTest : public testing::Test {
  protected:
    /// A logger with one file output on the directory, as a new launch has it.
    struct Launch {
        std::shared_ptr<DDLogFileManagerDefault> manager;
        std::shared_ptr<DDLog> ddlog = DDLog::make();
    };
    Launch launch() {
        Launch made{DDLogFileManagerDefault::make(path(), "App")};
        made.ddlog->addLogger(DDFileLogger::make(made.manager));
        return made;
    }
    [[nodiscard]] const std::string& path() const { return directory_.path(); }
    [[nodiscard]] std::string at(std::string_view name) const { return path() + '/' + std::string(name); }
    [[nodiscard]] Names names() const {
        DDLog::flushLog();
        return testing_support::namesIn(path());
    }
    [[nodiscard]] bool isArchived(std::string_view name) const {
        char mark = 0;
        return ::getxattr(at(name).c_str(), "user.lumberjack.log.archived", &mark, 1) == 1 && mark == 1;
    }
    void put(std::string_view name, std::size_t size, bool archived = true) const {
        std::ofstream(at(name)) << std::string(size, 'x');
        if (archived) ::setxattr(at(name).c_str(), "user.lumberjack.log.archived", "\1", 1, 0);
    }

    testkit::ManualClock clock_;

  private:
    testkit::ScratchFolder directory_;
};

TEST_F(DDFileLoggerTest, MakesTheFileWithTheFirstLineAndEndsEachLine) {
    const auto app = launch();
    DDLog::flushLog();
    EXPECT_EQ(names(), Names{}) << "no line, no file";
    say(*app.ddlog, "one");
    say(*app.ddlog, "two\n");
    say(*app.ddlog, "");
    EXPECT_EQ(names(), Names{kFirst});
    EXPECT_EQ(contentOf(at(kFirst)), "one\ntwo\n") << "an empty text is no line";
}

TEST_F(DDFileLoggerTest, RollsBehindTheLineThatReachesTheMaximum) {
    const auto app = launch();
    say(*app.ddlog, std::string(DDFileLogger::maximumFileSize - 3, 'a'));
    EXPECT_FALSE(isArchived(kFirst)) << "two bytes short of it";
    say(*app.ddlog, "a long line that is not cut", true);
    say(*app.ddlog, "next", true);
    EXPECT_EQ(names(), (Names{"App 2024-01-02--03-04-05-000 2.log", kFirst}));
    EXPECT_TRUE(isArchived(kFirst));
    EXPECT_TRUE(contentOf(at(kFirst)).ends_with("a\na long line that is not cut\n"));
    EXPECT_EQ(contentOf(at("App 2024-01-02--03-04-05-000 2.log")), "next\n");
}

TEST_F(DDFileLoggerTest, RollsAtTheAgeOfADayWithoutAnyLine) {
    const auto app = launch();
    say(*app.ddlog, "today");
    clock_.advance(24h - 1s);
    DDLog::flushLog();
    EXPECT_FALSE(isArchived(kFirst));
    clock_.advance(1s);
    DDLog::flushLog();
    EXPECT_TRUE(isArchived(kFirst)) << "by the timer";
    EXPECT_EQ(names(), Names{kFirst}) << "the next line makes the next file";
    say(*app.ddlog, "tomorrow");
    EXPECT_EQ(contentOf(at(kNextDay)), "tomorrow\n");
}

TEST_F(DDFileLoggerTest, ResumesTheNewestFileOnlyIfItMayGrow) {
    {
        const auto first = launch();
        say(*first.ddlog, "first");
    }
    clock_.advance(23h);
    {
        const auto second = launch();
        say(*second.ddlog, "second");
        EXPECT_EQ(contentOf(at(kFirst)), "first\nsecond\n");
    }
    ::setxattr(at(kFirst).c_str(), "user.lumberjack.log.archived", "\1", 1, 0);
    {
        const auto third = launch();
        say(*third.ddlog, "third");
    }
    EXPECT_EQ(names(), (Names{kFirst, "App 2024-01-03--02-04-05-000.log"})) << "archived, so a new one";
    clock_.advance(24h);
    EXPECT_FALSE(isArchived("App 2024-01-03--02-04-05-000.log")) << "nobody has it open";
    {
        const auto fourth = launch();
        say(*fourth.ddlog, "fourth");
    }
    EXPECT_TRUE(isArchived("App 2024-01-03--02-04-05-000.log")) << "too old, marked by who found it";
    EXPECT_EQ(contentOf(at("App 2024-01-04--02-04-05-000.log")), "fourth\n");
    put("App 2024-01-05--00-00-00-000.log", DDFileLogger::maximumFileSize, false);
    {
        const auto fifth = launch();
        say(*fifth.ddlog, "fifth");
    }
    EXPECT_TRUE(isArchived("App 2024-01-05--00-00-00-000.log")) << "full";
}

TEST_F(DDFileLoggerTest, MakesANewFileWhenItsOwnIsDeletedOrRenamed) {
    const auto app = launch();
    say(*app.ddlog, "one");
    std::filesystem::remove(at(kFirst));
    say(*app.ddlog, "two");
    EXPECT_EQ(contentOf(at(kFirst)), "two\n");
    std::filesystem::rename(at(kFirst), at("kept by a person"));
    say(*app.ddlog, "three");
    EXPECT_EQ(contentOf(at(kFirst)), "three\n");
    EXPECT_EQ(contentOf(at("kept by a person")), "two\n");
    std::filesystem::remove_all(path());
    say(*app.ddlog, "four");
    EXPECT_EQ(contentOf(at(kFirst)), "four\n") << "the directory too";
}

TEST_F(DDFileLoggerTest, TwoLoggersShareOneFileInTheOrderOfTheCalls) {
    const auto a = launch();
    const auto b = launch();
    std::string expected;
    for (int i = 0; i < 50; ++i) {
        const std::string line = "line " + std::to_string(i);
        say(i % 3 == 0 ? *a.ddlog : *b.ddlog, line, true);
        expected += line + '\n';
    }
    EXPECT_EQ(names(), Names{kFirst});
    EXPECT_EQ(contentOf(at(kFirst)), expected);
}

TEST_F(DDFileLoggerTest, TwoLoggersRollTheirSharedFileOnce) {
    const auto a = launch();
    const auto b = launch();
    say(*a.ddlog, "a");
    say(*b.ddlog, std::string(DDFileLogger::maximumFileSize, 'b'));
    EXPECT_TRUE(isArchived(kFirst));
    say(*b.ddlog, "b");
    say(*a.ddlog, "a behind the mark");
    say(*a.ddlog, "a in the new one");
    EXPECT_EQ(names(), (Names{"App 2024-01-02--03-04-05-000 2.log", kFirst}));
    EXPECT_EQ(contentOf(at("App 2024-01-02--03-04-05-000 2.log")), "b\na in the new one\n");
}

TEST_F(DDFileLoggerTest, DeletesByCountFromTheOldest) {
    for (const char* day : {"01", "02", "03", "04", "05"})
        put("App 2023-12-" + std::string(day) + "--00-00-00-000.log", 10);
    put("App notes.txt", 10);
    put("Other 2023-12-01--00-00-00-000.log", 10);
    const auto app = launch();
    say(*app.ddlog, "line");
    EXPECT_EQ(names(), (Names{"App 2023-12-02--00-00-00-000.log", "App 2023-12-03--00-00-00-000.log",
                              "App 2023-12-04--00-00-00-000.log", "App 2023-12-05--00-00-00-000.log", kFirst,
                              "App notes.txt", "Other 2023-12-01--00-00-00-000.log"}))
        << "five of its own, and nothing else is touched";
    app.manager->setMaximumNumberOfLogFiles(2);
    EXPECT_EQ(names(), (Names{"App 2023-12-05--00-00-00-000.log", kFirst, "App notes.txt",
                              "Other 2023-12-01--00-00-00-000.log"}));
    app.manager->setMaximumNumberOfLogFiles(0);
    clock_.advance(24h);
    say(*app.ddlog, "line");
    EXPECT_EQ(names().size(), 5U) << "0 is no limit";
}

TEST_F(DDFileLoggerTest, DeletesByQuotaFromTheFileThatExceedsIt) {
    put("App 2023-12-01--00-00-00-000.log", 10);
    put("App 2023-12-02--00-00-00-000.log", 1000);
    put("App 2023-12-03--00-00-00-000.log", 400);
    put("App 2023-12-04--00-00-00-000.log", 600);
    const auto manager = DDLogFileManagerDefault::make(path(), "App");
    manager->setLogFilesDiskQuota(1000);
    EXPECT_EQ(names(), (Names{"App 2023-12-03--00-00-00-000.log", "App 2023-12-04--00-00-00-000.log"}))
        << "the older small one goes with the one that exceeds";
    put("App 2023-12-05--00-00-00-000.log", 5000, false);
    manager->setLogFilesDiskQuota(999);
    EXPECT_EQ(names(), Names{"App 2023-12-05--00-00-00-000.log"}) << "the newest stays while it is written";
    ::setxattr(at("App 2023-12-05--00-00-00-000.log").c_str(), "user.lumberjack.log.archived", "\1", 1, 0);
    manager->setLogFilesDiskQuota(998);
    EXPECT_EQ(names(), Names{}) << "but not when it is archived";
}

// As it is when the clock was ahead for a while and is right again.
TEST_F(DDFileLoggerTest, WritesOnBehindArchivedFilesOfLaterDates) {
    put("App 2027-01-01--00-00-00-000.log", 400);
    put("App 2027-01-02--00-00-00-000.log", 400);
    const auto app = launch();
    app.manager->setLogFilesDiskQuota(700);
    app.manager->setMaximumNumberOfLogFiles(1);
    say(*app.ddlog, "one");
    EXPECT_EQ(names(), Names{kFirst}) << "the file being written counts as the newest";
    app.manager->setMaximumNumberOfLogFiles(2);
    DDLog::flushLog();  // that change's clean-up is over
    put("App 2027-01-01--00-00-00-000.log", 699);
    put("App 2027-01-02--00-00-00-000.log", 400);
    app.manager->setLogFilesDiskQuota(701);
    EXPECT_EQ(names(), (Names{kFirst, "App 2027-01-02--00-00-00-000.log"}));
    clock_.advance(1h);
    const auto again = launch();
    say(*again.ddlog, "two");
    EXPECT_EQ(contentOf(at(kFirst)), "one\ntwo\n") << "no new file for each launch";
}

/// Lets no file grow beyond `bytes`, like a disk that is full.
class FullDisk {
  public:
    explicit FullDisk(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

  private:
    rlimit before_{};
    void (*handler_)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

TEST_F(DDFileLoggerTest, AFullDiskCutsALineAndTakesNoOtherAlong) {
    {
        const auto app = launch();
        say(*app.ddlog, "one");
        {
            const FullDisk disk(7);
            say(*app.ddlog, "cut off");
            say(*app.ddlog, "lost");
        }
        say(*app.ddlog, "two");
        EXPECT_EQ(contentOf(at(kFirst)), "one\ncut\ntwo\n");
        const FullDisk disk(15);
        say(*app.ddlog, "cut off");
    }
    const auto next = launch();
    say(*next.ddlog, "three");
    say(*next.ddlog, "four");
    EXPECT_EQ(contentOf(at(kFirst)), "one\ncut\ntwo\ncut\nthree\nfour\n") << "nor in the next launch";
}

TEST_F(DDFileLoggerTest, AFullDiskRollsNoFile) {
    const auto app = launch();
    say(*app.ddlog, "one");
    const FullDisk disk(4);
    for (int i = 0; i < 3; ++i) say(*app.ddlog, std::string(DDFileLogger::maximumFileSize, 'x'));
    EXPECT_EQ(names(), Names{kFirst});
    EXPECT_FALSE(isArchived(kFirst));
}

TEST_F(DDFileLoggerTest, AChangedLimitMakesTheDirectoryAnUnchangedOneDoesNothing) {
    const auto manager = DDLogFileManagerDefault::make(at("deep/down"), "App");
    manager->setLogFilesDiskQuota(20 * 1024 * 1024);
    EXPECT_EQ(names(), Names{});
    manager->setMaximumNumberOfLogFiles(50);
    EXPECT_EQ(names(), Names{"deep"});
    EXPECT_TRUE(std::filesystem::is_directory(at("deep/down")));
}

TEST_F(DDFileLoggerTest, SortsByTheDateInTheNameThenByItsNumber) {
    put("App 2024-01-01--00-00-00-000.log", 1);
    put("App 2024-01-01--00-00-00-000 2.log", 1);
    put("App 2024-01-01--00-00-00-000 10.log", 1);
    put("App 2025-01-01--00-00-00-000.log", 1);
    put("App of today.log", 1);  // goes by its real creation, later than all dates above
    Names sorted;
    for (const auto& info : DDLogFileManagerDefault::make(path(), "App")->sortedLogFileInfos())
        sorted.push_back(std::filesystem::path(info.path).filename());
    EXPECT_EQ(sorted, (Names{"App of today.log", "App 2025-01-01--00-00-00-000.log",
                             "App 2024-01-01--00-00-00-000 10.log", "App 2024-01-01--00-00-00-000 2.log",
                             "App 2024-01-01--00-00-00-000.log"}));
}

TEST_F(DDFileLoggerTest, ADirectoryThatCantBeMadeLosesNoLaterLine) {
    put("deep", 1);
    const auto ddlog = DDLog::make();
    ddlog->addLogger(DDFileLogger::make(DDLogFileManagerDefault::make(at("deep/down"), "App")));
    say(*ddlog, "lost");
    std::filesystem::remove(at("deep"));
    say(*ddlog, "written");
    EXPECT_EQ(contentOf(at("deep/down/") + kFirst), "written\n");
}

}  // namespace
}  // namespace zqcore
