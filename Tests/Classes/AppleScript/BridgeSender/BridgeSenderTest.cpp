#include "Classes/AppleScript/BridgeSender/BridgeSender.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "TestKit/FakeScriptingBus.h"
#include "TestKit/LogCapture.h"
#include "TestKit/PrivateBus.h"
#include "Tests/Classes/AppleScript/StatusCases.h"

namespace zqcore {
namespace {

using testkit::ChildProcess;
using testkit::FakeScriptingBus;
using testkit::LogCapture;
using testkit::NoBus;
using testkit::PrivateBus;
using Status = BridgeSender::Status;
using namespace std::chrono_literals;

constexpr const char* kTarget = "com.example.target";

/// A request whose body can be made unwritable.
class NumberRequest : public ASRequestDefaults<NumberRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        std::optional<double> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(NumberRequest, "number")
    [[nodiscard]] static std::optional<std::string> minVersion() { return lowest; }
    static inline std::optional<std::string> lowest;
};

/// Sends, and gives the status once the completion has come; fails if it comes inside the call, off the main
/// thread, or twice.
template <class R>
Status send(const std::shared_ptr<R>& request, const std::string& target = kTarget) {
    auto statuses = std::make_shared<std::vector<Status>>();
    bool inside = true;
    BridgeSender(target).request(request,
                                 [statuses, &inside, request](Status status, const std::shared_ptr<R>& sent) {
                                     EXPECT_FALSE(inside) << "never inside the call";
                                     EXPECT_TRUE(isMainThread());
                                     EXPECT_EQ(sent, request);
                                     statuses->push_back(status);
                                 });
    inside = false;
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return !statuses->empty(); }, 60s)) << "no completion";
    // A second report of the same call is dropped in a block that has been submitted by now.
    DispatchQueue::global(DispatchQoS::userInitiated)->sync([] {});
    while (RunLoop::main().drain()) {
    }
    EXPECT_EQ(statuses->size(), 1U);
    return statuses->empty() ? Status::fail : statuses->front();
}

std::string description(const std::string& status, const std::string& request, const std::string& response,
                        const std::string& path = "number") {
    return "请求回调 [com.example.target] " + path + "\n[status]: " + status + "\n[request]:\n" + request +
           "\n[response]:\n" + response;
}

TEST(BridgeSenderStatusTest, EveryCaseHasItsNumberAndItsName) {
    expectCases<Status>({
        {Status::success, "success"},
        {Status::fail, "fail"},
        {Status::notInstalled, "notInstalled"},
        {Status::encodeRequestFail, "encodeRequestFail"},
        {Status::notSupportRequest, "notSupportRequest"},
        {Status::appleScriptPermission, "appleScriptPermission"},
        {Status::decodeResponseFail, "decodeResponseFail"},
        {Status::notReachMinimumVersion, "notReachMinimumVersion"},
    });
}

class BridgeSenderTest : public testing::Test {
  protected:
    void SetUp() override {
        NumberRequest::lowest.reset();
        request->requestValue->requestId = "1";
        request->requestValue->client = ASClient::make();
    }
    [[nodiscard]] std::vector<std::string> infoLines() const { return capture.messages(LogCapture::info); }

    LogCapture capture;
    FakeScriptingBus bus;
    std::shared_ptr<NumberRequest> request = NumberRequest::make();
    const std::string json = R"({"requestId":"1","client":{},"path":"number"})";
};

TEST_F(BridgeSenderTest, JudgesEveryAnswer) {
    struct Case {
        const char* answer;
        std::optional<std::string> minVersion;
        Status status;
    };
    const char* tooOld = R"({"server":{"version":"1.9"},"error":{"code":"unsupportedPath"}})";
    for (const auto& [answer, minVersion, status] :
         {Case{R"({})", {}, Status::success},
          {R"({"error":{"code":"internalError"}})", {}, Status::success},
          {tooOld, {}, Status::success},
          {tooOld, "2.0", Status::notReachMinimumVersion},
          {tooOld, "1.9", Status::success},
          {R"({"error":{},"server":{"version":"2.1"}})", "2.0", Status::success},
          {R"({"error":{},"server":{}})", "2.0", Status::success},
          {R"({"error":{}})", "2.0", Status::success},
          {R"({"server":{"version":"1.9"}})", "2.0", Status::success},
          {"", {}, Status::decodeResponseFail},
          {"no JSON", {}, Status::decodeResponseFail},
          {"[]", {}, Status::decodeResponseFail}}) {
        NumberRequest::lowest = minVersion;
        request->responseValue.reset();
        bus.answer = [text = answer](std::string_view) { return ScriptingBus::Answer(text); };
        capture.clear();
        EXPECT_EQ(send(request), status) << answer;
        EXPECT_EQ(request->responseValue == nullptr, status == Status::decodeResponseFail) << answer;
        EXPECT_EQ(infoLines(), std::vector{description(std::string(caseName(status)), json, answer)});
    }
}

TEST_F(BridgeSenderTest, FailedEventsComeFirstAndTheEmptyResultIsDropped) {
    struct Case {
        long code;
        Status status;
    };
    for (const auto& [code, status] : {Case{-1743, Status::appleScriptPermission},
                                       {-1744, Status::fail},
                                       {-1712, Status::fail},
                                       {-609, Status::fail}}) {
        const NSError error(NSOSStatusErrorDomain, code, "on purpose");
        bus.answer = [&](std::string_view) { return std::unexpected(error); };
        capture.clear();
        EXPECT_EQ(send(request), status) << code;
        EXPECT_EQ(capture.messages(LogCapture::error),
                  std::vector{"调用 app 报错：error=" + error.description()});
        // The second report comes from the call's own thread, in its own time.
        EXPECT_TRUE(capture.waitFor("[status]: notSupportRequest"));
        EXPECT_EQ(infoLines(), (std::vector{description(std::string(caseName(status)), json, "(nil)"),
                                            description("notSupportRequest", json, "(nil)")}));
    }
}

TEST_F(BridgeSenderTest, StopsBeforeTheEventWhereItCan) {
    bus.hasCommand = false;
    EXPECT_EQ(send(request), Status::notSupportRequest);
    EXPECT_TRUE(bus.calls().empty()) << "no event is sent";
    request->requestValue->body = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(send(request), Status::encodeRequestFail);
    EXPECT_EQ(send(std::shared_ptr<NumberRequest>()), Status::encodeRequestFail) << "there is no request";
    bus.installed = false;
    EXPECT_EQ(send(request), Status::notInstalled);
    EXPECT_TRUE(bus.calls().empty());
    EXPECT_EQ(infoLines(), (std::vector{description("notSupportRequest", json, "(nil)"),
                                        description("encodeRequestFail", "(nil)", "(nil)"),
                                        description("encodeRequestFail", "(nil)", "(nil)"),
                                        description("notInstalled", "(nil)", "(nil)")}));
}

TEST_F(BridgeSenderTest, ARequestThatCanNotBeWrittenStartsNobody) {
    bus.running = false;
    request->requestValue->body = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(send(request), Status::encodeRequestFail);
    EXPECT_EQ(bus.calls(), std::vector<std::string>());
}

TEST_F(BridgeSenderTest, WaitsOnAQueueOfWorkThatTheUserAskedFor) {
    std::string queue;
    bus.answer = [&](std::string_view) {
        queue = DispatchQueue::currentLabel();
        return ScriptingBus::Answer("{}");
    };
    EXPECT_EQ(send(request), Status::success);
    EXPECT_EQ(queue, "com.apple.root.user-initiated-qos");
}

TEST_F(BridgeSenderTest, CommandWithoutResultIsNotSupported) {
    bus.answer = [](std::string_view) { return ScriptingBus::Answer(); };
    EXPECT_EQ(send(request), Status::notSupportRequest);
    EXPECT_EQ(infoLines().size(), 1U);
}

TEST_F(BridgeSenderTest, TargetThatDoesNotRunIsStartedBeforeTheCall) {
    bus.running = false;
    EXPECT_EQ(send(request), Status::success);
    EXPECT_EQ(bus.calls(), (std::vector<std::string>{"start", "request " + json}));
}

TEST_F(BridgeSenderTest, BlockedRequestsDoNotHoldUpOthers) {
    std::mutex mutex;
    std::condition_variable changed;
    int waiting = 0;
    // More at once than there are processors; each waits for all the others.
    constexpr int kCount = 24;
    bus.answer = [&](std::string_view) {
        const DispatchBlockingScope blocking;
        std::unique_lock lock(mutex);
        ++waiting;
        changed.notify_all();
        changed.wait(lock, [&] { return waiting == kCount; });
        return ScriptingBus::Answer("{}");
    };
    int done = 0;
    for (int i = 0; i < kCount; ++i) {
        BridgeSender(kTarget).request(NumberRequest::make(),
                                      [&](Status status, const auto&) { done += status == Status::success; });
    }
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return done == kCount; }, 60s)) << done;
}

// The same over a real bus, with servers in processes of their own.
class BridgeSenderOnABusTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(bus.running()); }
    static std::vector<std::string> server(const std::string& version = "1.9") {
        return {std::string(ZQ_TEST_PROGRAMS) + "/RequestServer", kTarget, version};
    }
    static std::vector<std::string> plainServer(const std::string& path = "/com/example/target") {
        return {std::string(ZQ_TEST_PROGRAMS) + "/PlainPeer", "serve", kTarget, path};
    }
    /// An info request under another path, which no server knows or a plain one obeys.
    static std::shared_ptr<CommonInfoRequest> infoWithPath(std::string path) {
        auto request = CommonInfoRequest::make();
        request->requestValue->path = std::move(path);
        return request;
    }

    LogCapture capture;
    PrivateBus bus;
};

TEST_F(BridgeSenderOnABusTest, RequestsComeBackFilled) {
    ChildProcess process(server());
    ASSERT_EQ(process.readLine(), "serving");
    const auto info = CommonInfoRequest::make();
    ASSERT_EQ(send(info), Status::success);
    EXPECT_EQ(info->responseValue->requestId, info->requestValue->requestId);
    EXPECT_EQ(info->responseValue->server->pid, process.pid());
    EXPECT_EQ(info->responseValue->server->name, "Request Server");
    EXPECT_FALSE(info->responseValue->error);

    const auto late = CommonHotkeyFetchRequest::make();
    ASSERT_EQ(send(late), Status::success);
    EXPECT_EQ(late->responseValue->requestId, "its own") << "the first answer, from a thread";

    const auto unknown = CommonLaunchRequest::make();
    ASSERT_EQ(send(unknown), Status::success);
    EXPECT_EQ(unknown->responseValue->error->code, ASError::Code::unsupportedPath);
    CommonLaunchRequest::setMinVersion("2.0");
    EXPECT_EQ(send(unknown), Status::notReachMinimumVersion);
    CommonLaunchRequest::setMinVersion(std::nullopt);
}

TEST_F(BridgeSenderOnABusTest, BusStartsTheTarget) {
    bus.addService(kTarget, server()[0] + " " + kTarget + " 1.9");
    const auto info = CommonInfoRequest::make();
    ASSERT_EQ(send(info), Status::success);
    EXPECT_EQ(info->responseValue->server->version, "1.9");
}

TEST_F(BridgeSenderOnABusTest, EveryFailureHasItsStatus) {
    EXPECT_EQ(send(CommonInfoRequest::make()), Status::notInstalled);
    EXPECT_EQ(send(CommonInfoRequest::make(), ""), Status::notInstalled);
    bus.addService("com.example.broken", "/bin/false");
    EXPECT_EQ(send(CommonInfoRequest::make(), "com.example.broken"), Status::fail);
    {
        ChildProcess mute(plainServer(""));
        ASSERT_EQ(mute.readLine(), "serving");
        EXPECT_EQ(send(CommonInfoRequest::make()), Status::notSupportRequest);
    }
    {
        ChildProcess plain(plainServer());
        ASSERT_EQ(plain.readLine(), "serving");
        EXPECT_EQ(send(infoWithPath("error org.freedesktop.DBus.Error.AccessDenied")),
                  Status::appleScriptPermission);
        EXPECT_EQ(send(infoWithPath("error org.freedesktop.DBus.Error.Failed")), Status::fail);
        EXPECT_EQ(send(infoWithPath("answer ")), Status::decodeResponseFail);
        EXPECT_EQ(send(infoWithPath("answer []")), Status::decodeResponseFail);
    }
    ChildProcess process(server());
    ASSERT_EQ(process.readLine(), "serving");
    EXPECT_EQ(send(infoWithPath("die")), Status::fail) << "the target dies in mid-call";
    const NoBus none;
    bus.stop();
    EXPECT_EQ(send(CommonInfoRequest::make()), Status::notInstalled) << "no bus";
}

TEST_F(BridgeSenderOnABusTest, ManyRequestsAtOnce) {
    ChildProcess process(server());
    ASSERT_EQ(process.readLine(), "serving");
    int right = 0;
    int done = 0;
    for (int i = 0; i < 200; ++i) {
        auto info = CommonInfoRequest::make();
        info->requestValue->requestId = std::to_string(i);
        BridgeSender(kTarget).request(info, [&, i](Status status, const auto& sent) {
            ++done;
            right += status == Status::success && sent->responseValue->requestId == std::to_string(i);
        });
    }
    ASSERT_TRUE(RunLoop::main().runUntil([&] { return done == 200; }, 60s));
    EXPECT_EQ(right, 200);
}

}  // namespace
}  // namespace zqcore
