#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Bus.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Apps/Zq/RequestTypes.h"
#include "Classes/AppleScript/BridgeSender/BridgeSender.h"
#include "Classes/AppleScript/DistributedSender/DistributedSender.h"
#include "Classes/AppleScript/ScriptSender/ScriptSender.h"
#include "Classes/Core/Utility/DispatchTimeLiterals.h"
#include "Platform/Base/Clock.h"
#include "Platform/Dispatch/RunLoop.h"

namespace zq {

using namespace zqcore;

namespace {

enum class Carrier { bridge, script, distributed };

struct Order {
    std::string path;
    std::string to;
    Carrier carrier = Carrier::bridge;
    std::optional<std::string> body;
    double seconds = 130;
    bool brief = false;
};

double millisecondsSince(Clock::Instant start) {
    const auto passed = Clock::current().now() - start;
    return std::chrono::duration<double, std::milli>(passed).count();
}

/// The JSON text of a record as a value, so that it becomes a part of what is printed.
template <class Model>
Value valueOf(const std::shared_ptr<Model>& model) {
    if (!model) return {};
    return model->encodeToJSONObject().value_or(Value());
}

/// The request value of type `R` with the order's path and body; null, with a message, if the body doesn't
/// fit.
template <class R>
std::shared_ptr<typename R::RequestValue> requestValueOf(const Order& order) {
    auto value = R::RequestValue::make();
    if (order.body) {
        if constexpr (requires { value->body; }) {
            using Body = std::remove_cvref_t<decltype(*value->body)>;
            value->body = JSONTool::decodeToModel<Body>(std::string_view(*order.body));
            if (!value->body) {
                complain("the body doesn't fit the request " + order.path + "; zq list tells its fields");
                return nullptr;
            }
        } else {
            complain("the request " + order.path + " has no body");
            return nullptr;
        }
    }
    value->path = order.path;
    return value;
}

template <class R>
int report(const Order& order, std::string_view status, double milliseconds,
           const std::shared_ptr<R>& request) {
    Value::Dictionary result;
    result.set("status", status);
    result.set("milliseconds", static_cast<double>(static_cast<long>(milliseconds * 1000)) / 1000);
    result.set("request", valueOf(request->requestValue));
    if (request->responseValue) result.set("response", valueOf(request->responseValue));
    if (!printJSON(Value(std::move(result)), order.brief))
        return complain("can't write the result", kUnreadable);
    if (status != "success" && status != "posted") {
        const char* why = busIsThere() ? "" : ", there is no session bus";
        return complain("not delivered: " + std::string(status) + why, kNotDelivered);
    }
    return request->responseValue && request->responseValue->error ? kAnsweredWithError : kDone;
}

/// Sends through a sender that answers, and runs the main loop until it has, or until the time is over.
template <class Sender, class R>
int sendAndWait(const Sender& sender, const std::shared_ptr<R>& request, const Order& order) {
    struct Outcome {
        bool done = false;
        std::string status;
        double milliseconds = 0;
    };
    const auto outcome = std::make_shared<Outcome>();
    const auto start = Clock::current().now();
    sender.request(request, [outcome, start](typename Sender::Status status, const std::shared_ptr<R>&) {
        outcome->milliseconds = millisecondsSince(start);
        outcome->status = caseName(status);
        outcome->done = true;
    });
    if (!RunLoop::main().runUntil([&] { return outcome->done; }, durationFromSeconds(order.seconds))) {
        return complain("no answer within " + Value(order.seconds).description() + " seconds",
                        kNoAnswerInTime);
    }
    return report(order, outcome->status, outcome->milliseconds, request);
}

template <class R>
int send(const Order& order) {
    auto value = requestValueOf<R>(order);
    if (!value) return kUsage;
    const auto request = R::make(std::move(value));
    switch (order.carrier) {
        case Carrier::bridge: {
            const BridgeSender sender(order.to);
            return sendAndWait(sender, request, order);
        }
        case Carrier::script: {
            const ScriptSender sender(order.to);
            return sendAndWait(sender, request, order);
        }
        case Carrier::distributed: {
            const auto start = Clock::current().now();
            DistributedSender::defaultSender()->post(request);
            // The sender itself tells nothing.
            return report(order, busIsThere() ? "posted" : "fail", millisecondsSince(start), request);
        }
    }
    return kUsage;
}

int runWith(const Arguments& parsed, std::string path) {
    Order order;
    order.path = std::move(path);
    order.brief = parsed.has("brief");
    const std::string via = parsed.value("via").value_or("bridge");
    if (via == "script") {
        order.carrier = Carrier::script;
    } else if (via == "distributed") {
        order.carrier = Carrier::distributed;
    } else if (via != "bridge") {
        return complain("--via is bridge, script or distributed, not \"" + via + "\"");
    }
    const auto to = parsed.value("to");
    if (!to && order.carrier != Carrier::distributed)
        return complain("--to wants the identifier of an application");
    order.to = to.value_or("");
    const auto seconds = parsed.positiveNumber("timeout", order.seconds);
    if (!seconds) return kUsage;
    order.seconds = *seconds;
    if (parsed.has("body") && parsed.has("body-file"))
        return complain("--body and --body-file exclude each other");
    order.body = parsed.value("body");
    if (const auto file = parsed.value("body-file")) {
        order.body = readContent(*file);
        if (!order.body) return kUnreadable;
    }
    return withRequestType(order.path, order.carrier == Carrier::distributed,
                           [&]<class R>() { return send<R>(order); });
}

int runSend(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(
        arguments, {{"to"}, {"via"}, {"body"}, {"body-file"}, {"timeout"}, {"brief", false}}, 1, 1);
    return parsed ? runWith(*parsed, parsed->words()[0]) : kUsage;
}

int runInfo(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}, {"via"}, {"timeout"}, {"brief", false}}, 0, 0);
    return parsed ? runWith(*parsed, "info") : kUsage;
}

}  // namespace

const Command kSendCommand = {
    .name = "send",
    .summary = "send a request to an application and print its answer",
    .help =
        "usage: zq send PATH --to IDENTIFIER [OPTIONS]\n\n"
        "Sends the request PATH (zq list tells them all) and prints one JSON object: status, milliseconds,\n"
        "request as sent, response as received.\n\n"
        "  --to IDENTIFIER     the application, for example com.tessaradev.OrbelHelper\n"
        "  --via CARRIER       bridge (a direct call, the default), script (through the installed user "
        "script),\n"
        "                      distributed (a broadcast without an answer; needs no --to)\n"
        "  --body JSON         the request's body\n"
        "  --body-file FILE    the same from a file, - for standard input\n"
        "  --timeout SECONDS   how long to wait, 130 by default\n"
        "  --brief             cut long texts in what is printed\n\n"
        "example:\n"
        "  zq send hotkey/fetch --to com.tessaradev.OrbelHelper --body '{\"fetchAll\":true}'\n",
    .codes = exitCodes(kAnsweredWithError, kNotDelivered, kNoAnswerInTime),
    .completions =
        "--to --via --body --body-file --timeout --brief bridge script distributed translate ocr open "
        "hotkey toggle selected/text current/app info launch hotkey/fetch hotkey/handle "
        "com.tessaradev.Orbel com.tessaradev.OrbelHelper",
    .hidden = false,
    .run = runSend,
};

const Command kInfoCommand = {
    .name = "info",
    .summary = "ask an application who it is",
    .help =
        "usage: zq info --to IDENTIFIER [--via CARRIER] [--timeout SECONDS] [--brief]\n\n"
        "The same as zq send info: the response's \"server\" holds name, version, build and process "
        "number.\n",
    .codes = exitCodes(kAnsweredWithError, kNotDelivered, kNoAnswerInTime),
    .completions = "--to --via --timeout --brief com.tessaradev.Orbel com.tessaradev.OrbelHelper",
    .hidden = false,
    .run = runInfo,
};

}  // namespace zq
