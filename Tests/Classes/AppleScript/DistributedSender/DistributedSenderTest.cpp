#include "Classes/AppleScript/DistributedSender/DistributedSender.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Platform/Dispatch/ClockDriver.h"
#include "Platform/Scripting/NSDistributedNotificationCenter.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/FakeScriptingBus.h"
#include "TestKit/LogCapture.h"
#include "TestKit/PrivateBus.h"

namespace zqcore {
namespace {

using testkit::ChildProcess;
using testkit::FakeBundle;
using testkit::FakeScriptingBus;
using testkit::LogCapture;
using testkit::PrivateBus;

constexpr const char* kPost = "com.tessara.distributed.channel.post";
constexpr const char* kLast = R"({"path":"last"})";
using Heard = std::vector<std::pair<std::string, std::string>>;

/// Keeps what it was asked to handle.
struct KeepingRequest : CommonInfoRequest {
    static inline std::vector<std::optional<std::string>> handled;
    static void handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
        handled.push_back(request->requestId);
        completion(ResponseValue::make());
    }
};

class DistributedSenderTest : public testing::Test {
  protected:
    // The shared sender listens where it was first used, so all tests of a process share that bus.
    static FakeScriptingBus& bus() {
        static FakeScriptingBus& fake = *new FakeScriptingBus;
        return fake;
    }
    void SetUp() override {
        ScriptingBus::installForTesting(&bus());
        sender = DistributedSender::defaultSender();
    }
    void TearDown() override {
        sender->injectPostHandler(nullptr);
        ScriptingBus::installForTesting(nullptr);
    }

    /// What the post handler is called with for this notification.
    Heard deliver(Value object, std::optional<ValueDictionary> userInfo) {
        std::mutex mutex;
        std::condition_variable changed;
        Heard heard;
        sender->injectPostHandler([&](const std::string& path, const std::string& json) {
            EXPECT_EQ(DispatchQueue::currentLabel(), "com.tessara.distributed.queue");
            const std::lock_guard lock(mutex);
            heard.emplace_back(path, json);
            changed.notify_all();
        });
        bus().deliver({kPost, std::move(object), std::move(userInfo)});
        // Another one behind it tells that the first is through.
        bus().deliver({kPost, nullptr, ValueDictionary{{"request", kLast}}});
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return !heard.empty() && heard.back().first == "last"; });
        heard.pop_back();
        sender->injectPostHandler(nullptr);
        return heard;
    }

    FakeBundle bundle = FakeBundle::named("a.b");
    LogCapture capture;
    std::shared_ptr<DistributedSender> sender;
};

TEST_F(DistributedSenderTest, EveryoneIsHeardButThisApplicationItself) {
    const std::string json = R"({"path":"launch","n":1})";
    const ValueDictionary userInfo{{"request", json}};
    EXPECT_EQ(deliver("a.b", userInfo), Heard());
    for (const Value& object : {Value("c.d"), Value("A.B"), Value(""), Value(7), Value()})
        EXPECT_EQ(deliver(object, userInfo), (Heard{{"launch", json}})) << object.description();
    EXPECT_EQ(capture.count("DistributedSender 收到通知：" + json), 5U);
}

TEST_F(DistributedSenderTest, MalformedNotificationsAreDropped) {
    const std::string lastLine = std::string("DistributedSender 收到通知：") + kLast;
    for (const auto& userInfo : {std::optional<ValueDictionary>(), std::optional(ValueDictionary{}),
                                 std::optional(ValueDictionary{{"request", 1}}),
                                 std::optional(ValueDictionary{{"Request", "{}"}})}) {
        capture.clear();
        EXPECT_EQ(deliver("c.d", userInfo), Heard());
        EXPECT_EQ(capture.messages(), std::vector{lastLine}) << "no line for it";
    }
    for (const char* json : {"no JSON", "", "[]", R"({"n":1})", R"({"path":1})", R"({"path":null})"}) {
        capture.clear();
        EXPECT_EQ(deliver("c.d", ValueDictionary{{"request", json}}), Heard()) << json;
        EXPECT_EQ(capture.messages(LogCapture::info),
                  (std::vector{std::string("DistributedSender 收到通知：") + json, lastLine}));
    }
    EXPECT_EQ(deliver("c.d", ValueDictionary{{"request", R"({"path":""})"}}), (Heard{{"", R"({"path":""})"}}))
        << "an empty path is a path";
}

TEST_F(DistributedSenderTest, NothingFailsWithoutAPostHandler) {
    bus().deliver({kPost, "c.d", ValueDictionary{{"request", R"({"path":"unheard"})"}}});
    EXPECT_TRUE(capture.waitFor("unheard"));
    // The line is written before the handler is looked for.
    ClockDriver::waitUntilQuiet();
    EXPECT_EQ(deliver("c.d", ValueDictionary{{"request", R"({"path":"heard"})"}}).size(), 1U);
}

TEST_F(DistributedSenderTest, APostHandlerThatThrowsIsToldAndTheNextNotificationComes) {
    const ValueDictionary userInfo{{"request", R"({"path":"launch"})"}};
    sender->injectPostHandler([](const auto&, const auto&) { throw std::runtime_error("broken handler"); });
    bus().deliver({kPost, "c.d", userInfo});
    EXPECT_TRUE(capture.waitFor("DistributedSender handler 异常: broken handler"));
    sender->injectPostHandler([](const auto&, const auto&) { throw 7; });
    bus().deliver({kPost, "c.d", userInfo});
    EXPECT_TRUE(capture.waitFor("DistributedSender handler 异常: unknown exception"));
    EXPECT_EQ(capture.messages(LogCapture::error).size(), 2U) << capture;
    EXPECT_EQ(deliver("c.d", userInfo).size(), 1U) << "the queue lives on";
}

TEST_F(DistributedSenderTest, PostsTheEnvelopeUnderItsOwnIdentifier) {
    const auto before = bus().posts().size();
    const auto request = DistributedLaunchNotification::make();
    request->requestValue->requestId = "1";
    sender->post(request);
    const auto posts = bus().posts();
    ASSERT_EQ(posts.size(), before + 1);
    EXPECT_EQ(posts.back().name, kPost);
    EXPECT_EQ(posts.back().object, Value("a.b"));
    const auto json = request->requestValue->encodeToJSONString();
    EXPECT_EQ(Value(*posts.back().userInfo), Value(ValueDictionary{{"request", *json}}));
    EXPECT_EQ(request->requestValue->path, "launch") << "prepared";
    EXPECT_EQ(capture.messages(), std::vector{"DistributedSender 发送通知：" + *json});
    sender->post(std::shared_ptr<DistributedLaunchNotification>());
    EXPECT_EQ(bus().posts().size(), before + 1) << "no request, no post";
}

TEST_F(DistributedSenderTest, SandboxedProcessesPostNothingAndPrepareNothing) {
    const FakeBundle sandboxed({{"CFBundleIdentifier", "a.b"}, {"ZQCore_sandboxed", true}});
    const auto before = bus().posts().size();
    const auto request = DistributedLaunchNotification::make();
    sender->post(request);
    EXPECT_EQ(bus().posts().size(), before);
    EXPECT_EQ(request->requestValue->requestId, std::nullopt);
    EXPECT_TRUE(capture.silent()) << capture;
}

TEST_F(DistributedSenderTest, WhoeverAsksIsToldWhetherThePostWasTaken) {
    const auto request = DistributedLaunchNotification::make();
    EXPECT_TRUE(sender->tryPost(request));
    EXPECT_FALSE(sender->tryPost(std::shared_ptr<DistributedLaunchNotification>()));
    bus().takesPosts = false;
    EXPECT_FALSE(sender->tryPost(request));
    bus().takesPosts = true;
    const FakeBundle sandboxed({{"CFBundleIdentifier", "a.b"}, {"ZQCore_sandboxed", true}});
    EXPECT_FALSE(sender->tryPost(request));
}

TEST_F(DistributedSenderTest, HandleDecodesForTheType) {
    KeepingRequest::handled.clear();
    sender->handle<KeepingRequest>(R"({"requestId":"7"})");
    EXPECT_TRUE(capture.silent()) << capture;
    sender->handle<KeepingRequest>(R"({"requestId":8})");
    sender->handle<KeepingRequest>("no JSON");
    EXPECT_EQ(KeepingRequest::handled, (std::vector<std::optional<std::string>>{"7"}));
    EXPECT_EQ(capture.messages(LogCapture::error).size(), 2U) << "the decoder tells why";
}

/// Ends the process as `main` does; what ran before the first use of the sender is ended after it.
[[noreturn]] void endTheProcess() {
    static auto& bus = *new FakeScriptingBus;
    static auto& sender = *new std::weak_ptr<DistributedSender>;
    ScriptingBus::installForTesting(&bus);
    std::atexit([] { ::_exit(sender.expired() ? 1 : 0); });
    sender = DistributedSender::defaultSender();
    std::exit(2);
}

TEST(DistributedSenderLifetimeTest, TheSenderIsThereToTheVeryEnd) {
    EXPECT_EXIT(endTheProcess(), testing::ExitedWithCode(0), "");
}

TEST(DistributedSenderOnABusTest, OtherProcessesHear) {
    const PrivateBus bus;
    ASSERT_TRUE(bus.running());
    const LogCapture capture;
    const std::string programs = ZQ_TEST_PROGRAMS;
    ChildProcess listener({programs + "/DistributedListener", "com.example.listener"});
    ASSERT_EQ(listener.readLine(), "listening");
    for (const char* object : {"com.example.listener", "", "c.d"}) {
        ChildProcess poster(
            {programs + "/PlainPeer", "post", kPost, object, R"({"path":")" + std::string(object) + R"("})"});
        ASSERT_EQ(poster.wait(), 0);
    }
    EXPECT_EQ(listener.readLine(), R"( {"path":""})") << "its own identifier is passed over";
    EXPECT_EQ(listener.readLine(), R"(c.d {"path":"c.d"})");

    const FakeBundle bundle = FakeBundle::named("a.b");
    const auto request = DistributedLaunchNotification::make();
    DistributedSender::defaultSender()->post(request);
    EXPECT_EQ(listener.readLine(), "launch " + *request->requestValue->encodeToJSONString());
}

}  // namespace
}  // namespace zqcore
