// zq: the command line by which people and scripts talk to the two applications. JSON goes to standard
// output, messages for people to standard error.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"
#include "Classes/Core/Utility/ZQInfo.h"
#include "Platform/Lumberjack/DDOSLogger.h"

namespace zq {

namespace {

constexpr const Command* kCommands[] = {
    &kSendCommand,    &kInfoCommand,     &kListenCommand, &kListCommand,       &kInstallScriptCommand,
    &kLogCommand,     &kDefaultsCommand, &kCrashCommand,  &kCaseCommand,       &kEmojiCommand,
    &kVersionCommand, &kCryptCommand,    &kRelayCommand,  &kCompletionCommand,
};

// By number.
constexpr std::string_view kMeanings[] = {
    "done",
    "the answer holds an error, or what was asked for isn't there",
    "the command line is wrong",
    "not delivered, not understood, not installed or too old (\"status\" tells), or there is no session bus",
    "not enough was answered or heard in time",
    "a file or a text could not be read or written",
};
constexpr unsigned kAllCodes = (1U << std::size(kMeanings)) - 1;

std::string textOf(unsigned codes) {
    std::string text = "\nExit codes:\n";
    for (std::size_t code = 0; code < std::size(kMeanings); ++code) {
        if (codes >> code & 1)
            text.append("  ").append(std::to_string(code)).append("  ").append(kMeanings[code]).append("\n");
    }
    return text;
}

std::string overview() {
    constexpr std::size_t kNameWidth = 17;
    std::string text =
        "zq talks to Orbel and its helper, looks after their settings and crash reports, and lends their "
        "text\n"
        "tools to a shell.\n\n"
        "usage: zq COMMAND [WORDS] [OPTIONS]\n\n";
    for (const Command* command : kCommands) {
        if (command->hidden) continue;
        text.append("  ").append(command->name).append(kNameWidth - command->name.size(), ' ');
        text.append(command->summary).append("\n");
    }
    text +=
        "\nzq COMMAND --help teaches one command, and so does zq help COMMAND; zq --version tells its own.\n"
        "With ZQ_LOG_TO_STDERR set, the lines of the log go to standard error as well where there is no "
        "journal.\n";
    return text + textOf(kAllCodes);
}

/// Prints what `zq NAME --help` teaches.
int teach(const Command& command) {
    return finishWithBytes(std::string(command.help) + textOf(command.codes), false);
}

/// Null, with a message, for a name that no command has.
const Command* commandNamed(const std::string& name) {
    const auto* const found =
        std::ranges::find(kCommands, std::string_view(name), [](auto* command) { return command->name; });
    if (found != std::end(kCommands)) return *found;
    complain("there is no command \"" + name + "\"; zq --help lists them");
    return nullptr;
}

bool isHelp(const std::string& word) { return word == "--help" || word == "-h"; }

}  // namespace

std::vector<const Command*> allCommands() { return {std::begin(kCommands), std::end(kCommands)}; }

int complain(std::string_view message, ExitCode code) {
    std::fprintf(stderr, "zq: %.*s\n", static_cast<int>(message.size()), message.data());
    return code;
}

}  // namespace zq

int main(int argc, char** argv) {
    zq::keepStandardNumbers();
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (words.empty()) {
        std::fputs(zq::overview().c_str(), stderr);
        return zq::kUsage;
    }
    const bool asksHelp = words[0] == "help";
    if (zq::isHelp(words[0]) || (asksHelp && words.size() == 1))
        return zq::finishWithBytes(zq::overview(), false);
    if (words[0] == "--version") return zq::finishWithBytes("zq " + zqcore::ZQInfo::appVersion(), true);
    // Standard error is for people here; the log has its file, and the journal where there is one.
    if (!std::getenv("ZQ_LOG_TO_STDERR")) zqcore::DDOSLogger::sharedInstance()->setFallback(-1);
    const zq::Command* const command = zq::commandNamed(words[asksHelp ? 1 : 0]);
    if (!command) return zq::kUsage;
    if (asksHelp) return zq::teach(*command);
    zq::claimStandardOutput();
    // Further on it may be a text or an option's value, which the command alone can tell.
    const bool isFirst = words.size() > 1 && zq::isHelp(words[1]);
    const int code = isFirst ? zq::kDone : command->run(std::span(words).subspan(1));
    return isFirst || zq::Arguments::helpIsWanted() ? zq::teach(*command) : code;
}
