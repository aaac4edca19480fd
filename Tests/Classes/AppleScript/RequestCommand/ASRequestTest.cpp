#include "Classes/AppleScript/RequestCommand/ASRequest.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <set>

#include "Classes/AppleScript/RequestCommand/ASRequestCarrier.h"
#include "Classes/AppleScript/RequestCommand/ASRequestCatalogue.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelOCRRequest.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"
#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

using testkit::LogCapture;

std::vector<std::string> keysOf(const Value& value) {
    std::vector<std::string> keys;
    for (const auto& [key, inner] : *value.asDictionary()) keys.push_back(key);
    return keys;
}

TEST(ASRequestTest, ErrorResponsesHoldServerAndError) {
    const std::pair<ASError::Code, std::string_view> messages[] = {
        {ASError::Code::unknown, "未知错误"},
        {ASError::Code::invalidParameter, "无效参数"},
        {ASError::Code::pathNotIncluded, "参数不包含 path"},
        {ASError::Code::unsupportedPath, "不支持的 path"},
        {ASError::Code::responseTimeout, "响应超时"},
        {ASError::Code::internalError, "内部错误"}};
    for (const auto& [code, text] : messages) {
        const auto object = ASCommonResponseModel::make(code)->encodeToJSONObject();
        ASSERT_TRUE(object);
        EXPECT_EQ(keysOf(*object), (std::vector<std::string>{"server", "error"}));
        const Value& error = *object->asDictionary()->find("error");
        EXPECT_EQ(*error.asDictionary()->find("code"), Value(caseText(code)));
        EXPECT_EQ(*error.asDictionary()->find("message"), Value(text));
    }
    EXPECT_EQ(ASCommonResponseModel::make(ASError::Code::unknown, "")->error->message, "")
        << "empty is given";
}

TEST(ASRequestTest, CurrentClientIsThisProcessAndNeverShared) {
    const auto client = ASClient::current();
    EXPECT_EQ(client->pid, getpid());
    EXPECT_TRUE(client->identifier && client->name && client->version && client->build);
    EXPECT_NE(client, ASClient::current());
}

TEST(ASRequestTest, PreparingFillsWhatIsMissingAndNothingElse) {
    const auto request = OrbelTranslateRequest::make();
    request->clientPrepareRequestValue();
    const std::string identifier = *request->requestValue->requestId;
    ASSERT_EQ(identifier.size(), 36U);
    for (std::size_t i = 0; i < identifier.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        EXPECT_TRUE(dash ? identifier[i] == '-'
                         : std::string_view("0123456789ABCDEF").contains(identifier[i]))
            << identifier;
    }
    EXPECT_EQ(identifier[14], '4') << "version";
    EXPECT_TRUE(std::string_view("89AB").contains(identifier[19])) << "variant";
    EXPECT_EQ(request->requestValue->path, "translate");
    const auto client = request->requestValue->client;
    EXPECT_EQ(client->pid, getpid());

    request->clientPrepareRequestValue();
    EXPECT_EQ(request->requestValue->requestId, identifier);
    EXPECT_EQ(request->requestValue->client, client);

    const auto other = OrbelTranslateRequest::make();
    other->requestValue->path = "elsewhere";
    other->clientPrepareRequestValue();
    EXPECT_EQ(other->requestValue->path, "elsewhere");
    EXPECT_NE(other->requestValue->requestId, identifier);
}

TEST(ASRequestTest, AResponseThatDoesNotDecodeLeavesTheOldOne) {
    const auto request = OrbelHelperToggleRequest::make();
    EXPECT_FALSE(request->responseValue);
    const auto response = request->decodeAndFillResponse(R"({"body":{"state":true,"new":1},"newer":[]})");
    ASSERT_TRUE(response);
    EXPECT_EQ(response, request->responseValue);
    EXPECT_EQ(response->body->state, true);
    LogCapture capture;
    EXPECT_FALSE(request->decodeAndFillResponse(R"({"body":{"state":1}})"));
    EXPECT_EQ(request->responseValue, response);
    ASSERT_EQ(capture.lines().size(), 1U);
    EXPECT_NE(capture.lines()[0].message.find("body.state"), std::string::npos) << capture;
}

TEST(ASRequestTest, DescriptionForTheLog) {
    EXPECT_EQ(OrbelHelperSelectedTextRequest::requestDescription("com.a", "success", "{}", std::nullopt),
              "请求回调 [com.a] selected/text\n[status]: success\n[request]:\n{}\n[response]:\n(nil)");
    EXPECT_EQ(CommonInfoRequest::requestDescription("", "", std::nullopt, std::nullopt),
              "请求回调 [] info\n[status]: \n[request]:\n(nil)\n[response]:\n(nil)");
}

TEST(ASRequestTest, TheCarrierIsTheRequestWithoutItsType) {
    const auto request = OrbelHelperToggleRequest::make();
    const ASRequestCarrier carrier = request;
    EXPECT_EQ(carrier.path(), "toggle");
    EXPECT_EQ(carrier.minVersion(), "0.1.0");
    carrier.prepare();
    EXPECT_EQ(carrier.encode(), request->requestValue->encodeToJSONString());
    auto answer = carrier.decodeAndFill(R"({"server":{"version":"0.2"},"error":{},"body":{"state":false}})");
    EXPECT_TRUE(answer.decoded && answer.hasError);
    EXPECT_EQ(answer.serverVersion, "0.2");
    EXPECT_EQ(request->responseValue->body->state, false);
    LogCapture capture;
    answer = carrier.decodeAndFill("");
    EXPECT_FALSE(answer.decoded || answer.hasError || answer.serverVersion);
    EXPECT_EQ(carrier.description("a", "s", std::nullopt, std::nullopt),
              OrbelHelperToggleRequest::requestDescription("a", "s", std::nullopt, std::nullopt));
}

TEST(ASRequestTest, OnlyTheCommonRequestsHaveASettableVersion) {
    EXPECT_FALSE(CommonInfoRequest::minVersion());
    CommonInfoRequest::setMinVersion("2.0");
    EXPECT_EQ(CommonInfoRequest::minVersion(), "2.0");
    EXPECT_FALSE(CommonLaunchRequest::minVersion()) << "each type has its own";
    CommonInfoRequest::setMinVersion(std::nullopt);
    EXPECT_FALSE(CommonInfoRequest::minVersion());
}

TEST(ASRequestCatalogueTest, PathsVersionsAndAddressees) {
    using Addressee = ASRequestEntry::Addressee;
    struct Row {
        std::string_view type, path;
        std::optional<std::string> version;
        Addressee addressee;
        bool requestBody, responseBody;
    };
    const Row rows[] = {
        {"OrbelTranslateRequest", "translate", "1.5.0", Addressee::application, true, false},
        {"OrbelOCRRequest", "ocr", "1.5.0", Addressee::application, true, false},
        {"OrbelHelperOpenRequest", "open", "0.1.0", Addressee::helper, true, false},
        {"OrbelHelperHotkeyRequest", "hotkey", "0.1.0", Addressee::helper, true, false},
        {"OrbelHelperToggleRequest", "toggle", "0.1.0", Addressee::helper, false, true},
        {"OrbelHelperSelectedTextRequest", "selected/text", "0.1.0", Addressee::helper, true, true},
        {"OrbelHelperCurrentAppRequest", "current/app", "0.1.0", Addressee::helper, true, true},
        {"CommonInfoRequest", "info", std::nullopt, Addressee::either, false, false},
        {"CommonLaunchRequest", "launch", std::nullopt, Addressee::either, false, false},
        {"CommonHotkeyFetchRequest", "hotkey/fetch", std::nullopt, Addressee::either, true, true},
        {"CommonHotkeyHandleRequest", "hotkey/handle", std::nullopt, Addressee::either, true, false},
        {"DistributedLaunchNotification", "launch", std::nullopt, Addressee::either, false, false},
    };
    const auto catalogue = requestCatalogue();
    ASSERT_EQ(catalogue.size(), std::size(rows));
    for (std::size_t i = 0; i < catalogue.size(); ++i) {
        const auto& entry = catalogue[i];
        EXPECT_EQ(entry.typeName, rows[i].type);
        EXPECT_EQ(entry.path, rows[i].path);
        EXPECT_EQ(entry.minVersion(), rows[i].version) << entry.typeName;
        EXPECT_EQ(entry.addressee, rows[i].addressee) << entry.typeName;
        const auto names = [](const JSONRecordInfo& record) {
            std::vector<std::string> all;
            for (const auto& field : record.fields) all.emplace_back(field.name);
            return all;
        };
        std::vector<std::string> request{"requestId", "client", "path"};
        std::vector<std::string> response{"requestId", "server", "error"};
        if (rows[i].requestBody) request.emplace_back("body");
        if (rows[i].responseBody) response.emplace_back("body");
        EXPECT_EQ(names(*entry.request), request) << entry.typeName;
        EXPECT_EQ(names(*entry.response), response) << entry.typeName;
    }
}

TEST(ASRequestCatalogueTest, FieldsOfTheBodiesInOrder) {
    const std::map<std::string_view, std::pair<std::string, std::string>> bodies = {
        {"OrbelTranslateRequest", {"action text imageBase64 windowLocation inputBoxState", ""}},
        {"OrbelOCRRequest", {"action imageBase64 isSilent windowLocation", ""}},
        {"OrbelHelperOpenRequest", {"page", ""}},
        {"OrbelHelperHotkeyRequest",
         {"action hotkeys hotkeys[].identifier hotkeys[].key hotkeys[].modifiers hotkeys[].doubledModifiers",
          ""}},
        {"OrbelHelperToggleRequest", {"", "state"}},
        {"OrbelHelperSelectedTextRequest",
         {"location", "status app app.pid app.identifier app.name app.version app.build text"}},
        {"OrbelHelperCurrentAppRequest",
         {"location", "app app.pid app.identifier app.name app.version app.build"}},
        {"CommonHotkeyFetchRequest",
         {"fetchAll identifiers",
          "hotkeys hotkeys[].identifier hotkeys[].key hotkeys[].modifiers hotkeys[].doubledModifiers"}},
        {"CommonHotkeyHandleRequest",
         {"registerClient registerClient.pid registerClient.identifier registerClient.name "
          "registerClient.version registerClient.build "
          "hotkey hotkey.identifier hotkey.key hotkey.modifiers hotkey.doubledModifiers",
          ""}},
    };
    const auto bodyOf = [](const JSONRecordInfo& record) {
        std::string all;
        forEachField(record, [&](std::string_view name, std::string_view) {
            if (name.starts_with("body.")) all += (all.empty() ? "" : " ") + std::string(name.substr(5));
        });
        return all;
    };
    for (const auto& entry : requestCatalogue()) {
        const auto found = bodies.find(entry.typeName);
        EXPECT_EQ(bodyOf(*entry.request), found == bodies.end() ? "" : found->second.first) << entry.typeName;
        EXPECT_EQ(bodyOf(*entry.response), found == bodies.end() ? "" : found->second.second)
            << entry.typeName;
    }
}

template <EnumCodable E>
std::string casesOf() {
    std::string all;
    for (const auto& one : zqEnumInfo(E{}).cases) all += (all.empty() ? "" : " ") + std::string(one.text);
    return all;
}

TEST(ASRequestCatalogueTest, RawValuesOfTheEnumerations) {
    const std::string locations =
        "unknown mouse center statusIconBottom last topLeft topRight topCenter left right";
    using Translate = OrbelTranslateRequest::RequestValue;
    using OCR = OrbelOCRRequest::RequestValue;
    EXPECT_EQ(casesOf<Translate::TranslateAction>(),
              "unknown selectionTranslate snipTranslate inputTranslate pasteboardTranslate showWindow "
              "translateText translateImage");
    EXPECT_EQ(casesOf<Translate::WindowLocation>(), locations);
    EXPECT_EQ(casesOf<OCR::WindowLocation>(), locations);
    EXPECT_EQ(casesOf<Translate::InputBoxState>(), "unknown last alwaysFold alwaysUnfold");
    EXPECT_EQ(casesOf<OCR::OCRAction>(), "unknown snipOCR fileOCR pasteboardOCR showWindow ocrImage");
    EXPECT_EQ(casesOf<OrbelHelperOpenRequest::RequestValue::Page>(),
              "main preference updaterCheck updaterCheckInBackground");
    EXPECT_EQ(casesOf<OrbelHelperHotkeyRequest::RequestValue::HotkeyAction>(),
              "unknown register unregister unregisterAll");
    EXPECT_EQ(casesOf<ASError::Code>(),
              "unknown invalidParameter pathNotIncluded unsupportedPath responseTimeout internalError");
    using Status = OrbelHelperSelectedTextRequest::ResponseValue::Status;
    EXPECT_EQ(casesOf<Status>(),
              "unknown successByFocusedElement successByLocationElement axNotTrusted "
              "focusedElementNotContainLocation "
              "focusedElementNoText locationElementNoMenuBar locationElementNoCopyItem "
              "locationElementCopyItemDisabled "
              "locationElementCopyFail locationElementNoText fail");
    EXPECT_EQ(static_cast<int>(Status::fail), 11);
}

TEST(ASRequestCatalogueTest, BodiesOnTheWire) {
    const auto translate = OrbelTranslateRequest::make();
    translate->requestValue->body = OrbelTranslateRequest::RequestValue::Body::make();
    translate->requestValue->body->action =
        OrbelTranslateRequest::RequestValue::TranslateAction::translateText;
    translate->requestValue->body->text = "hello";
    translate->clientPrepareRequestValue();
    const auto object = translate->requestValue->encodeToJSONObject();
    EXPECT_EQ(keysOf(*object), (std::vector<std::string>{"requestId", "client", "path", "body"}));
    EXPECT_EQ(keysOf(*object->asDictionary()->find("body")), (std::vector<std::string>{"action", "text"}));

    OrbelHelperCurrentAppRequest::RequestValue::Body current;
    current.location = CGPoint{12.5, 30};
    EXPECT_EQ(current.encodeToJSONString(), R"({"location":[12.5,30]})");
    EXPECT_EQ(OrbelHelperCurrentAppRequest::RequestValue::Body::fromJSONString(R"({"location":[1,2,"x"]})")
                  ->location,
              (CGPoint{1, 2}));

    OrbelHelperHotkeyRequest::RequestValue::Body hotkeys;
    using Hotkey = OrbelHelperHotkeyRequest::RequestValue::Hotkey;
    hotkeys.action = OrbelHelperHotkeyRequest::RequestValue::HotkeyAction::register_;
    hotkeys.hotkeys = {Hotkey::make()};
    hotkeys.hotkeys->front()->modifiers = -9'000'000'000;
    hotkeys.hotkeys->front()->doubledModifiers = true;
    EXPECT_EQ(hotkeys.encodeToJSONString(),
              R"({"action":"register","hotkeys":[{"modifiers":-9000000000,"doubledModifiers":true}]})");
    EXPECT_EQ(hotkeys.deepCopy()->encodeToJSONString(), hotkeys.encodeToJSONString());
}

}  // namespace
}  // namespace zqcore
