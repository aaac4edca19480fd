#include <charconv>
#include <cstdint>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"
#include "Platform/Foundation/NSUserDefaults.h"

namespace zq {

using namespace zqcore;

namespace {

constexpr const char* kLevelKey = "ZQLog_logLevel";
constexpr std::uint32_t kEveryLevel = 31;

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}}, {"level", "[N]"});
    if (!parsed) return kUsage;
    if (parsed->words()[0] != "level") return complain("zq log knows \"level\"; try zq log --help");
    if (!parsed->addresseeIsGood()) return kUsage;
    const auto to = parsed->value("to");
    const auto defaults =
        to ? NSUserDefaults::initWithSuiteName(*to) : NSUserDefaults::standardUserDefaults();
    if (!defaults) return complain("there are no settings of " + to.value_or("zq"), kUnreadable);

    if (parsed->words().size() == 2) {
        const std::string& text = parsed->words()[1];
        std::uint32_t level = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
        if (error != std::errc{} || end != text.data() + text.size() || level > kEveryLevel) {
            return complain("a level is error 1, warning 2, info 4, debug 8, verbose 16, added up: 0 to 31");
        }
        defaults->setInteger(level, kLevelKey);
        if (!defaults->synchronize()) return complain("can't write " + defaults->path(), kUnreadable);
    } else {
        defaults->synchronize();
    }
    Value::Dictionary result;
    const auto stored = defaults->objectForKey(kLevelKey);
    result.set("level", stored && stored->numberAsUInt32() ? Value(*stored->numberAsUInt32()) : Value());
    result.set("settings", defaults->path());
    return finishWith(Value(std::move(result)));
}

constexpr Offer kOffers[] = {{"", "level"}, {"*", "--to"}};

}  // namespace

const Command kLogCommand = {
    .name = "log",
    .summary = "read or set the log level of an application",
    .help =
        "usage: zq log level [N] [--to IDENTIFIER]\n\n"
        "Stores the log level N, a sum of error 1, warning 2, info 4, debug 8 and verbose 16, in the\n"
        "settings of the application, or of zq itself; it holds from the application's next start on, and\n"
        "0 silences its log. Without N it prints what the application will make of what is stored; null\n"
        "means the usual level, 7.\n",
    .codes = exitCodes(),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
