#include <chrono>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/BodyChanges.h"
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

/// Tells in a message what a body was found wrong with.
void complainOfBody(const Order& order, const JSONError& error) {
    complain(error.kind == JSONError::Kind::corrupted
                 ? "the body is no JSON: " + error.description()
                 : "the body doesn't fit the request " + order.path + ": " + error.description() +
                       "; zq list " + order.path + " tells its fields");
}

/// The request value of type `R` with the order's path and body; null, with a message, if the body doesn't
/// fit. What of the body is not sent as it stands there is told in messages too.
template <class R>
std::shared_ptr<typename R::RequestValue> requestValueOf(const Order& order) {
    auto value = R::RequestValue::make();
    if (order.body) {
        if constexpr (requires { value->body; }) {
            auto body = JSONDecoder().decode<decltype(value->body)>(*order.body);
            if (!body) {
                complainOfBody(order, body.error());
                return nullptr;
            }
            value->body = *std::move(body);
            if constexpr (requires { value->body->encodeToJSONObject(); }) {
                const auto given = JSONDecoder().decode<Value>(*order.body);
                const auto sent = value->body->encodeToJSONObject();
                if (given && sent) complainOfChanges(*given, *sent);
            }
        } else {
            complain("the request " + order.path + " has no body");
            return nullptr;
        }
    }
    value->path = order.path;
    return value;
}

template <class Request>
Value::Dictionary resultOf(std::string_view status, double milliseconds, const Request& requestValue) {
    Value::Dictionary result;
    result.set("status", status);
    result.set("milliseconds", static_cast<double>(static_cast<long>(milliseconds * 1000)) / 1000);
    result.set("request", valueOf(requestValue));
    return result;
}

/// What the failure of a request means, by the name of its status, which the carriers share.
std::string failureText(const Order& order, std::string_view status, std::size_t length) {
    const std::size_t mebibytes = order.carrier == Carrier::distributed ? 64 : 100;
    if (status == "notInstalled" || status == "notInstalledApp") return order.to + " isn't installed";
    if (status == "notInstalledAppleScript")
        return "the user script isn't installed; zq install-script does it";
    if (status == "initializationFailed") return "the user script can't be run";
    if (status == "encodeRequestFail") return "the request can't be written as JSON";
    if (status == "notSupportRequest") return order.to + " takes no requests";
    if (status == "appleScriptPermission") return "it isn't allowed to talk to " + order.to;
    if (status == "decodeResponseFail") return order.to + " answered, but not as the request " + order.path;
    if (length > mebibytes << 20)
        return "that is more than the " + std::to_string(mebibytes) + " MiB which this carrier takes";
    const std::string seeLog = "; the log tells more (ZQ_LOG_TO_STDERR, see zq --help)";
    if (order.carrier == Carrier::distributed) return "the broadcast was not sent" + seeLog;
    // Who crashes over a request has got it.
    return "no answer from " + order.to + ", which may have got the request or not" + seeLog;
}

std::string errorText(const ASError& error) {
    const std::string code(error.code ? caseText(*error.code) : "no code");
    return error.message && !error.message->empty() ? code + ", " + *error.message : code;
}

template <class R>
int report(const Order& order, std::string_view status, double milliseconds,
           const std::shared_ptr<R>& request) {
    Value::Dictionary result = resultOf(status, milliseconds, request->requestValue);
    const auto& response = request->responseValue;
    if (response) result.set("response", valueOf(response));
    if (!printJSON(Value(std::move(result)), order.brief))
        return complain("can't write the result", kUnreadable);
    if (status == "notReachMinimumVersion") {
        const auto version = response && response->server ? response->server->version : std::nullopt;
        return complain(order.to + " is too old for the request " + order.path + ": it is " +
                            version.value_or("of an unknown version") + ", not " +
                            R::minVersion().value_or("newer"),
                        kNotDelivered);
    }
    if (status != "success" && status != "posted") {
        if (!busIsThere()) return complain("there is no session bus", kNotDelivered);
        const auto text = request->requestValue->encodeToJSONString();
        return complain(failureText(order, status, text ? text->size() : 0), kNotDelivered);
    }
    if (!response || !response->error) return kDone;
    return complain("the answer is an error: " + errorText(*response->error), kAnsweredWithError);
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
        // The answer may be on its way into the request right now; its request value stays as it is.
        auto result = resultOf("noAnswerInTime", millisecondsSince(start), request->requestValue);
        if (!printJSON(Value(std::move(result)), order.brief))
            return complain("can't write the result", kUnreadable);
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
            const bool posted = DistributedSender::defaultSender()->tryPost(request);
            return report(order, posted ? "posted" : "fail", millisecondsSince(start), request);
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
    if (!parsed.addresseeIsGood()) return kUsage;
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
        arguments, {{"to"}, {"via"}, {"body"}, {"body-file"}, {"timeout"}, {"brief", false}}, {"PATH"});
    return parsed ? runWith(*parsed, parsed->words()[0]) : kUsage;
}

int runInfo(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}, {"via"}, {"timeout"}, {"brief", false}}, {});
    return parsed ? runWith(*parsed, "info") : kUsage;
}

constexpr Offer kSendOffers[] = {
    {"",
     "translate ocr open hotkey toggle selected/text current/app info launch hotkey/fetch hotkey/handle "
     "--to --via --body --body-file --timeout --brief"},
    {"*", "--to --via --body --body-file --timeout --brief"},
};
constexpr Offer kInfoOffers[] = {{"", "--to --via --timeout --brief"}};

}  // namespace

const Command kSendCommand = {
    .name = "send",
    .summary = "send a request to an application and print its answer",
    .help =
        "usage: zq send PATH --to IDENTIFIER [OPTIONS]\n\n"
        "Sends the request PATH (zq list tells them all) and prints one JSON object: status, milliseconds,\n"
        "request as sent, response as received. Without an answer in time the status is noAnswerInTime. "
        "What\n"
        "of the body the request doesn't know is told, and left out or sent as the value that stands for "
        "it.\n\n"
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
    .offers = kSendOffers,
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
    .offers = kInfoOffers,
    .hidden = false,
    .run = runInfo,
};

}  // namespace zq
