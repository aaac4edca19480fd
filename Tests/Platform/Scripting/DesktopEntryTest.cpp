// Targets that only a desktop entry names: how they are started, and what is told when they don't come.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Platform/Scripting/Linux/ApplicationLaunch.h"
#include "Platform/Scripting/Linux/DesktopEntries.h"
#include "Platform/Scripting/SBApplication.h"
#include "Platform/Scripting/ScriptingBus.h"
#include "TestKit/PrivateBus.h"

namespace zqcore::platform {
namespace {

constexpr const char* kTarget = "com.example.text-server";
const std::string kServerCommand = std::string("exec ") + ZQ_TEST_PROGRAMS + "/TextServer " + kTarget;

class DesktopEntryTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(bus.running()); }

    /// The command line of a shell that notes the start and goes on with `command`.
    [[nodiscard]] std::string noted(const std::string& command) const {
        return "sh -c \"echo >>starts; " + command + "\"\nPath=" + bus.directory().string();
    }
    [[nodiscard]] std::size_t starts() const {
        std::ifstream file(bus.directory() / "starts");
        return static_cast<std::size_t>(std::count(std::istreambuf_iterator<char>(file), {}, '\n'));
    }
    /// The answer, or the code of the error and its text.
    static std::string ask(const std::string& text) {
        const auto answer = ScriptingBus::current().request(kTarget, text);
        if (!answer)
            return std::to_string(answer.error().code()) + " " + answer.error().localizedDescription();
        return answer->value_or("nothing");
    }

    testkit::PrivateBus bus;
};

/// Keeps the last failure, as `ask` tells it.
struct LastFailure final : SBApplicationDelegate {
    void eventDidFail(std::string_view, const NSError& error) override {
        text = std::to_string(error.code()) + " " + error.localizedDescription();
    }
    std::string text;
};

TEST_F(DesktopEntryTest, StartsTheTarget) {
    bus.addDesktopEntry(kTarget, noted(kServerCommand));
    const auto app = SBApplication::make(kTarget);
    ASSERT_TRUE(app);
    EXPECT_FALSE(app->isRunning());
    EXPECT_EQ(starts(), 0U) << "making the object starts nothing";
    app->activate();
    EXPECT_TRUE(app->respondsToSelector("request:"));
    const auto first = ask("pid?");
    const int pid = std::atoi(first.c_str());
    EXPECT_EQ(::getsid(pid), pid) << "it outlives the caller's terminal";
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + first + "/fd/1"), "/dev/null");
    app->activate();
    EXPECT_EQ(ask("pid?"), first);

    // The target dies; the callers who come then, all at once, start it once.
    EXPECT_TRUE(ask("die").starts_with("-1712 "));
    std::vector<std::thread> threads;
    std::vector<std::string> pids(8);
    for (auto& answer : pids) {
        threads.emplace_back([&answer, &app] {
            app->activate();
            answer = ask("pid?");
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_GT(std::atoi(pids.front().c_str()), 0) << pids.front();
    EXPECT_EQ(std::ranges::count(pids, pids.front()), 8);
    EXPECT_EQ(starts(), 2U);
}

TEST_F(DesktopEntryTest, FailedStartsFailTheEventOnce) {
    struct Case {
        std::string command;
        std::string reason;
    };
    for (const auto& [command, reason] :
         {Case{noted("exit 7"), "-600 the application ended with status 7"},
          {noted("kill -9 $$"), "-600 the application ended with signal 9"},
          {"/no/such/program", "-600 /no/such/program: No such file or directory"},
          {"sh %z", "-600 nothing to run in "},
          {"", "-600 nothing to run in "}}) {
        std::filesystem::remove(bus.directory() / "starts");
        bus.addDesktopEntry(kTarget, command);
        const auto app = SBApplication::make(kTarget);
        ASSERT_TRUE(app);
        const auto failure = std::make_shared<LastFailure>();
        app->setDelegate(failure);
        for (const std::size_t attempt : {1U, 2U}) {
            app->activate();
            EXPECT_TRUE(app->respondsToSelector("request:")) << "it can't be told; the call will";
            EXPECT_EQ(app->request("hello"), std::nullopt);
            EXPECT_TRUE(failure->text.starts_with(reason)) << failure->text;
            EXPECT_EQ(starts(), command.starts_with("sh -c") ? attempt : 0) << "one start a request";
        }
    }
}

// The launch alone: over the bus so short a limit would hold for the questions before it, too.
TEST(ApplicationLaunchTest, AProgramThatNeverComesToTheBusIsGivenUp) {
    DesktopEntry entry;
    entry.exec = "true";
    const auto launch = ApplicationLaunch::start(entry, std::chrono::milliseconds(20));
    const auto came = launch->wait();
    ASSERT_FALSE(came);
    EXPECT_EQ(came.error().code(), -1712);
    EXPECT_EQ(came.error().localizedDescription(), "the application didn't come to the bus");
    EXPECT_FALSE(launch->pending());
    EXPECT_TRUE(launch->failed()) << "the next request starts it again";
}

TEST_F(DesktopEntryTest, ALostBusEndsTheWait) {
    bus.addDesktopEntry(kTarget, noted("exec sleep 1000"));
    std::string answer;
    std::thread caller([&] { answer = ask("hello"); });
    while (starts() == 0) std::this_thread::yield();
    bus.stop();
    caller.join();
    // The end of the bus may take the target with it, and which of the two is seen first is anyone's guess.
    EXPECT_TRUE(answer.starts_with("-609 ") || answer.starts_with("-600 ")) << answer;
}

TEST(DesktopEntryExecTest, ReadsCommandLinesOfEveryForm) {
    using Arguments = std::vector<std::string>;
    struct Case {
        std::string exec;
        Arguments arguments;
    };
    for (const auto& [exec, arguments] :
         {Case{"program", {"program"}},
          {"  program  a\tb ", {"program", "a", "b"}},
          {R"("a program" "" "q\"u\`o\$t\\e\d" x"y z")", {"a program", "", "q\"u`o$t\\e\\d", "xy z"}},
          {"program 100%% %f %F %u %U %d %D %n %N %v %m --file=%f", {"program", "100%", "--file="}},
          {"program %i --name=%c %k", {"program", "--icon", "the icon", "--name=A Name", "/an.desktop"}},
          {"program \"%z\"", {"program", "%z"}},
          {"program %z", {}},
          {"program %", {}},
          {"program \"open", {}},
          {"%f", {}},
          {"", {}}}) {
        EXPECT_EQ(commandLine({"/an.desktop", "A Name", "the icon", exec, ""}), arguments) << exec;
    }
    EXPECT_EQ(commandLine({"/an.desktop", "", "", "program %i %c", ""}), Arguments{"program"});
}

}  // namespace
}  // namespace zqcore::platform
