#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"

#include <chrono>

#include "Classes/AppleScript/RequestCommand/ASGuardedCall.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/Log/Log/ZQLog.h"

namespace zqcore {

namespace {

constexpr std::chrono::seconds kResponseTimeout{60};

using MakeResponse = std::function<std::shared_ptr<ASResponseModel>()>;

/// One handled command. It lives as long as the last closure that refers to it: the time-out's, at the
/// latest. `resumed` is read and written on the queue alone.
struct Pending {
    std::shared_ptr<ASBaseRequestCommand> command;
    bool resumed = false;

    /// On the queue. The first answer wins; a later one isn't even built.
    void answer(const MakeResponse& makeResponse) {
        if (resumed) return;
        resumed = true;
        const auto response = makeResponse();
        // The time-out keeps this state for a minute, but not the command.
        const auto ending = std::move(command);
        std::optional<std::string> json;
        static_cast<void>(
            guardedCall("RequestCommand response", [&] { json = response->encodeToJSONString(); }));
        ending->resumeExecutionWithResult(std::move(json));
    }
};

std::shared_ptr<ASResponseModel> errorResponse(ASError::Code code) {
    return ASCommonResponseModel::make(code);
}

ASCompletion completionFor(const std::shared_ptr<Pending>& pending, std::optional<std::string> requestId) {
    return ASCompletion(
        [pending, requestId = std::move(requestId)](std::shared_ptr<ASResponseModel> response) {
            if (!response) {
                ZQLogError([] { return "RequestCommand handler 返回空 response"; });
                response = errorResponse(ASError::Code::internalError);
            }
            if (!response->requestId) response->requestId = requestId;
            if (!response->server) response->server = ASClient::current();
            ASBaseRequestCommand::queue()->async(
                [pending, response = std::move(response)] { pending->answer([&] { return response; }); });
        });
}

void serve(const std::shared_ptr<ASBaseRequestCommand>& command, const ASBaseRequestCommand::Handler& handler,
           const std::string& json) {
    auto pending = std::make_shared<Pending>();
    pending->command = command;
    std::shared_ptr<ASRequestModel> request;
    if (!guardedCall("RequestCommand decode", [&] { request = handler.decode(json); }) || !request) {
        pending->answer([] { return errorResponse(ASError::Code::invalidParameter); });
        return;
    }
    ASBaseRequestCommand::queue()->after(DispatchTime::now(kResponseTimeout), [pending] {
        pending->answer([] { return errorResponse(ASError::Code::responseTimeout); });
    });
    const auto completion = completionFor(pending, request->requestId);
    if (!guardedCall("RequestCommand handler", [&] { handler.handle(request, completion); }))
        completion(errorResponse(ASError::Code::internalError));
}

/// What the dispatch reads of a request. A value that is no text counts as missing.
struct Head {
    std::optional<std::string> requestId;
    std::optional<std::string> path;
};

/// Reads the two keys and passes the rest, checked but not kept: a body may hold megabytes. Absent when the
/// text is no JSON, which the JSON tool then tells in the log, or no object.
std::optional<Head> readHead(const std::string& json) {
    Head head;
    JSONReader reader(json);
    bool good = reader.beginObject();
    bool requestIdSeen = false;
    bool pathSeen = false;
    for (std::string_view key; good;) {
        const auto step = reader.nextKey(key);
        if (step == JSONReader::Step::end) break;
        good = step == JSONReader::Step::item;
        if (!good) break;
        // The first of two equal keys counts.
        std::optional<std::string>* field = nullptr;
        if (key == "requestId" && !std::exchange(requestIdSeen, true)) field = &head.requestId;
        if (key == "path" && !std::exchange(pathSeen, true)) field = &head.path;
        good = field && reader.peek() == JSONReader::Kind::string ? reader.readString(field->emplace())
                                                                  : reader.skipValue();
    }
    if (good && reader.finish()) return head;
    static_cast<void>(JSONTool::decodeToJSONObject(json));
    return std::nullopt;
}

std::optional<std::string> immediateError(ASError::Code code, const std::optional<std::string>& requestId) {
    const auto response = ASCommonResponseModel::make(code);
    response->requestId = requestId;
    return response->encodeToJSONString();
}

}  // namespace

const std::shared_ptr<DispatchQueue>& ASBaseRequestCommand::queue() {
    static const auto& queue = *new std::shared_ptr<DispatchQueue>(
        DispatchQueue::serial("com.tessaradev.ASRequestCommand", DispatchQoS::userInitiated));
    return queue;
}

std::optional<std::string> ASBaseRequestCommand::performDefaultImplementation() {
    const Value& parameter = directParameter();
    ZQLogInfo([&] { return "RequestCommand 指令参数: " + parameter.description(); });
    const std::string* json = parameter.asString();
    if (!json) return immediateError(ASError::Code::invalidParameter, std::nullopt);
    const auto head = readHead(*json);
    if (!head) return immediateError(ASError::Code::invalidParameter, std::nullopt);
    if (!head->path) return immediateError(ASError::Code::pathNotIncluded, head->requestId);
    bool taken = false;
    // One that threw after it had called `handle` has suspended the command: then the handler's answer
    // counts.
    if (!guardedCall("RequestCommand distributeToHandler",
                     [&] { taken = distributeToHandler(*head->path, *json); }))
        return immediateError(ASError::Code::internalError, head->requestId);
    if (taken) return std::nullopt;
    return immediateError(ASError::Code::unsupportedPath, head->requestId);
}

bool ASBaseRequestCommand::distributeToHandler(const std::string& path, const std::string& json) {
    if (path != CommonInfoRequest::path()) return false;
    handle<CommonInfoRequest>(json);
    return true;
}

void ASBaseRequestCommand::handleBy(const Handler& handler, const std::string& json) {
    const auto command = std::static_pointer_cast<ASBaseRequestCommand>(weak_from_this().lock());
    ZQAssert(command != nullptr, "RequestCommand 必须由 shared_ptr 持有");
    suspendExecution();
    if (!command) return;
    // The text is the command's own parameter as a rule, and then it lives as long and needs no copy.
    std::shared_ptr<const std::string> text(command, &json);
    if (&json != directParameter().asString()) text = std::make_shared<const std::string>(json);
    queue()->async([command, handler, text = std::move(text)] { serve(command, handler, *text); });
}

}  // namespace zqcore
