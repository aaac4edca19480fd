#include <chrono>
#include <memory>
#include <string>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"
#include "Classes/AppleScript/ScriptSender/ScriptSender.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/CommandLineOpenPanel.h"

namespace zq {

using namespace zqcore;

namespace {

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"yes", false}}, 0, 0);
    if (!parsed) return kUsage;
    NSOpenPanel::installPresenter(std::make_shared<CommandLineOpenPanel>(parsed->has("yes")));
    // Any target will do: all senders share the one script.
    const auto installer = ScriptSender("").scriptInstaller();
    if (!installer) return complain("the library's bundle with the script is missing", kUnreadable);

    std::string status;
    installer->installAppleScript([&](AppleScriptInstaller::Status ended) { status = caseName(ended); });
    constexpr auto kForEver = std::chrono::hours(24 * 365);
    RunLoop::main().runUntil([&] { return !status.empty(); }, kForEver);

    Value::Dictionary result;
    result.set("status", status);
    result.set("script", installer->installFilePath().value_or(""));
    if (!printJSON(Value(std::move(result)))) return complain("can't write the result", kUnreadable);
    return status == "success" ? kDone : kNotDelivered;
}

}  // namespace

const Command kInstallScriptCommand = {
    .name = "install-script",
    .summary = "put the user script into zq's script folder, with your consent",
    .help =
        "usage: zq install-script [--yes]\n\n"
        "The carrier \"script\" runs a script of the user's. This shows the folder it goes into and asks; y\n"
        "confirms, n or the end of the input cancels. An installed script is replaced.\n\n"
        "  --yes   confirm without being asked\n",
    .codes = exitCodes(kNotDelivered),
    .completions = "--yes",
    .hidden = false,
    .run = run,
};

}  // namespace zq
