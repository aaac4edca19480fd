#include "Classes/Core/Utility/Codable/EnumCodable.h"

#include <gtest/gtest.h>

#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"
#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

using testkit::LogCapture;
using Body = OrbelHelperSelectedTextRequest::ResponseValue::Body;
using Status = OrbelHelperSelectedTextRequest::ResponseValue::Status;
using OpenBody = OrbelHelperOpenRequest::RequestValue::Body;
using Page = OrbelHelperOpenRequest::RequestValue::Page;

TEST(EnumCodableTest, UnknownValuesBecomeTheDefaultInSilence) {
    LogCapture capture;
    EXPECT_EQ(ASError::fromJSONString(R"({"code":"nonsense","message":"m"})")->code, ASError::Code::unknown);
    EXPECT_EQ(ASError::fromJSONString(R"({"code":"nonsense","message":"m"})")->message, "m");
    EXPECT_EQ(Body::fromJSONString(R"({"status":99})")->status, Status::unknown);
    EXPECT_EQ(Body::fromJSONString(R"({"status":12})")->status, Status::unknown);
    EXPECT_EQ(Body::fromJSONString(R"({"status":-1})")->status, Status::unknown);
    EXPECT_EQ(Body::fromJSONString(R"({"status":4.0})")->status, Status::focusedElementNotContainLocation);
    EXPECT_EQ(OpenBody::fromJSONString(R"({"page":""})")->page, Page::main);
    for (const std::string_view text : {"{}", R"({"page":null})"}) {
        EXPECT_FALSE(OpenBody::fromJSONString(text)->page) << text << " is no default case";
    }
    EXPECT_TRUE(capture.silent()) << capture;
}

TEST(EnumCodableTest, ValuesOfAnotherKindAreToldAndTheRecordGoesOn) {
    const std::string type = "zqcore::ASError::Code";
    for (const std::string_view value : {"5", "true", "[1,{\"a\":[]}]", "{}", "1e400"}) {
        LogCapture capture;
        const auto error = ASError::fromJSONString("{\"code\":" + std::string(value) + ",\"message\":\"m\"}");
        ASSERT_TRUE(error) << value;
        EXPECT_EQ(error->code, ASError::Code::unknown);
        EXPECT_EQ(error->message, "m");
        ASSERT_EQ(capture.lines().size(), 1U) << capture;
        EXPECT_EQ(capture.lines()[0].flag, LogCapture::error);
        EXPECT_TRUE(
            capture.lines()[0].message.starts_with(type + " catch error: code: expected a string, found "))
            << capture;
    }
    for (const std::string_view value : {"\"1\"", "1.5", "9223372036854775808", "1e400"}) {
        LogCapture capture;
        EXPECT_EQ(Body::fromJSONString("{\"status\":" + std::string(value) + "}")->status, Status::unknown);
        EXPECT_EQ(capture.lines().size(), 1U) << capture;
    }
}

TEST(EnumCodableTest, ABrokenTextStillFails) {
    LogCapture capture;
    for (const std::string_view text :
         {R"({"code":nul})", R"({"code":[1,]})", R"({"code":01})", R"({"code":"\x"})", R"({"code":)"}) {
        EXPECT_FALSE(ASError::fromJSONString(text)) << text;
    }
}

TEST(EnumCodableTest, RawValuesAreWritten) {
    ASError error;
    error.code = ASError::Code::unknown;
    EXPECT_EQ(error.encodeToJSONString(), R"({"code":"unknown"})");
    Body body;
    body.status = Status::unknown;
    EXPECT_EQ(body.encodeToJSONString(), R"({"status":0})");
    using Action = OrbelHelperHotkeyRequest::RequestValue::HotkeyAction;
    EXPECT_EQ(caseText(Action::register_), "register") << "a word of the language in the place of a case";
    EXPECT_EQ(caseFromText<Action>("register"), Action::register_);
    EXPECT_FALSE(caseFromText<Action>("register_"));
    EXPECT_EQ(defaultCase<Page>(), Page::main);
    LogCapture capture;
    error.code = static_cast<ASError::Code>(77);
    EXPECT_FALSE(error.encodeToJSONString()) << "no case, no raw value";
}

}  // namespace
}  // namespace zqcore
