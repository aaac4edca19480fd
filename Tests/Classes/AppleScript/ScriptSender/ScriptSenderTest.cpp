#include "Classes/AppleScript/ScriptSender/ScriptSender.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Foundation/NSSearchPath.h"
#include "Platform/Scripting/NSWorkspace.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/EnvironmentVariable.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/LogCapture.h"
#include "TestKit/PrivateBus.h"
#include "TestKit/ScratchFolder.h"
#include "TestKit/ScriptedOpenPanel.h"
#include "Tests/Classes/AppleScript/StatusCases.h"

namespace zqcore {
namespace {

using Status = ScriptSender::Status;
using testkit::EnvironmentVariable;
using testkit::LogCapture;
using testkit::ScratchFolder;

constexpr const char* kTarget = "com.example.Target";

TEST(ScriptSenderStatusTest, EveryCaseHasItsNumberAndItsName) {
    expectCases<Status>({
        {Status::success, "success"},
        {Status::fail, "fail"},
        {Status::notInstalledApp, "notInstalledApp"},
        {Status::notInstalledAppleScript, "notInstalledAppleScript"},
        {Status::initializationFailed, "initializationFailed"},
        {Status::encodeRequestFail, "encodeRequestFail"},
        {Status::appleScriptPermission, "appleScriptPermission"},
        {Status::decodeResponseFail, "decodeResponseFail"},
        {Status::notReachMinimumVersion, "notReachMinimumVersion"},
    });
}

class ScriptSenderTest : public testing::Test {
  protected:
    ScriptSenderTest() {
        NSWorkspace::shared().setBusNameLookupForTesting(
            [](std::string_view name) { return name == kTarget; });
    }
    ~ScriptSenderTest() override { NSWorkspace::shared().setBusNameLookupForTesting(nullptr); }

    void install(const std::string& body) const { scripts_.script("SendRequestChannel.scpt", body); }
    /// A script that answers with a fixed text, whatever it is asked.
    void answerWith(const std::string& text) const {
        scripts_.write("answer", text);
        install("cat >/dev/null; cat '" + scripts_ / "answer" + "'");
    }

    Status send(const std::shared_ptr<CommonInfoRequest>& request) {
        std::vector<Status> statuses;
        sender_.request(request, [&](Status status, const auto& same) {
            EXPECT_TRUE(isMainThread());
            EXPECT_EQ(same, request);
            statuses.push_back(status);
        });
        EXPECT_TRUE(statuses.empty()) << "never inside the call";
        EXPECT_TRUE(RunLoop::main().runUntil([&] { return !statuses.empty(); }, std::chrono::seconds(60)));
        while (RunLoop::main().drain()) {
        }
        EXPECT_EQ(statuses.size(), 1U);
        return statuses.empty() ? Status::fail : statuses.front();
    }
    Status send() { return send(CommonInfoRequest::make()); }
    [[nodiscard]] std::string described(std::string_view status, const std::string& request,
                                        const std::string& response) const {
        return "请求回调 [" + sender_.appId() + "] info\n[status]: " + std::string(status) +
               "\n[request]:\n" + request + "\n[response]:\n" + response;
    }

    ScratchFolder scripts_;
    testkit::FakeSearchPaths home_{"/home/tester",
                                   {{NSSearchPathDirectory::applicationScripts, scripts_.path()}}};
    LogCapture log_;
    ScriptSender sender_{kTarget};
};

TEST_F(ScriptSenderTest, TheApplicationComesBeforeTheScript) {
    sender_ = ScriptSender("com.example.Unknown");
    const auto request = CommonInfoRequest::make();
    EXPECT_EQ(send(request), Status::notInstalledApp);
    EXPECT_TRUE(request->requestValue->requestId) << "it is prepared, whatever becomes of it";
    EXPECT_TRUE(log_.has(LogCapture::info, described("notInstalledApp", "(nil)", "(nil)"))) << log_;
    sender_ = ScriptSender(kTarget);
    EXPECT_EQ(send(), Status::notInstalledAppleScript);
    EXPECT_TRUE(log_.has(LogCapture::info, described("notInstalledAppleScript", "(nil)", "(nil)"))) << log_;
}

TEST_F(ScriptSenderTest, AFolderInPlaceOfTheScriptCanNotBeRun) {
    std::filesystem::create_directory(scripts_ / "SendRequestChannel.scpt");
    EXPECT_EQ(send(), Status::initializationFailed);
    const auto errors = log_.messages(LogCapture::error);
    ASSERT_EQ(errors.size(), 1U) << log_;
    EXPECT_TRUE(
        errors[0].starts_with("初始化 apple script 任务失败：Error Domain=NSCocoaErrorDomain Code=260 "))
        << log_;
    EXPECT_TRUE(log_.has(LogCapture::info, described("initializationFailed", "(nil)", "(nil)"))) << log_;
}

TEST_F(ScriptSenderTest, ARequestThatIsNoTextIsNotSent) {
    install("echo >'" + scripts_ / "ran" + "'");
    const auto request = CommonInfoRequest::make();
    request->requestValue->requestId = "\xFF";
    EXPECT_EQ(send(request), Status::encodeRequestFail);
    EXPECT_EQ(send(nullptr), Status::encodeRequestFail);
    EXPECT_FALSE(std::filesystem::exists(scripts_ / "ran"));
}

TEST_F(ScriptSenderTest, ErrorsOfTheScriptBecomeStatuses) {
    const struct {
        const char* body;
        Status status;
        const char* error;
    } cases[] = {
        {"echo 'error -1743: no' >&2; exit 1", Status::appleScriptPermission,
         "Error Domain=NSOSStatusErrorDomain Code=-1743 \"no\""},
        {"echo 'error -600: gone' >&2; exit 1", Status::fail,
         "Error Domain=NSOSStatusErrorDomain Code=-600 \"gone\""},
        {"exit 1", Status::fail,
         "Error Domain=NSOSStatusErrorDomain Code=-2700 \"The script ended with status 1.\""},
    };
    for (const auto& [body, status, error] : cases) {
        install(body);
        EXPECT_EQ(send(), status) << body;
        EXPECT_TRUE(log_.has(LogCapture::info, std::string("调用 AppleScript 报错：") + error)) << log_;
    }
    // What can't be started at all is the script's failure too.
    scripts_.write("SendRequestChannel.scpt", "no program", 0600);
    EXPECT_EQ(send(), Status::fail);
}

TEST_F(ScriptSenderTest, AnAnswerWithoutTextIsAFailure) {
    for (const auto* body : {"", "echo", "printf '\\377'"}) {
        install(body);
        EXPECT_EQ(send(), Status::fail) << body;
    }
    answerWith("no JSON");
    EXPECT_EQ(send(), Status::decodeResponseFail);
}

TEST_F(ScriptSenderTest, TheVersionIsJudgedOnlyForErrors) {
    const struct {
        const char* answer;
        std::optional<std::string> minVersion;
        Status status;
    } cases[] = {
        {R"({"error":{"code":"unsupportedPath"}})", std::nullopt, Status::success},
        {R"({"error":{},"server":{"version":"1.9"}})", std::nullopt, Status::success},
        {R"({"error":{},"server":{"version":"1.9"}})", "2.0", Status::notReachMinimumVersion},
        {R"({"error":{},"server":{"version":"2.0"}})", "2.0", Status::success},
        {R"({"error":{},"server":{"version":"2.1"}})", "2.0", Status::success},
        {R"({"error":{},"server":{}})", "2.0", Status::success},
        {R"({"error":{}})", "2.0", Status::success},
        {R"({"server":{"version":"1.9"}})", "2.0", Status::success},
        {R"({"error":null,"server":{"version":"1.9"}})", "2.0", Status::success},
        {R"({"error":3,"server":{"version":"1.9"}})", "2.0", Status::decodeResponseFail},
    };
    for (const auto& [answer, minVersion, status] : cases) {
        CommonInfoRequest::setMinVersion(minVersion);
        answerWith(answer);
        EXPECT_EQ(send(), status) << answer;
    }
    CommonInfoRequest::setMinVersion(std::nullopt);
}

TEST_F(ScriptSenderTest, TheScriptGetsTheRequestAndTheCallerTheResponse) {
    install("printf '%s %s %s' \"$#\" \"$1\" \"$2\" >'" + scripts_ / "call" +
            "'\nif [ \"$3\" = - ]; then json=$(cat); else json=$3; fi\n"
            "printf %s \"$json\" >'" +
            scripts_ / "json" + "'\nprintf '{\"requestId\":\"R1\"}'");
    const auto request = CommonInfoRequest::make();
    EXPECT_EQ(send(request), Status::success);
    ASSERT_TRUE(request->responseValue);
    EXPECT_EQ(request->responseValue->requestId, "R1");
    EXPECT_EQ(testkit::contentOf(scripts_ / "call"), std::string("3 send ") + kTarget);
    const auto json = testkit::contentOf(scripts_ / "json");
    EXPECT_EQ(json, request->requestValue->encodeToJSONString()) << "as it was prepared";
    EXPECT_TRUE(request->requestValue->requestId);
    EXPECT_EQ(log_.messages(),
              (std::vector<std::string>{described("success", json, "{\"requestId\":\"R1\"}")}));
}

TEST_F(ScriptSenderTest, OneSenderCarriesManyRequestsAndNeedsNotToOutliveThem) {
    install("cat >/dev/null; printf '{}'");
    int done = 0;
    auto sender = std::make_unique<ScriptSender>(kTarget);
    for (int i = 0; i < 8; ++i) {
        sender->request(CommonInfoRequest::make(), [&](Status status, const auto&) {
            EXPECT_EQ(status, Status::success);
            ++done;
        });
    }
    sender.reset();
    EXPECT_TRUE(RunLoop::main().runUntil([&] { return done == 8; }, std::chrono::seconds(60)));
}

TEST_F(ScriptSenderTest, AnEmptyCompletionIsNone) {
    sender_ = ScriptSender("com.example.Unknown");
    const std::function<void(Status, const std::shared_ptr<CommonInfoRequest>&)> empty;
    sender_.request(CommonInfoRequest::make(), empty);
    while (RunLoop::main().drain()) {
    }
    EXPECT_TRUE(log_.has(LogCapture::info, described("notInstalledApp", "(nil)", "(nil)"))) << log_;
}

/// The whole road: the library's own script, installed by its installer, a bus, and a second process.
class ScriptRoadTest : public ScriptSenderTest {
  protected:
    ScriptRoadTest() {
        NSWorkspace::shared().setBusNameLookupForTesting(nullptr);
        testkit::ScriptedOpenPanel panel;
        panel.confirmFolderShown();
        auto installed = AppleScriptInstaller::Status::copyFail;
        sender_.scriptInstaller()->installAppleScript([&](auto status) { installed = status; });
        while (RunLoop::main().drain()) {
        }
        EXPECT_EQ(installed, AppleScriptInstaller::Status::success);
    }
    void expectEcho(const std::shared_ptr<CommonInfoRequest>& request) {
        // The server gives the text back, so the response is the request.
        EXPECT_EQ(send(request), Status::success) << log_;
        ASSERT_TRUE(request->responseValue);
        EXPECT_EQ(request->responseValue->requestId, request->requestValue->requestId);
    }

    /// What the script itself prints.
    std::string answerOfScript(const std::string& text) const {
        const std::string output = bus_.directory() / "answer";
        const EnvironmentVariable given("ZQ_TEST_TEXT", text);
        const std::string command =
            std::string("exec " ZQ_TEST_SOURCE_DIR "/Assets/SendRequestChannel.scpt send ") + kTarget +
            " \"$ZQ_TEST_TEXT\" >" + output;
        EXPECT_EQ(std::system(command.c_str()), 0);
        return testkit::contentOf(output);
    }

    const EnvironmentVariable relay_{"ZQ_RELAY", ZQ_TEST_PROGRAMS "/RequestRelay"};
    testkit::PrivateBus bus_;
};

const std::string kServer = ZQ_TEST_PROGRAMS "/TextServer";

TEST_F(ScriptRoadTest, RequestsOfEverySizeComeBack) {
    testkit::ChildProcess server({kServer, kTarget});
    ASSERT_EQ(server.readLine(), "serving");
    expectEcho(CommonInfoRequest::make());
    const auto large = CommonInfoRequest::make();
    large->requestValue->requestId = std::string(4 << 20, 'x');
    expectEcho(large);
}

TEST_F(ScriptRoadTest, AStartableTargetIsStarted) {
    bus_.addService(kTarget, kServer + " " + kTarget);
    expectEcho(CommonInfoRequest::make());
}

TEST_F(ScriptRoadTest, ATargetThatCanNotBeStartedIsAFailure) {
    bus_.addService(kTarget, "/bin/false");
    EXPECT_EQ(send(), Status::fail);
    EXPECT_TRUE(log_.contains("Code=-600")) << log_;
}

TEST_F(ScriptRoadTest, BusctlServesWhereTheToolIsMissing) {
    if (::access("/usr/bin/busctl", X_OK) != 0) GTEST_SKIP() << "no busctl";
    relay_.set("/no/such/tool");
    const EnvironmentVariable path("PATH", "/usr/bin:/bin");
    testkit::ChildProcess server({kServer, kTarget});
    ASSERT_EQ(server.readLine(), "serving");
    const auto request = CommonInfoRequest::make();
    request->requestValue->requestId = "\"quoted\" \\back\\slash\\ / \n \u4E2D {\"type\":\"s\"} '$HOME' \x01";
    expectEcho(request);
    request->requestValue->requestId = std::string(60000, 'x');
    expectEcho(request);
    std::string text =
        "--version\n {\"a\": [\\n, \\\\t, \\u0041, \\u0001, \\\", \\c],\t1\n}\r\n\u4E2D\U0001F600\n\n";
    for (char control = 1; control < ' '; ++control) text += {control, '7'};
    text += "\x7F\\\n\n";
    EXPECT_EQ(answerOfScript(text), text);
    EXPECT_EQ(answerOfScript("--version"), "--version");
    request->requestValue->requestId = std::string(70000, 'x');
    EXPECT_EQ(send(request), Status::fail);
    EXPECT_TRUE(log_.contains("Code=-1715")) << "too large";
    server.kill();
    bus_.addService(kTarget, "/bin/false");
    EXPECT_EQ(send(), Status::fail);
}

}  // namespace
}  // namespace zqcore
