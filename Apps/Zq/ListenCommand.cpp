#include <cstdio>
#include <limits>
#include <memory>

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

namespace zq {

using namespace zqcore;

namespace {

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"count"}, {"timeout"}}, 0, 0);
    if (!parsed) return kUsage;
    const auto count = parsed->positiveNumber("count", std::numeric_limits<double>::infinity());
    const auto seconds = parsed->positiveNumber("timeout", std::numeric_limits<double>::infinity());
    if (!count || !seconds) return kUsage;
    if (!busIsThere()) return complain("there is no session bus", kNotDelivered);

    // The sender of this process leaves out its own kind, but who listens wants to hear other copies of
    // itself too.
    const auto heard = std::make_shared<double>(0);
    const auto observation = NSDistributedNotificationCenter::defaultCenter().addObserver(
        std::string(DistributedSender::kPostNotification), DispatchQueue::main(),
        [heard](const NSDistributedNotification& notification) {
            const auto* request = notification.userInfo ? notification.userInfo->find("request") : nullptr;
            if (!request || !request->asString()) return;
            Value::Dictionary line;
            line.set("from", notification.object);
            line.set("request", JSONTool::decodeToJSONObject(*request->asString()).value_or(*request));
            printJSON(Value(std::move(line)));
            ++*heard;
        });
    std::fputs("listening\n", stderr);
    const bool enough =
        RunLoop::main().runUntil([&] { return *heard >= *count; }, durationFromSeconds(*seconds));
    return enough || !parsed->has("count") ? kDone
                                           : complain("too few notifications in time", kNoAnswerInTime);
}

}  // namespace

const Command kListenCommand = {
    .name = "listen",
    .summary = "print the broadcast requests as they are heard",
    .help =
        "usage: zq listen [--count N] [--timeout SECONDS]\n\n"
        "Prints one JSON object a line for every request that any process broadcasts: \"from\", the "
        "sender's\n"
        "identifier, and \"request\". Says \"listening\" on standard error once it hears.\n\n"
        "  --count N           end after N requests\n"
        "  --timeout SECONDS   end after that time; exit code 4 if --count was not reached\n\n"
        "Exit code 3: there is no session bus to hear anything on.\n",
    .completions = "--count --timeout",
    .hidden = false,
    .run = run,
};

}  // namespace zq
