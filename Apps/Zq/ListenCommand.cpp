#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Bus.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"
#include "Classes/AppleScript/DistributedSender/DistributedSender.h"
#include "Classes/Core/Utility/Codable/JSONTool.h"
#include "Classes/Core/Utility/DispatchTimeLiterals.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/NSDistributedNotificationCenter.h"
#include "Platform/Scripting/NSScriptSuiteRegistry.h"

namespace zq {

using namespace zqcore;

namespace {

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"count"}, {"timeout"}}, {});
    if (!parsed) return kUsage;
    const auto count = parsed->positiveNumber("count", std::numeric_limits<double>::infinity());
    const auto seconds = parsed->positiveNumber("timeout", std::numeric_limits<double>::infinity());
    if (!count || !seconds) return kUsage;
    if (std::floor(*count) != *count)
        return complain("--count wants a whole number, not \"" + *parsed->value("count") + "\"");
    if (!busIsThere()) return complain("there is no session bus", kNotDelivered);

    // The sender of this process leaves out its own kind, but who listens wants to hear other copies of
    // itself too.
    struct State {
        std::uint64_t heard = 0;
        bool writable = true;
        bool busIsGone = false;
    };
    const auto state = std::make_shared<State>();
    const auto observation = NSDistributedNotificationCenter::defaultCenter().addObserver(
        std::string(DistributedSender::kPostNotification), DispatchQueue::main(),
        [state](const NSDistributedNotification& notification) {
            const auto* request = notification.userInfo ? notification.userInfo->find("request") : nullptr;
            if (!request || !request->asString()) return;
            Value::Dictionary line;
            line.set("from", notification.object);
            line.set("request", JSONTool::decodeToJSONObject(*request->asString()).value_or(*request));
            state->writable = state->writable && printJSON(Value(std::move(line)));
            ++state->heard;
        });
    // It would hear nothing any more, and keep open what it holds of a session that has ended.
    NSScriptSuiteRegistry::whenBusIsGone([state] { state->busIsGone = true; });
    std::fputs("listening\n", stderr);
    const auto enough = [&] { return static_cast<double>(state->heard) >= *count; };
    const auto isOver = [&] { return enough() || !state->writable || state->busIsGone; };
    RunLoop::main().runUntil(isOver, durationFromSeconds(*seconds));
    if (!state->writable) return complain("can't write the result", kUnreadable);
    if (state->busIsGone) return complain("the session bus is gone", kNotDelivered);
    if (parsed->has("count") && !enough())
        return complain("heard " + std::to_string(state->heard) + " of " + *parsed->value("count") +
                            " requests within " + Value(*seconds).description() + " seconds",
                        kNoAnswerInTime);
    return kDone;
}

constexpr Offer kOffers[] = {{"", "--count --timeout"}};

}  // namespace

const Command kListenCommand = {
    .name = "listen",
    .summary = "print the broadcast requests as they are heard",
    .help =
        "usage: zq listen [--count N] [--timeout SECONDS]\n\n"
        "Prints one JSON object a line for every request that any process broadcasts: \"from\", the "
        "sender's\n"
        "identifier, and \"request\". Says \"listening\" on standard error once it hears.\n\n"
        "  --count N           end after N requests, a whole number\n"
        "  --timeout SECONDS   end after that time, which is too early if --count was not reached\n\n"
        "Without a session bus nothing can be heard; it ends when the bus does.\n",
    .codes = exitCodes(kNotDelivered, kNoAnswerInTime),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
