#pragma once

#include <pthread.h>

#include <cerrno>
#include <csignal>
#include <ctime>

namespace zqcore::platform {

/// Stands round a write to a pipe or a socket whose reader may be gone. Such a write fails with EPIPE and
/// raises SIGPIPE on the writing thread, which ends a process that hasn't provided for it; here the signal is
/// blocked, and taken back if it came. A signal that was pending before stays so. Disposition and mask are
/// the application's, so nothing is changed for longer or for other threads. Leaves errno alone.
class PipeSignalHeld final {
  public:
    PipeSignalHeld() noexcept {
        ::pthread_sigmask(SIG_BLOCK, &pipe_, &former_);
        sigset_t pending;
        ::sigemptyset(&pending);
        ::sigpending(&pending);
        wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    }
    ~PipeSignalHeld() {
        const int keptErrno = errno;
        const timespec atOnce{};
        if (!wasPending_) ::sigtimedwait(&pipe_, nullptr, &atOnce);
        ::pthread_sigmask(SIG_SETMASK, &former_, nullptr);
        errno = keptErrno;
    }
    PipeSignalHeld(const PipeSignalHeld&) = delete;
    PipeSignalHeld& operator=(const PipeSignalHeld&) = delete;

  private:
    static sigset_t pipeSignal() noexcept {
        sigset_t set;
        ::sigemptyset(&set);
        ::sigaddset(&set, SIGPIPE);
        return set;
    }

    const sigset_t pipe_ = pipeSignal();
    sigset_t former_{};
    bool wasPending_ = false;
};

}  // namespace zqcore::platform
