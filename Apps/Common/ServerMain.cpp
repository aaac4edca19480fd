#include "Apps/Common/ServerMain.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "Classes/AppleScript/DistributedSender/DistributedSender.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/Core/Utility/ZQInfo.h"
#include "Classes/Crash/ZQCrash.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Dispatch/RunLoop.h"

namespace demo {

using namespace zqcore;

namespace {

template <class RequestValue>
std::string senderOf(const RequestValue& request) {
    return request.client && request.client->identifier ? *request.client->identifier : "somebody";
}

// A broadcast is answered by nothing but a line in the log.

struct ServeDistributedInfo : CommonInfoRequest {
    using CommonInfoRequest::CommonInfoRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
        ZQLogInfo([&] {
            return senderOf(*request) + " asks who is there: " + ZQInfo::appBundleName() + " " +
                   ZQInfo::appVersion();
        });
        completion(ResponseValue::make());
    }
};

struct ServeDistributedLaunch : DistributedLaunchNotification {
    using DistributedLaunchNotification::DistributedLaunchNotification;
    static void handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
        ZQLogInfo([&] { return "launched by " + senderOf(*request); });
        completion(ResponseValue::make());
    }
};

void hearNotifications() {
    DistributedSender::defaultSender()->injectPostHandler(
        [](const std::string& path, const std::string& json) {
            const auto& sender = DistributedSender::defaultSender();
            if (path == CommonInfoRequest::path()) sender->handle<ServeDistributedInfo>(json);
            if (path == DistributedLaunchNotification::path()) sender->handle<ServeDistributedLaunch>(json);
        });
}

constexpr const char* kExitCodes =
    "\nExit codes:\n"
    "  0  ended by a signal, with the process of --end-with, or with the bus that started it\n"
    "  1  the identifier could not be claimed, or the help not be written\n"
    "  2  the command line is wrong\n";

[[noreturn]] void finish(std::string_view text) {
    const bool written =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    std::exit(written ? 0 : 1);
}

}  // namespace

bool parseServerOptions(int argc, char** argv, ServerOptions& options, std::string_view help,
                        std::span<const ServerOption> others) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        if (name == "--help" || name == "-h") finish(std::string(help) + kExitCodes);
        if (name == "--version") finish(ZQInfo::appBundleName() + " " + ZQInfo::appVersion() + "\n");
        if (name == "--allow-crash") {
            options.allowCrash = true;
            continue;
        }
        const auto option = std::ranges::find(others, name, &ServerOption::name);
        if (name != "--without" && name != "--end-with" && option == others.end()) {
            std::fprintf(stderr, "%s: what is \"%s\"? --help tells the options\n", argv[0], argv[i]);
            return false;
        }
        if (++i == argc) {
            std::fprintf(stderr, "%s: %s wants a value\n", argv[0], argv[i - 1]);
            return false;
        }
        const std::string_view value = argv[i];
        if (name == "--without") {
            options.without.emplace_back(value);
        } else if (option != others.end()) {
            option->take(value);
        } else {
            const auto [end, error] = std::from_chars(value.begin(), value.end(), options.endWith);
            if (error == std::errc{} && end == value.end() && options.endWith > 0) continue;
            std::fprintf(stderr, "%s: --end-with wants the number of a process, not \"%s\"\n", argv[0],
                         argv[i]);
            return false;
        }
    }
    return true;
}

int runServer(const ServerOptions& options, NSScriptSuiteRegistry::CommandFactory makeCommand) {
    ZQCrash::install();
    // Before any thread is made, so that all of them inherit the mask and the signals wait for the loop.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);

    const int signals = signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
    const auto watch = RunLoop::main().watch(signals, POLLIN, [](short) { RunLoop::main().stop(); });
    std::unique_ptr<RunLoop::Watch> guardian;
    if (options.endWith > 0) {
        // A process's descriptor becomes readable when it ends; one that can't be opened has ended already.
        const int process = static_cast<int>(syscall(SYS_pidfd_open, options.endWith, 0));
        if (process < 0) return 0;
        guardian = RunLoop::main().watch(process, POLLIN, [](short) { RunLoop::main().stop(); });
    }

    hearNotifications();
    const std::string identifier = ZQInfo::appIdentifier();
    const auto status = NSScriptSuiteRegistry::serve(identifier, std::move(makeCommand));
    if (status != ScriptingServeStatus::serving) {
        ZQLogError([&] { return "can't serve " + identifier + ": " + reason(status); });
        std::fprintf(stderr, "can't serve %s: %s\n", identifier.c_str(), reason(status));
        return 1;
    }
    // A bus starts its services again when they are wanted. What one of them leaves behind would keep the
    // session's pipes open for ever.
    if (const char* starter = std::getenv("DBUS_STARTER_ADDRESS"); starter && *starter) {
        NSScriptSuiteRegistry::whenBusIsGone([] {
            ZQLogInfo([] { return std::string("the bus is gone"); });
            RunLoop::main().stop();
        });
    }
    ZQLogInfo([&] { return "serving " + identifier; });
    RunLoop::main().run();
    ZQLogInfo([&] { return identifier + " ends"; });
    NSScriptSuiteRegistry::stopServing(identifier);
    return 0;
}

}  // namespace demo
