#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <expected>
#include <functional>
#include <limits>
#include <mutex>
#include <vector>

#include "Platform/Base/NSError.h"
#include "Platform/Dispatch/Linux/MainLoopGuest.h"
#include "Platform/Scripting/Linux/SdBusHandles.h"

namespace zqcore::platform {

/// How long a call waits for its answer. The other side answers after 60 seconds at the latest, so that
/// answer always comes first. It is the bus's own monotonic time.
inline constexpr std::chrono::microseconds kCallLimit = std::chrono::seconds(120);

/// The limit in force: `kCallLimit`, unless a test has put another in its place, for the bus's time can't be
/// stepped. Any thread.
[[nodiscard]] std::chrono::microseconds callLimit() noexcept;
void setCallLimitForTesting(std::chrono::microseconds limit) noexcept;

/// The process's one connection to the session bus. sd-bus isn't thread-safe, nor are the counters of its
/// messages, so one lock lies over all of it; foreign code never runs under that lock.
/// Roads: a caller writes its message itself. One that waits for its answer reads the socket itself
/// meanwhile, if nobody else does, so that an answer costs no hop through another thread. Otherwise the main
/// thread reads it while it sleeps in its loop, for most of what comes is meant for it, and else a thread of
/// the connection's own. An idle connection causes no wake-up. Threads: every operation from any, except from
/// inside an sd-bus callback, which holds the lock already. Lifetime: it connects at first use, and again at
/// the next use after the bus went; it is never destroyed while its thread lives, that is, never. Failure:
/// the bus's error as a scripting error, at once where there is no bus.
class BusConnection final : private MainLoopGuest {
  public:
    /// Who uses the connection: told of its beginnings and ends.
    class Owner {
      public:
        virtual ~Owner() = default;
        /// A new bus: export, subscribe, claim, all without waiting. It may still refuse this process. Under
        /// the lock.
        virtual void opened(sd_bus* bus) = 0;
        /// The bus has taken this process in. Under the lock.
        virtual void welcomed() = 0;
        /// The bus is going: drop every handle that belongs to it. Under the lock.
        virtual void closing() = 0;
        /// The bus was lost. Not under the lock.
        virtual void lost() = 0;
    };

    using Work = std::move_only_function<void()>;
    using Build = std::function<int(sd_bus*, sd_bus_message**)>;
    using Read = std::function<int(sd_bus_message*)>;

    using Outcome = std::expected<void, NSError>;
    /// When a call gives up, by the bus's own monotonic time.
    using Deadline = std::chrono::steady_clock::time_point;

    explicit BusConnection(Owner& owner);
    ~BusConnection() = delete;

    /// The lock, and a bus under it. Its end sends whoever watches the socket to work if that is needed.
    class Access final {
      public:
        enum class Opening { ifNeeded, never };
        explicit Access(BusConnection& connection, Opening opening = Opening::ifNeeded);
        ~Access();
        Access(const Access&) = delete;
        Access& operator=(const Access&) = delete;

        /// Null pointer if there is none.
        [[nodiscard]] sd_bus* bus() const noexcept { return connection_.bus_.get(); }
        /// Opens one if there is none. Zero, or the negative errno with which that failed.
        int open();
        /// The same of the opening at the beginning.
        [[nodiscard]] int failure() const noexcept { return failure_; }
        /// Takes in what has arrived, so that what is known of other processes is as fresh as can be.
        void takeInArrived();

      private:
        friend class BusConnection;
        BusConnection& connection_;
        const Opening opening_;
        std::unique_lock<std::mutex> lock_;
        int failure_ = 0;
    };

    /// Sends what `build` makes and waits for the answer, which `read` takes apart (under the lock, perhaps
    /// on another thread, so it only copies).
    [[nodiscard]] Outcome call(const Build& build, const Read& read, Deadline deadline = nextDeadline());
    /// The limit of calls from now on.
    [[nodiscard]] static Deadline nextDeadline() { return std::chrono::steady_clock::now() + callLimit(); }

    enum class Weight { light, heavy };
    /// Puts work behind the lock: it runs soon, in order, one piece at a time, without the lock; heavy work,
    /// and what stands behind it, never on the main thread. Only under the lock.
    void defer(Work work, Weight weight = Weight::light);

  private:
    using Lock = std::unique_lock<std::mutex>;

    struct Pending {
        BusConnection& connection;
        const Read& read;
        Deadline deadline;
        bool done = false;
        Outcome result;
        std::condition_variable changed{};
    };
    /// What a sleeping reader waits for.
    struct Sleep {
        bool asleep = false;
        std::uint64_t until = 0;
        short events = 0;
    };

    [[nodiscard]] int ensureOpen();
    void startThread();
    void pump();
    void processArrived(int most = std::numeric_limits<int>::max());
    void close(int reason);
    [[nodiscard]] int sendCall(const Build& build, Pending& pending, SdSlotHandle& slot);
    void settle(Pending& pending, Outcome result);
    void lead(Pending& pending, Lock& lock);
    void waitForAnswer(Pending& pending, Lock& lock);
    void sleepOnBus(Lock& lock);
    void watchBus(short events);
    void rouse();
    void deliver(Lock& lock);
    [[nodiscard]] static Outcome outcome(sd_bus_message* message, const Read& read);
    static int onAnswer(sd_bus_message* message, void* pending, sd_bus_error*);

    void join(int epoll) noexcept override;
    void ready() noexcept override;

    Owner& owner_;
    std::mutex mutex_;
    SdBusHandle bus_;
    bool welcomed_ = false;
    FileDescriptor poller_;
    FileDescriptor threadWake_;
    FileDescriptor leaderWake_;
    bool threadStarted_ = false;
    /// The waiting call whose thread reads the socket, if one does.
    const Pending* leader_ = nullptr;
    bool delivering_ = false;
    /// Whether heavy work is among what is deferred.
    bool heavy_ = false;
    short watched_ = 0;
    /// The main loop's set, once there is one.
    int mainSet_ = -1;
    Sleep threadSleep_;
    Sleep leaderSleep_;
    std::vector<Pending*> pending_;
    std::vector<Pending*> waiting_;
    std::vector<Work> deferred_;
};

}  // namespace zqcore::platform
