#include "Platform/Scripting/Linux/ApplicationLaunch.h"

#include <sys/wait.h>

#include <cerrno>
#include <string>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"
#include "Platform/Scripting/Linux/BusErrors.h"
#include "Platform/Scripting/Linux/Subprocess.h"

namespace zqcore::platform {

std::shared_ptr<ApplicationLaunch> ApplicationLaunch::start(const DesktopEntry& entry,
                                                            std::chrono::microseconds limit) {
    auto launch = std::make_shared<ApplicationLaunch>(Private{});
    launch->deadline_ = std::chrono::steady_clock::now() + limit;
    const auto command = commandLine(entry);
    if (command.empty()) {
        launch->fail(makeScriptingError(kErrorNoSuchProcess, "nothing to run in " + entry.path));
        return launch;
    }
    // How other launchers, too, tell a program which entry it was started for.
    const auto child =
        startDetached(command, {"GIO_LAUNCHED_DESKTOP_FILE=" + entry.path}, entry.workingFolder);
    if (!child) {
        launch->fail(makeScriptingError(kErrorNoSuchProcess, child.error().localizedDescription()));
    } else {
        startWorkerThread("zqcore-launch", [launch, child = *child] { launch->reap(child); });
    }
    return launch;
}

void ApplicationLaunch::reap(pid_t child) {
    siginfo_t end{};
    int outcome = 0;
    do {
        outcome = ::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED);
    } while (outcome != 0 && errno == EINTR);
    // Somebody else may have reaped it (SIGCHLD ignored): then nobody knows.
    if (outcome != 0 || (end.si_code == CLD_EXITED && end.si_status == 0)) return;
    fail(makeScriptingError(kErrorNoSuchProcess, std::string("the application ended with ") +
                                                     (end.si_code == CLD_EXITED ? "status " : "signal ") +
                                                     std::to_string(end.si_status)));
}

bool ApplicationLaunch::pending() {
    const std::lock_guard lock(mutex_);
    return !result_ && std::chrono::steady_clock::now() < deadline_;
}

bool ApplicationLaunch::failed() {
    const std::lock_guard lock(mutex_);
    return result_ && !*result_;
}

void ApplicationLaunch::end(std::expected<void, NSError> result) {
    {
        const std::lock_guard lock(mutex_);
        if (result_) return;
        result_ = std::move(result);
    }
    ended_.notify_all();
}

std::expected<void, NSError> ApplicationLaunch::wait() {
    const DispatchBlockingScope blocking;
    std::unique_lock lock(mutex_);
    if (!ended_.wait_until(lock, deadline_, [this] { return result_.has_value(); }))
        result_ =
            std::unexpected(makeScriptingError(kErrorTimedOut, "the application didn't come to the bus"));
    return *result_;
}

}  // namespace zqcore::platform
