#pragma once

#include <memory>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore {

/// Keeps the process alive on request: the system is told not to end it, a window that nobody sees stands on
/// the screen, and a timer ticks once a minute. There is one keep-alive in a process.
/// Threads: the operations from any; `window` on the main thread. Lifetime: from `fire` to `stop`.
/// Failure: none; each operation does nothing in the state that it leads to.
class ZQ_EXPORT KeepAliveHelper final {
  public:
    KeepAliveHelper() = delete;

    /// Logs "启用保活", activates the application, and starts. The system's leave to end the process is taken
    /// back for good: `stop` does not give it again.
    static void fire();
    /// Logs "停止保活" and ends: the timer goes and the window closes.
    static void stop();
    /// Ends the ticking alone; the window stays.
    static void endTimer();

    /// The invisible window; null while the keep-alive does not run.
    [[nodiscard]] static std::shared_ptr<NSWindow> window();
    /// Where the ticks come: serial, "com.tessaradev.ZQCore.KeepAliveHelper".
    [[nodiscard]] static const std::shared_ptr<DispatchQueue>& queue();
    /// How often it ticked, from 0 to 99 and round again. Read it on `queue`.
    [[nodiscard]] static int tickCountForTesting();

  private:
    static void startTimer();
};

}  // namespace zqcore
