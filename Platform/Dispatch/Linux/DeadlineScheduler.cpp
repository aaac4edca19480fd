#include "Platform/Dispatch/Linux/DeadlineScheduler.h"

#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "Platform/Dispatch/Linux/Shortage.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"

namespace zqcore::platform {

namespace {

constexpr auto kNotArmed = Clock::Duration::max();
// Entries whose room is kept, however few there are left.
constexpr std::size_t kKept = 1024;

bool steppedByHand() noexcept { return &Clock::current() != &Clock::system(); }

Clock::Duration nowOn(std::size_t base) noexcept {
    const Clock& clock = Clock::current();
    return base == 0 ? clock.now().sinceStart : clock.wallNow().time_since_epoch();
}

Clock::Duration difference(Clock::Duration a, Clock::Duration b) noexcept {
    Clock::Duration::rep result = 0;
    if (!__builtin_sub_overflow(a.count(), b.count(), &result)) return Clock::Duration(result);
    return a.count() < 0 ? Clock::Duration::min() : Clock::Duration::max();
}

}  // namespace

/// A block that waits for its time; it ends itself.
class DeadlineScheduler::DelayedBlock final : public Deadline {
  public:
    DelayedBlock(std::shared_ptr<DispatchQueue> queue, DispatchBlock block)
        : submission_{std::move(queue), std::move(block)} {}

    Submission comeDue() noexcept override {
        Submission submission = std::move(submission_);
        delete this;
        return submission;
    }

  private:
    ~DelayedBlock() override = default;
    Submission submission_;
};

DeadlineScheduler& DeadlineScheduler::shared() {
    // Never ended: its thread runs until the process is gone.
    static DeadlineScheduler& scheduler = *new DeadlineScheduler;
    return scheduler;
}

DeadlineScheduler::DeadlineScheduler() : descriptors_{-1, -1}, armed_{kNotArmed, kNotArmed} {}

void DeadlineScheduler::submitAt(DispatchTime time, std::shared_ptr<DispatchQueue> queue,
                                 DispatchBlock block) {
    if (time.at <= nowOn(static_cast<std::size_t>(time.base))) {
        queue->async(std::move(block));
        return;
    }
    add(*new DelayedBlock(std::move(queue), std::move(block)), time);
}

void DeadlineScheduler::add(Deadline& deadline, DispatchTime time) {
    const auto base = static_cast<std::size_t>(time.base);
    const std::lock_guard lock(mutex_);
    Heap& heap = heaps_[base];
    deadline.base_ = time.base;
    heap.push_back({time.at, sequence_++, &deadline});
    siftUp(heap, heap.size() - 1);
    if (watching_) [[likely]] {
        if (deadline.position_ == 0) arm(base);
    } else {
        arm(0);
        arm(1);
    }
}

void DeadlineScheduler::tryAgain() {
    const std::lock_guard lock(mutex_);
    arm(0);
    arm(1);
}

void DeadlineScheduler::remove(Deadline& deadline) noexcept {
    const std::lock_guard lock(mutex_);
    // The descriptor stays armed: one needless wake-up at most is cheaper than a system call each time.
    if (deadline.position_ != Deadline::kNowhere)
        takeOut(heaps_[static_cast<std::size_t>(deadline.base_)], deadline.position_);
}

// Both descriptors and the thread that sleeps on them. What is not to be had now is made with a later
// deadline.
bool DeadlineScheduler::startWatching() noexcept {
    if (watching_) return true;
    constexpr std::array kClocks{CLOCK_MONOTONIC, CLOCK_REALTIME};
    for (std::size_t base = 0; base < 2; ++base) {
        int& descriptor = descriptors_[base];
        if (descriptor < 0) descriptor = timerfd_create(kClocks[base], TFD_CLOEXEC | TFD_NONBLOCK);
        if (descriptor >= 0) continue;
        Shortage::note();
        return false;
    }
    watching_ = startWorkerThread("zq.deadlines", [this] { watch(); });
    return watching_;
}

// A deadline that nothing will reach needs no descriptor; an earlier one that is armed already stays.
void DeadlineScheduler::arm(std::size_t base) noexcept {
    if (steppedByHand() || heaps_[base].empty()) return;
    const Clock::Duration at = heaps_[base].front().at;
    if (at >= armed_[base] || !startWatching()) return;
    armed_[base] = at;
    itimerspec spec{};
    // A zero would disarm; times before the beginning are due like any other in the past.
    const auto value = std::max<Clock::Duration::rep>(at.count(), 1);
    spec.it_value.tv_sec = value / 1'000'000'000;
    spec.it_value.tv_nsec = value % 1'000'000'000;
    timerfd_settime(descriptors_[base],
                    base == 0 ? TFD_TIMER_ABSTIME : TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &spec,
                    nullptr);
}

void DeadlineScheduler::watch() {
    std::array<pollfd, 2> polled{};
    for (;;) {
        for (std::size_t base = 0; base < 2; ++base) polled[base] = {descriptors_[base], POLLIN, 0};
        if (poll(polled.data(), polled.size(), -1) < 0) continue;
        {
            const std::lock_guard lock(mutex_);
            for (std::size_t base = 0; base < 2; ++base) {
                if (!polled[base].revents) continue;
                // A set wall clock makes this fail (ECANCELED), and all deadlines are judged anew.
                std::uint64_t count = 0;
                [[maybe_unused]] const ssize_t got = read(descriptors_[base], &count, sizeof count);
                armed_[base] = kNotArmed;
            }
        }
        if (steppedByHand()) continue;
        while (submitNextDue()) {
        }
        const std::lock_guard lock(mutex_);
        arm(0);
        arm(1);
    }
}

DeadlineScheduler::Heap* DeadlineScheduler::earliest(Clock::Duration& untilDue) noexcept {
    Heap* found = nullptr;
    for (std::size_t base = 0; base < 2; ++base) {
        Heap& heap = heaps_[base];
        if (heap.empty()) continue;
        const Clock::Duration left = difference(heap.front().at, nowOn(base));
        if (found &&
            (left > untilDue || (left == untilDue && heap.front().sequence > found->front().sequence)))
            continue;
        found = &heap;
        untilDue = left;
    }
    return found;
}

std::optional<Clock::Duration> DeadlineScheduler::timeToNext() {
    const std::lock_guard lock(mutex_);
    Clock::Duration untilDue{};
    return earliest(untilDue) ? std::optional(untilDue) : std::nullopt;
}

bool DeadlineScheduler::submitNextDue() {
    Deadline::Submission submission;
    {
        const std::lock_guard lock(mutex_);
        Clock::Duration untilDue{};
        Heap* heap = earliest(untilDue);
        if (!heap || untilDue > Clock::Duration::zero()) return false;
        Deadline* deadline = heap->front().deadline;
        takeOut(*heap, 0);
        submission = deadline->comeDue();
    }
    if (submission.queue) submission.queue->async(std::move(submission.block));
    return true;
}

void DeadlineScheduler::clockChanged() {
    const std::lock_guard lock(mutex_);
    armed_ = {kNotArmed, kNotArmed};
    arm(0);
    arm(1);
}

void DeadlineScheduler::dropAll() {
    // Foreign destructors run after the lock.
    std::vector<Deadline::Submission> dropped;
    const std::lock_guard lock(mutex_);
    for (Heap& heap : heaps_) {
        while (!heap.empty()) {
            Deadline* deadline = heap.back().deadline;
            takeOut(heap, heap.size() - 1);
            dropped.push_back(deadline->comeDue());
        }
    }
}

// The heap: children of i at 2i + 1 and 2i + 2; each deadline knows its place, so taking it out is as cheap
// as putting it in.

bool DeadlineScheduler::isEarlier(const Entry& a, const Entry& b) noexcept {
    return a.at != b.at ? a.at < b.at : a.sequence < b.sequence;
}

void DeadlineScheduler::put(Heap& heap, std::size_t position, const Entry& entry) noexcept {
    heap[position] = entry;
    entry.deadline->position_ = position;
}

void DeadlineScheduler::siftUp(Heap& heap, std::size_t position) noexcept {
    const Entry entry = heap[position];
    while (position > 0) {
        const std::size_t parent = (position - 1) / 2;
        if (!isEarlier(entry, heap[parent])) break;
        put(heap, position, heap[parent]);
        position = parent;
    }
    put(heap, position, entry);
}

void DeadlineScheduler::siftDown(Heap& heap, std::size_t position) noexcept {
    const Entry entry = heap[position];
    for (;;) {
        std::size_t child = 2 * position + 1;
        if (child >= heap.size()) break;
        if (child + 1 < heap.size() && isEarlier(heap[child + 1], heap[child])) ++child;
        if (!isEarlier(heap[child], entry)) break;
        put(heap, position, heap[child]);
        position = child;
    }
    put(heap, position, entry);
}

void DeadlineScheduler::takeOut(Heap& heap, std::size_t position) noexcept {
    heap[position].deadline->position_ = Deadline::kNowhere;
    const Entry last = heap.back();
    heap.pop_back();
    if (position < heap.size()) {
        put(heap, position, last);
        siftUp(heap, position);
        siftDown(heap, last.deadline->position_);
    }
    if (heap.capacity() > kKept && heap.size() < heap.capacity() / 4) heap.shrink_to_fit();
}

}  // namespace zqcore::platform
