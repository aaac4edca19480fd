#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"
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
        const auto command =
            makeObject<TestCommand>(NSScriptCommandDescription{"request", std::move(parameter)});
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

struct Failure {
    Value parameter;
    ASError::Code code;
    std::optional<std::string> requestId;
};

TEST_F(ASBaseRequestCommandTest, EveryImmediateFailureHasItsAnswer) {
    using Code = ASError::Code;
    const Failure failures[] = {
        {Value(), Code::invalidParameter, {}},
        {Value(7), Code::invalidParameter, {}},
        {Value(""), Code::invalidParameter, {}},
        {Value("no json"), Code::invalidParameter, {}},
        {Value("[]"), Code::invalidParameter, {}},
        {Value("\"info\""), Code::invalidParameter, {}},
        {Value(R"({"requestId":"7","path":"info"} x)"), Code::invalidParameter, {}},
        {Value(R"({"requestId":"7","path":"info","body":[1,]})"), Code::invalidParameter, {}},
        {Value("{\"requestId\":\"7\",\"path\":\"info\",\"body\":\"\xFF\"}"), Code::invalidParameter, {}},
        {Value("{}"), Code::pathNotIncluded, {}},
        {Value(R"({"requestId":"7"})"), Code::pathNotIncluded, "7"},
        {Value(R"({"requestId":"7","path":null,"path":"info"})"), Code::pathNotIncluded, "7"},
        {Value(R"({"path":7,"requestId":"7"})"), Code::pathNotIncluded, "7"},
        {Value(R"({"requestId":7,"path":"nowhere"})"), Code::unsupportedPath, {}},
        {Value(R"({"requestId":"7","path":"nowhere"})"), Code::unsupportedPath, "7"},
        {Value(R"({"requestId":"7","requestId":"8","path":""})"), Code::unsupportedPath, "7"},
        {Value(R"({"requestId":"7","path":"info","client":{"pid":"x"}})"), Code::invalidParameter, {}},
    };
    for (const auto& [parameter, code, requestId] : failures) {
        const auto response = answerTo(parameter);
        ASSERT_TRUE(response) << parameter.description();
        ASSERT_TRUE(response->error) << parameter.description();
        EXPECT_EQ(response->error->code, code) << parameter.description();
        EXPECT_EQ(response->error->message, message(code));
        EXPECT_EQ(response->requestId, requestId) << parameter.description();
        EXPECT_TRUE(response->server);
    }
    EXPECT_TRUE(capture.has(LogCapture::info, "RequestCommand 指令参数: (null)")) << capture;
}

TEST_F(ASBaseRequestCommandTest, TheLogTellsWhyATextWasNotTaken) {
    run(Value("[1,]"));
    ASSERT_EQ(capture.messages(LogCapture::error).size(), 1U) << capture;
    EXPECT_TRUE(capture.contains("decode json objct 失败：data=4 bytes; error="));
    capture.clear();
    run(Value("[]"));
    EXPECT_TRUE(capture.messages(LogCapture::error).empty()) << "good JSON, only no object";
}

constexpr const char* kLaunch = R"({"requestId":"7","path":"launch"})";

TEST_F(ASBaseRequestCommandTest, TheFirstOfAnswerAndTimeOutWins) {
    std::optional<ASCompletion> kept;
    EchoRequest::behaviour = [&](const auto&, const ASCompletion& completion) { kept = completion; };
    const auto answers = run(kLaunch);
    ASSERT_TRUE(kept);
    clock.advance(59'999ms);
    EXPECT_TRUE(answers->all.empty());
    clock.advance(1ms);
    ASSERT_EQ(answers->all.size(), 1U);
    const auto response = ASCommonResponseModel::fromJSONString(*answers->all.front());
    EXPECT_EQ(response->error->code, ASError::Code::responseTimeout);
    EXPECT_EQ(response->error->message, "响应超时");
    EXPECT_FALSE(response->requestId);
    EXPECT_TRUE(response->server);
    clock.advance(1s);
    (*kept)(ASCommonResponseModel::make());
    clock.waitUntilQuiet();
    EXPECT_EQ(answers->all.size(), 1U) << "an answer after 61 seconds has no effect";
}

TEST_F(ASBaseRequestCommandTest, OneAnswerForManyCompletions) {
    EchoRequest::behaviour = [](const auto&, const ASCompletion& completion) {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([completion] { completion(ASCommonResponseModel::make()); });
        }
        for (auto& thread : threads) thread.join();
    };
    const auto answers = run(kLaunch);
    clock.advance(61s);
    ASSERT_EQ(answers->all.size(), 1U);
    const auto response = ASCommonResponseModel::fromJSONString(*answers->all.front());
    EXPECT_EQ(response->requestId, "7") << "copied from the request";
    EXPECT_TRUE(response->server) << "filled in";
    EXPECT_FALSE(response->error);
}

TEST_F(ASBaseRequestCommandTest, WhatTheHandlerSetsIsKept) {
    EchoRequest::behaviour = [](const auto& request, const ASCompletion& completion) {
        EXPECT_EQ(request->path, "launch");
        auto response = OrbelHelperToggleRequest::ResponseValue::make();
        response->requestId = "own";
        response->server = ASClient::make();
        response->server->name = "other";
        response->body = OrbelHelperToggleRequest::ResponseValue::Body::make();
        response->body->state = true;
        completion(response);
    };
    const auto answers = run(kLaunch);
    ASSERT_EQ(answers->all.size(), 1U);
    EXPECT_EQ(answers->all.front(), R"({"requestId":"own","server":{"name":"other"},"body":{"state":true}})");
}

TEST_F(ASBaseRequestCommandTest, ASynchronousAnswerWaitsForTheWorkToEnd) {
    std::shared_ptr<Answers> answers = std::make_shared<Answers>();
    std::size_t during = 99;
    EchoRequest::behaviour = [&](const auto&, const ASCompletion& completion) {
        EXPECT_EQ(DispatchQueue::currentLabel(), "com.tessaradev.ASRequestCommand");
        completion(ASCommonResponseModel::make());
        during = answers->all.size();
    };
    const auto command = makeObject<TestCommand>(NSScriptCommandDescription{"request", Value(kLaunch)});
    command->execute(
        [answers](std::optional<std::string> result) { answers->all.push_back(std::move(result)); });
    clock.waitUntilQuiet();
    EXPECT_EQ(during, 0U);
    EXPECT_EQ(answers->all.size(), 1U);
}

class ThrowingCommand : public ASBaseRequestCommand {
  public:
    using ASBaseRequestCommand::ASBaseRequestCommand;
    static inline bool takeFirst = false;

    bool distributeToHandler(const std::string& path, const std::string& json) override {
        if (takeFirst) ASBaseRequestCommand::distributeToHandler(path, json);
        throw std::runtime_error("broken distribution");
    }
};

TEST_F(ASBaseRequestCommandTest, ADistributionThatThrowsIsAnInternalErrorUnlessItHasTakenTheRequest) {
    for (const bool takeFirst : {false, true}) {
        ThrowingCommand::takeFirst = takeFirst;
        std::vector<std::optional<std::string>> answers;
        const auto command = makeObject<ThrowingCommand>(
            NSScriptCommandDescription{"request", Value(R"({"requestId":"7","path":"info"})")});
        command->execute([&](std::optional<std::string> result) { answers.push_back(std::move(result)); });
        clock.waitUntilQuiet();
        ASSERT_EQ(answers.size(), 1U);
        const auto response = ASCommonResponseModel::fromJSONString(answers.front().value_or(""));
        ASSERT_TRUE(response);
        EXPECT_EQ(response->requestId, "7");
        EXPECT_EQ(response->error == nullptr, takeFirst);
        if (!takeFirst) {
            EXPECT_EQ(response->error->code, ASError::Code::internalError);
        }
    }
    EXPECT_EQ(capture.count("RequestCommand distributeToHandler 异常: broken distribution"), 2U) << capture;
}

TEST_F(ASBaseRequestCommandTest, AHandlerThatThrowsOrGivesNothingIsAnInternalError) {
    const std::function<void(const ASCompletion&)> faults[] = {
        [](const ASCompletion&) { throw std::runtime_error("broken handler"); },
        [](const ASCompletion&) { throw 7; },
        [](const ASCompletion& completion) { completion(nullptr); },
    };
    for (const auto& fault : faults) {
        capture.clear();
        EchoRequest::behaviour = [&](const auto&, const ASCompletion& completion) { fault(completion); };
        const auto response = answerTo(kLaunch);
        ASSERT_TRUE(response);
        EXPECT_EQ(response->error->code, ASError::Code::internalError);
        EXPECT_EQ(response->requestId, "7");
        EXPECT_EQ(capture.messages(LogCapture::error).size(), 1U) << capture;
    }
    EXPECT_FALSE(answerTo(R"({"path":"info"})")->error) << "the server lives on";
}

/// Puts an operation of its own in place of a handler's, in a value that ends with the call.
class PatchingCommand : public TestCommand {
  public:
    using TestCommand::TestCommand;
    static inline bool breaks = false;

  protected:
    void handleBy(const Handler& handler, const std::string& json) override {
        Handler patched = handler;
        if (breaks)
            patched.decode = [](std::string_view) -> std::shared_ptr<ASRequestModel> {
                throw std::runtime_error("broken decoding");
            };
        TestCommand::handleBy(patched, json);
        patched = {};
    }
};

TEST_F(ASBaseRequestCommandTest, AnOverrideMayPassAHandlerOfItsOwn) {
    for (const bool breaks : {false, true}) {
        PatchingCommand::breaks = breaks;
        std::optional<std::string> answer;
        const auto command =
            makeObject<PatchingCommand>(NSScriptCommandDescription{"request", Value(R"({"path":"info"})")});
        command->execute([&](std::optional<std::string> result) { answer = std::move(result); });
        clock.waitUntilQuiet();
        const auto response = ASCommonResponseModel::fromJSONString(answer.value_or(""));
        ASSERT_TRUE(response);
        EXPECT_EQ(response->error ? response->error->code : std::nullopt,
                  breaks ? std::optional(ASError::Code::invalidParameter) : std::nullopt);
    }
    EXPECT_TRUE(capture.has(LogCapture::error, "RequestCommand decode 异常: broken decoding")) << capture;
}

struct ThrowingResponse : ASCommonResponseModel {
    std::optional<std::string> encodeToJSONString(const std::source_location&) const override {
        throw std::runtime_error("broken response");
    }
};

TEST_F(ASBaseRequestCommandTest, AResponseThatCanNotBeWrittenIsAnEmptyAnswer) {
    EchoRequest::behaviour = [](const auto&, const ASCompletion& completion) {
        auto response = ASCommonResponseModel::make();
        response->requestId = "\xFF";
        completion(response);
    };
    const auto answers = run(kLaunch);
    ASSERT_EQ(answers->all.size(), 1U);
    EXPECT_FALSE(answers->all.front());
    EchoRequest::behaviour = [](const auto&, const ASCompletion& completion) {
        completion(std::make_shared<ThrowingResponse>());
    };
    const auto unwritten = run(kLaunch);
    ASSERT_EQ(unwritten->all.size(), 1U);
    EXPECT_FALSE(unwritten->all.front());
    EXPECT_TRUE(capture.has(LogCapture::error, "RequestCommand response 异常: broken response")) << capture;
}

TEST_F(ASBaseRequestCommandTest, ATextThatIsNotTheParameterIsKeptForTheHandler) {
    class Forwarding : public ASBaseRequestCommand {
      public:
        using ASBaseRequestCommand::ASBaseRequestCommand;
        bool distributeToHandler(const std::string&, const std::string&) override {
            handle<CommonInfoRequest>(
                std::string(R"({"requestId":"a text of its own, longer than any parameter"})"));
            return true;
        }
    };
    std::optional<std::string> answer;
    makeObject<Forwarding>(NSScriptCommandDescription{"request", Value(R"({"path":"x"})")})
        ->execute([&](std::optional<std::string> result) { answer = std::move(result); });
    clock.waitUntilQuiet();
    ASSERT_TRUE(answer);
    EXPECT_EQ(ASCommonResponseModel::fromJSONString(*answer)->requestId,
              "a text of its own, longer than any parameter");
}

TEST_F(ASBaseRequestCommandTest, ACommandEndsWithItsAnswerNotWithItsTimeOut) {
    EchoRequest::behaviour = [](const auto&, const ASCompletion& completion) {
        completion(ASCommonResponseModel::make());
    };
    std::weak_ptr<TestCommand> watched;
    {
        const auto command = makeObject<TestCommand>(NSScriptCommandDescription{"request", Value(kLaunch)});
        watched = command;
        command->execute([](std::optional<std::string>) {});
    }
    clock.waitUntilQuiet();
    EXPECT_TRUE(watched.expired());
    clock.advance(61s);
}

TEST_F(ASBaseRequestCommandTest, CommandsAreServedOneAtATimeInTheirOrder) {
    std::vector<std::string> order;
    EchoRequest::behaviour = [&](const auto& request, const ASCompletion& completion) {
        order.push_back(*request->requestId);
        completion(ASCommonResponseModel::make());
    };
    std::vector<std::string> expected;
    std::vector<std::shared_ptr<TestCommand>> commands;
    for (int i = 0; i < 50; ++i) {
        expected.push_back(std::to_string(i));
        commands.push_back(makeObject<TestCommand>(NSScriptCommandDescription{
            "request", Value(R"({"path":"launch","requestId":")" + expected.back() + "\"}")}));
    }
    for (const auto& command : commands) command->execute([](std::optional<std::string>) {});
    clock.waitUntilQuiet();
    EXPECT_EQ(order, expected);
    EXPECT_EQ(ASBaseRequestCommand::queue()->qos(), DispatchQoS::userInitiated);
}

}  // namespace
}  // namespace zqcore
