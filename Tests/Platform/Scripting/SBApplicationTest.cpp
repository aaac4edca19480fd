#include "Platform/Scripting/SBApplication.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/BusDirectory.h"
#include "Platform/Scripting/Linux/BusConnection.h"
#include "Platform/Scripting/NSDistributedNotificationCenter.h"
#include "Platform/Scripting/NSScriptSuiteRegistry.h"
#include "Platform/Scripting/ScriptingBus.h"
#include "TestKit/FakeScriptingBus.h"
#include "TestKit/ManualClock.h"
#include "TestKit/PlatformReports.h"
#include "TestKit/PrivateBus.h"

namespace zqcore::platform {
namespace {

using testkit::ChildProcess;
using testkit::NoBus;
using testkit::PrivateBus;

constexpr const char* kTarget = "com.example.text-server";
const std::string kTextServer = std::string(ZQ_TEST_PROGRAMS) + "/TextServer";
const std::string kPlainPeer = std::string(ZQ_TEST_PROGRAMS) + "/PlainPeer";

struct FailureLog final : SBApplicationDelegate {
    void eventDidFail(std::string_view event, const NSError& error) override {
        EXPECT_EQ(event, "request:");
        EXPECT_EQ(std::this_thread::get_id(), caller) << "inside the call, on its thread";
        errors.push_back(error);
    }
    [[nodiscard]] long lastCode() const { return errors.empty() ? 0 : errors.back().code(); }

    std::thread::id caller = std::this_thread::get_id();
    std::vector<NSError> errors;
};

class SBApplicationTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(bus.running()); }

    /// Starts the server and waits until it serves.
    std::unique_ptr<ChildProcess> startServer(const std::string& identifier = kTarget) {
        auto server = std::make_unique<ChildProcess>(std::vector{kTextServer, identifier});
        EXPECT_EQ(server->readLine(), "serving");
        return server;
    }
    std::shared_ptr<SBApplication> application(const std::string& identifier = kTarget) {
        auto made = SBApplication::make(identifier);
        if (made) made->setDelegate(failures);
        return made;
    }

    PrivateBus bus;
    std::shared_ptr<FailureLog> failures = std::make_shared<FailureLog>();
};

TEST_F(SBApplicationTest, AnswersComeBackFromAnotherProcess) {
    const auto server = startServer();
    const auto app = application();
    ASSERT_TRUE(app);
    EXPECT_TRUE(app->isRunning());
    EXPECT_TRUE(app->respondsToSelector("request:"));
    EXPECT_FALSE(app->respondsToSelector("quit:"));
    EXPECT_EQ(app->request("main?"), "main") << "commands run on the server's main thread";
    EXPECT_EQ(app->request("pid?"), std::to_string(server->pid()));
    EXPECT_EQ(app->request(""), "") << "an empty answer is an answer";
    EXPECT_EQ(app->request("你好 🌍"), "你好 🌍");
    EXPECT_EQ(app->request("thread"), "from a thread");
    EXPECT_TRUE(failures->errors.empty());
}

TEST_F(SBApplicationTest, CommandsWithoutResultGiveNothingAndAreNoFailure) {
    const auto server = startServer();
    const auto app = application();
    for (const char* text : {"nothing", "drop", "bad answer"})
        EXPECT_EQ(app->request(text), std::nullopt) << text;
    EXPECT_TRUE(failures->errors.empty());
}

TEST_F(SBApplicationTest, TextsOfEverySizePassBothWays) {
    const auto server = startServer();
    const auto app = application();
    for (const std::size_t size : {std::size_t{1}, std::size_t{65535}, std::size_t{65536},
                                   std::size_t{400'000}, std::size_t{20} << 20}) {
        std::string text(size, 'a');
        text.back() = 'z';
        EXPECT_TRUE(app->request(text) == text) << size << " bytes there and back";
        const auto grown = app->request("repeat " + std::to_string(size));
        ASSERT_TRUE(grown) << size;
        EXPECT_EQ(grown->size(), size) << "a short question with a long answer";
    }
    EXPECT_TRUE(failures->errors.empty());
}

TEST_F(SBApplicationTest, TextsThatCannotTravelAreRefusedHere) {
    const auto server = startServer();
    const auto app = application();
    for (const auto& text :
         {std::string("a\0b", 3), std::string("\xff"), std::string((100 << 20) + 1, 'a')}) {
        EXPECT_EQ(app->request(text), std::nullopt);
        EXPECT_EQ(failures->lastCode(), -1715);
    }
    EXPECT_EQ(app->request("still there"), "still there");
}

TEST_F(SBApplicationTest, UnknownIdentifiersMakeNoApplication) {
    for (const char* identifier : {"", "com.example.nobody", "com.360.x", "plain", "com.example.a b", ":1.1"})
        EXPECT_FALSE(SBApplication::make(identifier)) << identifier;
}

TEST_F(SBApplicationTest, BusStartsTheTarget) {
    bus.addService(kTarget, kTextServer + " " + kTarget);
    EXPECT_TRUE(isActivatable(kTarget));
    const auto app = application();
    ASSERT_TRUE(app);
    EXPECT_FALSE(app->isRunning()) << "making the object starts nothing";
    app->activate();
    EXPECT_TRUE(app->respondsToSelector("request:"));
    EXPECT_TRUE(app->isRunning());
    EXPECT_EQ(app->request("hello"), "hello");
    // The target dies and the next command starts it again.
    const auto before = app->request("pid?");
    EXPECT_EQ(app->request("die"), std::nullopt);
    EXPECT_EQ(failures->lastCode(), -1712);
    const auto after = app->request("pid?");
    EXPECT_TRUE(after);
    EXPECT_NE(after, before);
}

TEST_F(SBApplicationTest, FailedStartsFailTheEventNotTheQuestion) {
    const auto starts = bus.directory() / "starts";
    bus.addService("com.example.broken", "/bin/sh -c \"echo started >>" + starts.string() + "; exit 1\"");
    const auto app = application("com.example.broken");
    ASSERT_TRUE(app);
    EXPECT_TRUE(app->respondsToSelector("request:")) << "it can't be told; the call will";
    EXPECT_EQ(app->request("hello"), std::nullopt);
    ASSERT_EQ(failures->errors.size(), 1U);
    EXPECT_EQ(failures->lastCode(), -600);
    EXPECT_NE(failures->errors[0].description().find("org.freedesktop.DBus.Error.Spawn.ChildExited"),
              std::string::npos)
        << failures->errors[0].description();
    EXPECT_EQ(std::filesystem::file_size(starts), sizeof "started") << "started once by one request";
    EXPECT_EQ(app->request("hello"), std::nullopt);
    EXPECT_EQ(std::filesystem::file_size(starts), 2 * sizeof "started") << "and anew by the next";
}

/// Puts the limit of calls back at its end.
struct ShortCalls {
    ShortCalls() { setCallLimitForTesting(std::chrono::milliseconds(20)); }
    ~ShortCalls() { setCallLimitForTesting(kCallLimit); }
};

TEST_F(SBApplicationTest, ACallThatIsNotAnsweredInTimeFails) {
    const auto server = startServer();
    const auto app = application();
    EXPECT_EQ(app->request("known"), "known");
    const ShortCalls limit;
    EXPECT_EQ(app->request("hold"), std::nullopt);
    EXPECT_EQ(failures->lastCode(), -1712);
}

TEST_F(SBApplicationTest, ATargetThatKeepsSilentIsAskedOnceByARequest) {
    ChildProcess peer({kPlainPeer, "silent", kTarget, "/com/example/text_server"});
    ASSERT_EQ(peer.readLine(), "serving");
    const auto app = application();
    {
        const ShortCalls limit;
        EXPECT_TRUE(app->respondsToSelector("request:")) << "it can't be told; the call will";
        EXPECT_EQ(app->request("hello"), std::nullopt);
        EXPECT_EQ(failures->errors.size(), 1U);
        EXPECT_EQ(failures->lastCode(), -1712);
        EXPECT_EQ(app->request("hello"), std::nullopt) << "the next one asks anew";
    }
    ChildProcess({kPlainPeer, "call", kTarget, "/com/example/text_server", "end"}).wait();
    for (const char* heard : {"Introspect", "Introspect", "request"}) EXPECT_EQ(peer.readLine(), heard);
}

TEST_F(SBApplicationTest, AnOwnerThatGoesWhileItIsAskedForIsForgotten) {
    sd_bus* raw = nullptr;
    ASSERT_GE(sd_bus_open_user(&raw), 0);
    const SdBusHandle other(raw);
    // Another caller reads the socket as often as not, so an answer and what comes behind it are taken in
    // before the one who asked goes on.
    std::atomic<bool> done = false;
    std::thread reader([&] {
        while (!done) EXPECT_FALSE(nameHasOwner("com.example.other"));
    });
    for (int round = 0; round < 400; ++round) {
        const std::string name = "com.example.short" + std::to_string(round);
        ASSERT_GE(sd_bus_request_name(raw, name.c_str(), 0), 0);
        // Sooner or later within the questions; which of them it hits doesn't matter to what must come out.
        std::thread releaser([&] {
            const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(round % 200 * 3);
            while (std::chrono::steady_clock::now() < until) {
            }
            sd_bus_release_name(raw, name.c_str());
        });
        (void)nameHasOwner(name);
        releaser.join();
        // The answer is behind everything that the bus has told.
        EXPECT_FALSE(nameHasOwner("com.example.nobody"));
        EXPECT_FALSE(nameHasOwner(name)) << name;
    }
    done = true;
    reader.join();
}

TEST_F(SBApplicationTest, NamesThatNobodyHasLeaveNoWatch) {
    // The bus allows a connection 512 watches, unless it is told otherwise.
    for (int i = 0; i < 900; ++i) {
        const std::string name = "com.example.absent" + std::to_string(i);
        auto& scripting = ScriptingBus::current();
        switch (i % 3) {
            case 0:
                EXPECT_FALSE(scripting.request(name, "hello"));
                break;
            case 1:
                EXPECT_FALSE(scripting.knowsRequestCommand(name));
                break;
            default:
                scripting.start(name);
        }
    }
    auto server = startServer();
    EXPECT_TRUE(nameHasOwner(kTarget));
    server->kill();
    // The bus has seen the end when it has gone round its sockets again.
    for (int round = 0; round < 2; ++round) EXPECT_FALSE(nameHasOwner("com.example.nobody"));
    EXPECT_FALSE(nameHasOwner(kTarget)) << "its watch was refused";
}

TEST_F(SBApplicationTest, TargetThatGoesIsSeenAtOnce) {
    auto server = startServer();
    const auto app = application();
    EXPECT_EQ(app->request("hello"), "hello");
    EXPECT_EQ(app->request("die"), std::nullopt);
    EXPECT_EQ(failures->lastCode(), -1712) << "it died in mid-call";
    EXPECT_EQ(server->wait(), 3);
    EXPECT_FALSE(app->isRunning());
    EXPECT_EQ(app->request("hello"), std::nullopt);
    EXPECT_EQ(failures->lastCode(), -600);
    server = startServer();
    EXPECT_TRUE(app->isRunning());
    EXPECT_EQ(app->request("hello"), "hello") << "a new process under the same name";
}

TEST_F(SBApplicationTest, HeldAnswersLetOthersPass) {
    const auto server = startServer();
    const auto app = application();
    std::vector<std::thread> threads;
    std::vector<std::string> answers(16);
    for (auto& answer : answers)
        threads.emplace_back([&answer, &app] { answer = app->request("hold").value_or("none"); });
    // A held call can't be seen from here, so release until every one of them has come.
    std::atomic<bool> done = false;
    std::thread releaser([&] {
        while (!done) EXPECT_EQ(app->request("release"), "released");
    });
    for (auto& thread : threads) thread.join();
    done = true;
    releaser.join();
    EXPECT_EQ(std::ranges::count(answers, "late"), 16);
}

TEST_F(SBApplicationTest, ManyCallersShareTheConnection) {
    const auto server = startServer();
    const auto app = application();
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    std::atomic<int> ended = 0;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&, thread] {
            for (int call = 0; call < 100; ++call) {
                std::string text = std::to_string(thread) + "/" + std::to_string(call);
                if (call % 25 == 0) text.append(200'000, '.');
                if (app->request(text) == text) ++right;
            }
            ++ended;
        });
    }
    // Whoever asks something else meanwhile takes in what has arrived, the answer of a sleeping caller too.
    while (ended < 8 && app->isRunning()) std::this_thread::yield();
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(right, 800);
}

TEST_F(SBApplicationTest, LostBusEndsPendingCallsAndTheNextUseConnectsAgain) {
    auto server = startServer();
    const auto app = application();
    std::atomic<bool> asked = false;
    std::optional<std::string> answer = "unset";
    std::thread caller([&] {
        failures->caller = std::this_thread::get_id();
        EXPECT_EQ(app->request("before"), "before");
        asked = true;
        answer = app->request("hold");
    });
    while (!asked) std::this_thread::yield();
    bus.stop();
    caller.join();
    EXPECT_EQ(answer, std::nullopt);
    EXPECT_EQ(failures->lastCode(), -609);

    failures->caller = std::this_thread::get_id();
    EXPECT_FALSE(app->isRunning());
    EXPECT_FALSE(SBApplication::make(kTarget)) << "no bus, and nothing installed";
    EXPECT_EQ(app->request("hello"), std::nullopt);
    EXPECT_EQ(failures->lastCode(), -609);

    bus.start();
    server->kill();
    server = startServer();
    EXPECT_EQ(app->request("again"), "again");
}

TEST_F(SBApplicationTest, AnAnswerThatCameJustBeforeTheBusWentStillCounts) {
    constexpr const char* kHere = "com.example.here";
    std::promise<ScriptingBus::Reply> asked;
    ASSERT_EQ(ScriptingBus::current().serve(
                  kHere, [&](std::string, ScriptingBus::Reply reply) { asked.set_value(std::move(reply)); }),
              ScriptingServeStatus::serving);
    ChildProcess caller(
        {"/bin/sh", "-c", "exec \"" ZQ_TEST_PROGRAMS "/RequestRelay\" relay com.example.here </dev/null"});
    auto reply = asked.get_future().get();
    // It sees the answer and the end of the bus at once.
    ::kill(caller.pid(), SIGSTOP);
    int status = 0;
    ASSERT_EQ(::waitpid(caller.pid(), &status, WUNTRACED), caller.pid());
    reply("just in time\n");
    // The bus has handed it on when it has gone round its sockets again.
    for (int round = 0; round < 2; ++round) EXPECT_FALSE(nameHasOwner("com.example.nobody"));
    ScriptingBus::current().stopServing(kHere);
    bus.stop();
    ::kill(caller.pid(), SIGCONT);
    EXPECT_EQ(caller.readLine(), "just in time");
}

/// A bus that takes every connection and closes it again.
class RefusingBus {
  public:
    explicit RefusingBus(const std::filesystem::path& folder) : path_(folder / "refusing") {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path_.c_str());
        ::bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        ::listen(listener_, 50);
        ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + path_.string()).c_str(), 1);
    }
    ~RefusingBus() { ::close(listener_); }
    int refused() {
        for (int taken = 0; (taken = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0; ++refused_)
            ::close(taken);
        return refused_;
    }

  private:
    std::filesystem::path path_;
    int listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    int refused_ = 0;
};

TEST_F(SBApplicationTest, ABusThatRefusesIsTriedMoreAndMoreSeldomAndIsGoneInTheEnd) {
    testkit::ManualClock clock;
    std::atomic<int> told = 0;
    ScriptingBus::current().whenGone([&] { ++told; });
    std::atomic<int> heard = 0;
    const auto listener = ScriptingBus::current().listen("com.example.note", [&](const auto&) { ++heard; });
    RefusingBus refusing(bus.directory());
    bus.stop();
    // Every refusal is an event of its own and takes no time of this clock, so each try has its own.
    const auto awaitTries = [&](int tries, Clock::Duration step) {
        while (refusing.refused() < tries) {
            clock.advance(step);
            std::this_thread::yield();
        }
    };
    awaitTries(3, std::chrono::milliseconds(10));
    EXPECT_EQ(told, 0);
    awaitTries(4, std::chrono::milliseconds(10));
    while (told == 0) std::this_thread::yield();
    EXPECT_EQ(refusing.refused(), 4);
    // It goes on looking, for ever: the tenth was the last one once.
    awaitTries(14, std::chrono::seconds(1));
    EXPECT_EQ(told, 1);
    ::setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    bus.start();
    while (heard == 0) {
        clock.advance(std::chrono::seconds(1));
        ChildProcess({kPlainPeer, "post", "com.example.note", "", "{}"}).wait();
    }
    ScriptingBus::current().whenGone(nullptr);
}

TEST_F(SBApplicationTest, ServerComesBackToANewBus) {
    const auto server = startServer();
    bus.stop();
    bus.start();
    // The server looks for the bus at growing intervals of real time; its claim is the event to wait for.
    while (!nameHasOwner(kTarget)) std::this_thread::yield();
    EXPECT_EQ(application()->request("pid?"), std::to_string(server->pid()));
}

TEST_F(SBApplicationTest, ANameThatAnotherTookOnTheNewBusIsClaimedAgainWhenItIsFree) {
    testkit::ManualClock clock;  // No look for a bus before the other process has its name.
    testkit::PlatformReports reports;
    constexpr const char* kHere = "com.example.here";
    auto& scripting = ScriptingBus::current();
    const auto answering = [](const char* answer) {
        return [answer](std::string, ScriptingBus::Reply reply) { reply(answer); };
    };
    ASSERT_EQ(scripting.serve(kHere, answering("mine")), ScriptingServeStatus::serving);
    bus.stop();
    bus.start();
    auto other = startServer(kHere);
    EXPECT_EQ(scripting.request(kHere, "theirs"), "theirs") << "the next use connects, and claims";
    EXPECT_EQ(scripting.serve(kHere, answering("another")), ScriptingServeStatus::nameTaken);
    other->kill();
    auto answer = scripting.request(kHere, "theirs");
    while (!answer || answer == "theirs") answer = scripting.request(kHere, "theirs");
    EXPECT_EQ(answer, "mine") << "the call that failed has changed nothing";
    EXPECT_EQ(scripting.serve(kHere, answering("another")), ScriptingServeStatus::serving);
    EXPECT_EQ(scripting.request(kHere, "theirs"), "another");
    // The look that has become needless is made, for the clock would drop it, and with it every later one.
    clock.advance(std::chrono::seconds(1));
    scripting.stopServing(kHere);
    EXPECT_EQ(reports.take(), std::vector<std::string>{"scripting: com.example.here has gone to another "
                                                       "process, which is waited for"});
}

TEST_F(SBApplicationTest, IdentifiersOfOnePathHaveTheirOwnHandlers) {
    auto& scripting = ScriptingBus::current();
    const std::vector<std::string> identifiers{"com.example.a-b", "com.example.a_b"};
    for (const auto& identifier : identifiers) {
        ASSERT_EQ(scripting.serve(identifier, [identifier](std::string,
                                                           ScriptingBus::Reply reply) { reply(identifier); }),
                  ScriptingServeStatus::serving);
    }
    bus.stop();
    bus.start();
    for (const auto& identifier : identifiers) EXPECT_EQ(scripting.request(identifier, "who?"), identifier);
    scripting.stopServing(identifiers[0]);
    EXPECT_FALSE(scripting.request(identifiers[0], "who?"));
    EXPECT_EQ(scripting.request(identifiers[1], "who?"), identifiers[1]) << "the object is still there";
    scripting.stopServing(identifiers[1]);
}

TEST(EmptyHandlersTest, AreNone) {
    testkit::FakeScriptingBus fake;
    NSScriptSuiteRegistry::whenBusIsGone(nullptr);
    EXPECT_FALSE(fake.gone);
    EXPECT_FALSE(NSDistributedNotificationCenter::defaultCenter().addObserver(
        "com.example.note", DispatchQueue::main(), nullptr));
}

TEST_F(SBApplicationTest, EmptyHandlersAnswerNothingAndHearNothing) {
    constexpr const char* kHere = "com.example.here";
    auto& scripting = ScriptingBus::current();
    const auto listener = scripting.listen("com.example.note", nullptr);
    EXPECT_TRUE(scripting.broadcast({"com.example.note", nullptr, std::nullopt}));
    ASSERT_EQ(scripting.serve(kHere, nullptr), ScriptingServeStatus::serving);
    const auto answer = scripting.request(kHere, "hello");
    ASSERT_TRUE(answer);
    EXPECT_EQ(*answer, std::nullopt);
    scripting.stopServing(kHere);
}

TEST_F(SBApplicationTest, WithoutABusEverythingIsToldAtOnce) {
    const NoBus none;
    EXPECT_FALSE(nameHasOwner(kTarget));
    EXPECT_FALSE(isActivatable(kTarget));
    EXPECT_FALSE(SBApplication::make(kTarget));
    EXPECT_EQ(NSScriptSuiteRegistry::serve(kTarget, nullptr), ScriptingServeStatus::noBus);
    const auto answer = ScriptingBus::current().request(kTarget, "hello");
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().code(), -609);
}

TEST_F(SBApplicationTest, AnIdentifierIsServedByOneProcess) {
    const auto server = startServer();
    EXPECT_EQ(NSScriptSuiteRegistry::serve(kTarget, nullptr), ScriptingServeStatus::nameTaken);
    EXPECT_EQ(NSScriptSuiteRegistry::serve("com.360.x", nullptr), ScriptingServeStatus::invalidIdentifier);
    ChildProcess second({kTextServer, kTarget});
    EXPECT_EQ(second.readLine(), "refused");
    // What ends with a refused handler may use the bus itself.
    EXPECT_EQ(ScriptingBus::current().serve(
                  kTarget, [token = ScriptingBus::current().listen("com.example.note", nullptr)](
                               std::string, ScriptingBus::Reply) {}),
              ScriptingServeStatus::nameTaken);
}

TEST_F(SBApplicationTest, AnyBusToolCanCallAServer) {
    const auto server = startServer();
    const auto ask = [](const std::string& text) {
        ChildProcess peer({kPlainPeer, "call", kTarget, "/com/example/text_server", text});
        return peer.readLine().value_or("no line");
    };
    EXPECT_EQ(ask("你好"), "你好");
    EXPECT_EQ(ask("thread"), "from a thread");
    EXPECT_EQ(ask("repeat 100000"), std::string(100'000, 'x')) << "no file for whoever asked with a text";
    for (const char* text : {"nothing", "drop", "bad answer"})
        EXPECT_EQ(ask(text), "error com.tessara.ZQCore.Scripting.Error.NoResult") << text;
}

TEST_F(SBApplicationTest, WhoeverIsFreeTakesACommand) {
    constexpr const char* kHere = "com.example.here";
    std::atomic<int> onMain = 0;
    std::atomic<int> elsewhere = 0;
    const auto served =
        ScriptingBus::current().serve(kHere, [&](std::string text, ScriptingBus::Reply reply) {
            ++(isMainThread() ? onMain : elsewhere);
            reply(std::move(text));
            // For a main thread that sleeps in its loop.
            DispatchQueue::main()->async([] {});
        });
    ASSERT_EQ(served, ScriptingServeStatus::serving);
    const auto ask = [&](const std::function<void(int)>& waitForCount) {
        const int before = onMain + elsewhere;
        ChildProcess peer({kPlainPeer, "call", kHere, "/com/example/here", "hello"});
        waitForCount(before + 1);
        EXPECT_EQ(peer.readLine(), "hello");
    };
    const auto outsideTheLoop = [](int) {};
    const auto inTheLoop = [&](int count) {
        const auto taken = [&] { return onMain + elsewhere == count; };
        ASSERT_TRUE(RunLoop::main().runUntil(taken, std::chrono::minutes(1)));
    };
    const auto inAForeignLoop = [&](int count) {
        pollfd polled{RunLoop::main().fileDescriptor(), POLLIN, 0};
        while (onMain + elsewhere < count) {
            ASSERT_EQ(::poll(&polled, 1, 60'000), 1);
            RunLoop::main().drain();
        }
    };
    ask(outsideTheLoop);
    EXPECT_EQ(onMain, 0) << "it waits for something else";
    // One may come before the main thread sleeps; in the end one comes after that.
    while (onMain == 0) ask(inTheLoop);
    ask(inAForeignLoop);
    const int before = onMain;
    ask(outsideTheLoop);
    EXPECT_EQ(onMain, before) << "nor has it to come back to its loop";
    ScriptingBus::current().stopServing(kHere);
}

TEST_F(SBApplicationTest, AnotherUserIsRefused) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can become another user";
    const auto server = startServer();
    // What keeps others out is the folder; a bus that they can reach is the one to be prepared for.
    namespace fs = std::filesystem;
    const auto parent = bus.directory().parent_path();
    for (const auto& folder : {bus.directory(), parent, parent.parent_path()})
        fs::permissions(folder, fs::perms::others_exec, fs::perm_options::add);
    ChildProcess peer({kPlainPeer, "foreign", kTarget, "/com/example/text_server", "pid?"});
    EXPECT_EQ(peer.readLine(), "error org.freedesktop.DBus.Error.AccessDenied");
    EXPECT_EQ(peer.readLine(), "only processes of the same user may call");
    EXPECT_EQ(application()->request("hello"), "hello") << "the server goes on";
}

TEST_F(SBApplicationTest, FilesThatTheirSenderCouldStillChangeAreRefused) {
    {
        const auto server = startServer();
        ChildProcess peer({kPlainPeer, "file", kTarget, "/com/example/text_server"});
        EXPECT_EQ(peer.readLine(), "error org.freedesktop.DBus.Error.InvalidArgs");
        EXPECT_EQ(peer.readLine(), "the file isn't sealed");
    }
    ChildProcess peer({kPlainPeer, "files", kTarget, "/com/example/text_server"});
    ASSERT_EQ(peer.readLine(), "serving");
    EXPECT_EQ(application()->request("hello"), std::nullopt);
    EXPECT_EQ(failures->lastCode(), -1715);
}

TEST_F(SBApplicationTest, AnyBusToolCanBeAServer) {
    ChildProcess peer({kPlainPeer, "serve", kTarget, "/com/example/text_server"});
    ASSERT_EQ(peer.readLine(), "serving");
    const auto app = application();
    ASSERT_TRUE(app);
    EXPECT_TRUE(app->respondsToSelector("request:"));
    const std::string large(1 << 20, 'a');
    EXPECT_EQ(app->request("hello"), "hello");
    EXPECT_TRUE(app->request(large) == large) << "no file for whoever takes only texts";

    struct Case {
        std::string error;
        long code;
    };
    const std::string prefix = "org.freedesktop.DBus.Error.";
    for (const auto& [error, code] : {Case{prefix + "AccessDenied", -1743},
                                      {prefix + "AuthFailed", -1743},
                                      {prefix + "UnknownMethod", -1708},
                                      {prefix + "UnknownObject", -1708},
                                      {prefix + "NoReply", -1712},
                                      {prefix + "TimedOut", -1712},
                                      {prefix + "NameHasNoOwner", -600},
                                      {prefix + "Spawn.ExecFailed", -600},
                                      {prefix + "Disconnected", -609},
                                      {prefix + "InvalidArgs", -1715},
                                      {"com.example.Own", -1708}}) {
        EXPECT_EQ(app->request("error " + error), std::nullopt);
        EXPECT_EQ(failures->lastCode(), code) << error;
        EXPECT_EQ(failures->errors.back().localizedDescription(), error + ": on purpose")
            << "the reason stays";
    }
}

TEST_F(SBApplicationTest, ARunningTargetWithoutTheCommandIsKnown) {
    ChildProcess peer({kPlainPeer, "serve", kTarget, ""});
    ASSERT_EQ(peer.readLine(), "serving");
    const auto app = application();
    ASSERT_TRUE(app);
    EXPECT_TRUE(app->isRunning());
    EXPECT_FALSE(app->respondsToSelector("request:"));
    EXPECT_EQ(app->request("hello"), std::nullopt);
    EXPECT_EQ(failures->lastCode(), -1708);
    // The next owner of the name is asked anew.
    peer.kill();
    const auto server = startServer();
    EXPECT_TRUE(app->respondsToSelector("request:"));
}

}  // namespace
}  // namespace zqcore::platform
