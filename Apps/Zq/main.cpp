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
    "not delivered, not understood or not installed (\"status\" tells), or there is no session bus",
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

void printOverview(std::FILE* out) {
    std::fputs(
        "zq talks to Orbel and its helper, looks after their settings and crash reports, and lends their "
        "text\n"
        "tools to a shell.\n\n"
        "usage: zq COMMAND [WORDS] [OPTIONS]\n\n",
        out);
    for (const Command* command : kCommands) {
        if (command->hidden) continue;
        std::fprintf(out, "  %-16.*s %.*s\n", static_cast<int>(command->name.size()), command->name.data(),
                     static_cast<int>(command->summary.size()), command->summary.data());
    }
    std::fputs(
        "\nzq COMMAND --help teaches one command.\n"
        "With ZQ_LOG_TO_STDERR set, the lines of the log go to standard error as well where there is no "
        "journal.\n",
        out);
    std::fputs(textOf(kAllCodes).c_str(), out);
}

/// Prints what `zq NAME --help` teaches.
int teach(const Command& command) {
    return finishWithBytes(std::string(command.help) + textOf(command.codes), false);
}

}  // namespace

std::vector<const Command*> allCommands() { return {std::begin(kCommands), std::end(kCommands)}; }

int complain(std::string_view message, ExitCode code) {
    std::fprintf(stderr, "zq: %.*s\n", static_cast<int>(message.size()), message.data());
    return code;
}

}  // namespace zq

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (words.empty()) {
        zq::printOverview(stderr);
        return zq::kUsage;
    }
    if (words[0] == "--help" || words[0] == "help") {
        zq::printOverview(stdout);
        return zq::kDone;
    }
    // Standard error is for people here; the log has its file, and the journal where there is one.
    if (!std::getenv("ZQ_LOG_TO_STDERR")) zqcore::DDOSLogger::sharedInstance()->setFallback(-1);
    const auto all = zq::allCommands();
    const auto command =
        std::find_if(all.begin(), all.end(), [&](auto* each) { return each->name == words[0]; });
    if (command == all.end())
        return zq::complain("there is no command \"" + words[0] + "\"; zq --help lists them");
    zq::claimStandardOutput();
    // Further on it may be a text or an option's value, which the command alone can tell.
    const bool isFirst = words.size() > 1 && words[1] == "--help";
    const int code = isFirst ? zq::kDone : (*command)->run(std::span(words).subspan(1));
    return isFirst || zq::Arguments::helpIsWanted() ? zq::teach(**command) : code;
}
