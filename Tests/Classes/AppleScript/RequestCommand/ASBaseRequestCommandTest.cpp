#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"

#include <gtest/gtest.h>

#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "TestKit/LogCapture.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

using testkit::LogCapture;
using testkit::ManualClock;
using namespace std::chrono_literals;

/// What one command answered, and how often.
struct Answers {
    std::mutex mutex;
    std::vector<std::optional<std::string>> all;
};

class EchoRequest : public CommonLaunchRequest {
  public:
    inline static std::function<void(const std::shared_ptr<RequestValue>&, const ASCompletion&)> behaviour;
    static void handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
        behaviour(request, completion);
    }
};

class TestCommand : public ASBaseRequestCommand {
  public:
    using ASBaseRequestCommand::ASBaseRequestCommand;
    bool distributeToHandler(const std::string& path, const std::string& json) override {
        if (path == EchoRequest::path()) {
            handle<EchoRequest>(json);
            return true;
        }
        return ASBaseRequestCommand::distributeToHandler(path, json);
    }
};

class ASBaseRequestCommandTest : public testing::Test {
  protected:
    ManualClock clock;
    LogCapture capture;

    std::shared_ptr<Answers> run(Value parameter) {
        auto answers = std::make_shared<Answers>();
        const auto command = makeObject<TestCommand>(NSScriptCommandDescription{"request", std::move(parameter)});
        command->execute([answers](std::optional<std::string> result) {
            const std::lock_guard lock(answers->mutex);
            answers->all.push_back(std::move(result));
        });
        clock.waitUntilQuiet();
        return answers;
    }
    std::shared_ptr<ASCommonResponseModel> answerTo(Value parameter) {
        const auto answers = run(std::move(parameter));
        EXPECT_EQ(answers->all.size(), 1U);
        if (answers->all.size() != 1 || !answers->all.front()) return nullptr;
        return ASCommonResponseModel::fromJSONString(*answers->all.front());
    }
};

TEST_F(ASBaseRequestCommandTest, InfoTellsWhoAnswers) {
    const auto response = answerTo(R"({"requestId":"7","path":"info"})");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->requestId, "7");
    EXPECT_FALSE(response->error);
    ASSERT_TRUE(response->server);
    EXPECT_EQ(response->server->pid, ASClient::current()->pid);
    EXPECT_TRUE(capture.has(LogCapture::info, R"(RequestCommand 指令参数: {"requestId":"7","path":"info"})"))
        << capture;
}

}  // namespace
}  // namespace zqcore
