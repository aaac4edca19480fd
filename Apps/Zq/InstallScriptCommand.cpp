#include <sys/stat.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
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

/// Tells one file from another that takes its place. Absent if there is none.
std::optional<std::array<std::int64_t, 3>> stampOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return std::array{static_cast<std::int64_t>(status.st_ino), std::int64_t{status.st_ctim.tv_sec},
                      std::int64_t{status.st_ctim.tv_nsec}};
}

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"yes", false}}, {});
    if (!parsed) return kUsage;
    NSOpenPanel::installPresenter(std::make_shared<CommandLineOpenPanel>(parsed->has("yes")));
    // Any target will do: all senders share the one script.
    const auto installer = ScriptSender("").scriptInstaller();
    if (!installer) return complain("the library's bundle with the script is missing", kUnreadable);

    const std::string script = installer->installFilePath().value_or("");
    const auto before = stampOf(script);
    // The panel shows the folder that it asks for, which is the one above as long as there is none.
    std::fprintf(stderr, "%s the script %s\n", before ? "replaces" : "installs", script.c_str());
    std::string status;
    installer->installAppleScript([&](AppleScriptInstaller::Status ended) { status = caseName(ended); });
    constexpr auto kForEver = std::chrono::hours(24 * 365);
    RunLoop::main().runUntil([&] { return !status.empty(); }, kForEver);

    Value::Dictionary result;
    result.set("status", status);
    result.set("script", script);
    if (!printJSON(Value(std::move(result)))) return complain("can't write the result", kUnreadable);
    // An installed script makes a success of everything.
    if (before && stampOf(script) == before)
        complain("nothing was changed: the script that was there stays", kDone);
    return status == "success" ? kDone : kNotDelivered;
}

constexpr Offer kOffers[] = {{"", "--yes"}};

}  // namespace

const Command kInstallScriptCommand = {
    .name = "install-script",
    .summary = "put the user script into zq's script folder, with your consent",
    .help =
        "usage: zq install-script [--yes]\n\n"
        "The carrier \"script\" runs a script of the user's. This tells where it goes and asks for a folder: "
        "y\n"
        "confirms the one that is shown, n or the end of the input cancels. A path (beginning with /, . or\n"
        "~/) stands for that folder, and for another one nothing is installed. An installed script is\n"
        "replaced; after a no it stays, a line says so, and the status is success, since there is one.\n\n"
        "  --yes   confirm without being asked\n",
    .codes = exitCodes(kNotDelivered),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
