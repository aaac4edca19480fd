#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <ranges>
#include <string>
#include <utility>
#include <vector>

#include "Apps/Common/Fault.h"
#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/CrashText.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Classes/Crash/ZQCrash.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/NSPath.h"

extern char** environ;

namespace zq {

using namespace zqcore;

namespace {

using Report = ZQCrash::ExportedReport;

/// The folder of the reports of --to, or of zq itself; absent with a message.
std::optional<std::string> directoryOf(const Arguments& parsed) {
    if (!parsed.addresseeIsGood()) return std::nullopt;
    const auto to = parsed.value("to");
    return to ? ZQCrash::exportDirectory(*to) : ZQCrash::exportDirectory();
}

Value dateOf(const Report& report) { return report.date ? Value(dateText(*report.date)) : Value(); }

int list(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}}, {});
    const auto directory = parsed ? directoryOf(*parsed) : std::nullopt;
    if (!directory) return kUsage;
    Value::Array reports;
    for (const Report& report : ZQCrash::exportedReports(*directory)) {
        reports.emplace_back(
            Value::Dictionary{{"name", lastPathComponent(report.path)}, {"date", dateOf(report)}});
    }
    return finishWith(Value(Value::Dictionary{{"directory", *directory}, {"reports", std::move(reports)}}));
}

Value::Dictionary described(const Report& report, const std::string& text) {
    const CrashText parts = readCrashText(text);
    Value::Dictionary result;
    result.set("path", report.path);
    result.set("date", dateOf(report));
    result.set("exceptionType", parts.exceptionType);
    if (!parts.reason.empty()) result.set("reason", parts.reason);
    result.set("crashedThread", parts.threadName);
    constexpr std::size_t kTold = 10;
    const auto end = parts.frames.begin() + static_cast<long>(std::min(kTold, parts.frames.size()));
    result.set("frames", Value::Array(parts.frames.begin(), end));
    result.set("pendingLog", Value::Array(parts.pendingLog.begin(), parts.pendingLog.end()));
    return result;
}

int show(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}, {"raw", false}, {"brief", false}}, {"[NAME]"});
    const auto directory = parsed ? directoryOf(*parsed) : std::nullopt;
    if (!directory) return kUsage;
    const std::vector<Report> reports = ZQCrash::exportedReports(*directory);
    // The newest one comes last, before those without a date.
    auto found = std::ranges::find_if(reports | std::views::reverse,
                                      [](const Report& report) { return report.date.has_value(); });
    if (!parsed->words().empty()) {
        found = std::ranges::find_if(reports | std::views::reverse, [&](const Report& report) {
            return lastPathComponent(report.path) == parsed->words()[0];
        });
    } else if (found == reports.rend()) {
        found = reports.rbegin();
    }
    if (found == reports.rend()) {
        return complain(
            parsed->words().empty() ? "there is no crash report" : "there is no report " + parsed->words()[0],
            kAnsweredWithError);
    }
    const auto text = readContent(found->path);
    if (!text) return kUnreadable;
    if (parsed->has("raw")) return finishWithBytes(*text, false);
    Value::Dictionary result = described(*found, *text);
    if (!parsed->has("brief")) result.set("text", *text);
    return finishWith(Value(std::move(result)));
}

/// Lets a copy of this program die. How it ended; absent, with a message, if it can't be started.
std::optional<int> letChildDie(const std::string& fault, const std::string& where) {
    const char* words[] = {"zq", "crash", "die", fault.c_str(), "--on", where.c_str(), nullptr};
    pid_t child = 0;
    if (const int error =
            ::posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, const_cast<char**>(words), environ)) {
        complain(std::string("can't start a child: ") + std::strerror(error), kUnreadable);
        return std::nullopt;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Runs in the child.
int die(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"on"}}, {"FAULT"});
    if (!parsed) return kUsage;
    const std::string& fault = parsed->words()[0];
    ZQCrash::install();
    ZQLogInfo([&] { return "a crash is asked for: " + fault; });
    if (parsed->value("on") == "queue") {
        faults::commitOnQueue(fault);
    } else {
        faults::commit(fault);
    }
    return kUsage;
}

int test(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"on"}}, {"[FAULT]"});
    if (!parsed) return kUsage;
    const std::string fault = parsed->words().empty() ? "segv" : parsed->words()[0];
    const std::string where = parsed->value("on").value_or("main");
    if (!faults::isKnown(fault)) return complain("the faults are " + std::string(faults::kNames));
    if (where != "main" && where != "queue") return complain("--on is main or queue");
    const auto ended = letChildDie(fault, where);
    if (!ended) return kUnreadable;
    // The child has written out the reports of earlier runs when it installed; what comes now is its own.
    const std::vector<Report> before = ZQCrash::exportedReports();
    ZQCrash::install();
    Value::Dictionary result{{"fault", fault}, {"on", where}};
    result.set("signal",
               WIFSIGNALED(*ended) ? Value("SIG" + std::string(::sigabbrev_np(WTERMSIG(*ended)))) : Value());
    std::vector<Report> reports = ZQCrash::exportedReports();
    std::erase_if(reports, [&](const Report& report) {
        return std::ranges::find(before, report.path, &Report::path) != before.end();
    });
    const auto text = reports.empty() ? std::nullopt : readContent(reports.back().path);
    result.set("report", text ? Value(described(reports.back(), *text)) : Value());
    const int written = finishWith(Value(std::move(result)));
    if (written != kDone || text) return written;
    return complain("the child left no report", kAnsweredWithError);
}

int run(std::span<const std::string> arguments) {
    const std::string action = arguments.empty() ? "" : arguments[0];
    if (action == "list") return list(arguments.subspan(1));
    if (action == "show") return show(arguments.subspan(1));
    if (action == "test") return test(arguments.subspan(1));
    if (action == "die") return die(arguments.subspan(1));
    return complain("zq crash knows list, show and test; try zq crash --help");
}

constexpr Offer kOffers[] = {{"", "list show test"},
                             {"list", "--to"},
                             {"show", "--to --brief --raw"},
                             {"test", "segv abort bus ill fpe trap throw overflow --on"}};

}  // namespace

const Command kCrashCommand = {
    .name = "crash",
    .summary = "list and show crash reports, or see that capture works",
    .help =
        "usage: zq crash list [--to IDENTIFIER]\n"
        "       zq crash show [NAME] [--to IDENTIFIER] [--brief] [--raw]\n"
        "       zq crash test [FAULT] [--on main|queue]\n\n"
        "An application writes the report of a crash at its next start. list prints those that lie there, "
        "the\n"
        "oldest first; show prints one of them, the newest without NAME: exceptionType, the first frames of "
        "the\n"
        "crashed thread, pendingLog (lines that had not reached the log file) and text, the whole report. "
        "Without "
        "--to\n"
        "they are those of zq itself.\n\n"
        "test lets a child of zq really die and shows the report that comes of it. FAULT is segv (the "
        "default),\n"
        "abort, bus, ill, fpe, trap, throw or overflow.\n\n"
        "  --brief   leave the whole text out\n"
        "  --raw     print the bare text, not JSON\n"
        "  --on      where the child dies: on its main thread (the default) or on that of a queue\n",
    .codes = exitCodes(kAnsweredWithError),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
