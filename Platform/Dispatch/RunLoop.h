#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchTime.h"

namespace zqcore::platform {

/// The main thread's loop: it drains the main queue and watches file descriptors. A host with a loop of its
/// own (GLib, Qt, epoll) leaves `run` alone, watches `fileDescriptor()` for reading and calls `drain()`.
/// Time: `Clock::current()`; delayed work of the main queue arrives through the descriptor like any other.
/// Threads: `run`, `drain`, `runUntil` on the main one only, the rest any. Not in a child of a bare fork(2).
class ZQ_EXPORT RunLoop final {
  public:
    [[nodiscard]] static RunLoop& main();

    /// Runs until `stop`. Nested calls are allowed; `stop` ends the innermost.
    void run();
    /// Runs until `done()` is true, tested after each round, or until `limit` of the clock has passed; gives
    /// the last answer of `done()`.
    bool runUntil(const std::function<bool()>& done, Clock::Duration limit);
    void stop();
    /// Runs what is ready now on the main queue and what watched descriptors brought; never waits. Gives
    /// whether anything ran.
    bool drain();
    /// Readable whenever `drain` has something to do. The loop's own; negative if there was none to be had.
    [[nodiscard]] int fileDescriptor() const noexcept;

    /// Work that each turn does besides the blocks of the main queue: before them, or after them.
    enum class TurnPart { beforeQueue, afterQueue };
    /// Main thread: sets the work of that part; an empty one takes it out. It must not throw.
    void setTurnHandler(TurnPart part, std::function<void()> handler);
    /// Lets a turn come although no block waits. Any thread.
    void requestTurn();

    /// A watch of one descriptor; its end is the end of the watching.
    class Watch {
      public:
        virtual ~Watch() = default;
    };
    /// Calls `handler` on the main thread whenever `fd` is ready for one of `events` (poll's POLLIN,
    /// POLLOUT), given those that are. The descriptor stays the caller's.
    [[nodiscard]] std::unique_ptr<Watch> watch(int fd, short events, std::function<void(short)> handler);

  private:
    RunLoop();
    ~RunLoop() = delete;
    struct State;
    State* state_;
};

}  // namespace zqcore::platform
