#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zq {

/// What the program tells the shell. The numbers are part of its interface; main.cpp has their meanings, and
/// every command's help ends with those that it can give.
enum ExitCode : int {
    kDone = 0,
    kAnsweredWithError = 1,
    kUsage = 2,
    kNotDelivered = 3,
    kNoAnswerInTime = 4,
    kUnreadable = 5,
};

/// A set of exit codes: those that every command can give, and `more`.
template <class... Code>
constexpr unsigned exitCodes(Code... more) {
    return ((1U << kDone | 1U << kUsage | 1U << kUnreadable) | ... | (1U << more));
}

/// What may come next on a command line.
struct Offer {
    /// The first word behind the command's name that is no option; empty before there is one, "*" for any or
    /// none.
    std::string_view after;
    /// Separated by blanks.
    std::string_view words;
};

/// One word of the command line: what it does, how it is taught, and what runs.
struct Command {
    std::string_view name;
    /// One line for the overview.
    std::string_view summary;
    /// The text of `zq NAME --help`: usage, options, an example; the exit codes follow it.
    std::string_view help;
    /// Made by `exitCodes`.
    unsigned codes;
    /// What the shell may offer behind the name; the first that fits counts.
    std::span<const Offer> offers;
    /// Left out of the overview: called by our own scripts.
    bool hidden;
    int (*run)(std::span<const std::string> arguments);
};

/// All commands in the order of the overview.
[[nodiscard]] std::vector<const Command*> allCommands();

// One function a command; each lives in a source of its own.
extern const Command kSendCommand;
extern const Command kInfoCommand;
extern const Command kListenCommand;
extern const Command kListCommand;
extern const Command kInstallScriptCommand;
extern const Command kLogCommand;
extern const Command kDefaultsCommand;
extern const Command kCrashCommand;
extern const Command kCaseCommand;
extern const Command kEmojiCommand;
extern const Command kVersionCommand;
extern const Command kCryptCommand;
extern const Command kRelayCommand;
extern const Command kCompletionCommand;

/// Writes "zq: MESSAGE" to standard error and gives `code`.
int complain(std::string_view message, ExitCode code = kUsage);

}  // namespace zq
