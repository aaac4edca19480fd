#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

/// Something that comes due once. It lies in the scheduler without being held by it.
class Deadline {
  public:
    Deadline() = default;
    virtual ~Deadline() = default;
    Deadline(const Deadline&) = delete;
    Deadline& operator=(const Deadline&) = delete;

    struct Submission {
        std::shared_ptr<DispatchQueue> queue;
        DispatchBlock block;
    };
    /// What to submit now. Called once when due, out of the list already and under the scheduler's lock: it
    /// must not call the scheduler, end a foreign object or run foreign code.
    virtual Submission comeDue() noexcept = 0;

  private:
    friend class DeadlineScheduler;
    static constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
    std::size_t position_ = kNowhere;
    DispatchTime::Base base_ = DispatchTime::Base::monotonic;
};

/// All delayed work of the process: one heap a time base, one thread that sleeps on two timer descriptors
/// (timerfd_create(2)) and is started with the first deadline. It reads `Clock::current()`; while a test
/// kit's clock is in force nothing fires by itself and the kit submits what is due. Threads: every operation
/// from any. Lifetime: the process.
class DeadlineScheduler final {
  public:
    static DeadlineScheduler& shared();

    void submitAt(DispatchTime time, std::shared_ptr<DispatchQueue> queue, DispatchBlock block);
    /// `deadline` must not be in the list; `remove` it before it ends.
    void add(Deadline& deadline, DispatchTime time);
    /// Does nothing if it isn't in the list. After it returns `comeDue` is not under way.
    void remove(Deadline& deadline) noexcept;

    /// Time from now until the earliest deadline, negative if it is over; absent without one.
    [[nodiscard]] std::optional<Clock::Duration> timeToNext();
    /// Submits the earliest deadline if it is due. Gives whether there was one.
    bool submitNextDue();
    /// Another clock is in force: deadlines keep their numbers on its scale.
    void clockChanged();
    /// Makes what was not to be had when a deadline came.
    void tryAgain();
    /// Forgets all delayed blocks and takes every timer out.
    void dropAll();

  private:
    struct Entry {
        Clock::Duration at;
        std::uint64_t sequence;
        Deadline* deadline;
    };
    using Heap = std::vector<Entry>;
    class DelayedBlock;

    DeadlineScheduler();
    ~DeadlineScheduler() = delete;

    [[nodiscard]] static bool isEarlier(const Entry& a, const Entry& b) noexcept;
    static void put(Heap& heap, std::size_t position, const Entry& entry) noexcept;
    static void siftUp(Heap& heap, std::size_t position) noexcept;
    static void siftDown(Heap& heap, std::size_t position) noexcept;
    static void takeOut(Heap& heap, std::size_t position) noexcept;
    [[nodiscard]] Heap* earliest(Clock::Duration& untilDue) noexcept;
    void arm(std::size_t base) noexcept;
    bool startWatching() noexcept;
    void watch();

    std::mutex mutex_;
    std::array<Heap, 2> heaps_;
    std::uint64_t sequence_ = 0;
    std::array<int, 2> descriptors_;
    std::array<Clock::Duration, 2> armed_;
    bool watching_ = false;
};

}  // namespace zqcore::platform
