#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Platform/Scripting/SBApplication.h"

namespace zq {

using namespace zqcore;

namespace {

/// Keeps the event's failure for after the call.
struct Failure final : SBApplicationDelegate {
    std::optional<NSError> error;
    void eventDidFail(std::string_view, const NSError& failure) override { error = failure; }
};

/// The installed script hands the last line of standard error on to its caller.
int fail(long code, const std::string& text) {
    std::fprintf(stderr, "error %ld: %s\n", code, text.c_str());
    return kNotDelivered;
}

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {}, {"IDENTIFIER"});
    if (!parsed) return kUsage;
    const std::string& identifier = parsed->words()[0];
    const auto application = SBApplication::make(identifier);
    if (!application) return fail(-600, "no application has the identifier " + identifier);
    const auto text = readContent("-");
    if (!text) return kUnreadable;
    const auto failure = std::make_shared<Failure>();
    application->setDelegate(failure);
    const auto answer = application->request(*text);
    if (failure->error) return fail(failure->error->code(), failure->error->localizedDescription());
    if (!answer) return fail(-1708, "the command gave no result");
    return finishWithBytes(*answer, /*line=*/false);
}

}  // namespace

const Command kRelayCommand = {
    .name = "relay",
    .summary = "carry a text from standard input to an application as it is",
    .help =
        "usage: zq relay IDENTIFIER < TEXT\n\n"
        "Hands standard input, unchanged, to the application's command and prints what it answers. The "
        "installed\n"
        "user script calls it. A failure ends with \"error NUMBER: TEXT\" on standard "
        "error.\n",
    .codes = exitCodes(kNotDelivered),
    .offers = {},
    .hidden = true,
    .run = run,
};

}  // namespace zq
