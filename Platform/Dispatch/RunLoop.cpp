#include "Platform/Dispatch/RunLoop.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <span>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/Dispatch/DispatchSourceTimer.h"
#include "Platform/Dispatch/Linux/MainLoopGuest.h"
#include "Platform/Dispatch/Linux/MainQueue.h"
#include "Platform/Dispatch/Linux/Shortage.h"

namespace zqcore::platform {

namespace {

constexpr std::uint64_t kMainQueueKey = 0;

[[nodiscard]] bool isGuests(const epoll_event& event) noexcept {
    return event.data.u64 == MainLoopGuest::kKey;
}

// How long the loop sleeps at most while threads or descriptors are short.
constexpr auto kRetry = std::chrono::milliseconds(20);

struct WatchState {
    int descriptor = -1;
    short events = 0;
    std::function<void(short)> handler;
    std::atomic<bool> ended{false};
    // epoll takes a descriptor once; a second watch goes by a copy.
    int copy = -1;
};

}  // namespace

struct RunLoop::State {
    std::mutex mutex;
    // Absent as long as the process has no descriptors left; `isOpen` says that it holds all it should.
    std::atomic<int> epoll{-1};
    bool isOpen = false;
    std::unordered_map<std::uint64_t, std::shared_ptr<WatchState>> watches;
    std::uint64_t lastKey = kMainQueueKey;
    // The runs under way, the innermost last: whether each was told to stop.
    std::vector<bool> stopped;
    // The main thread's alone.
    MainLoopGuest* guest = nullptr;

    std::shared_ptr<WatchState> find(std::uint64_t key) {
        const std::lock_guard lock(mutex);
        const auto found = watches.find(key);
        return found == watches.end() ? nullptr : found->second;
    }
    void enter() {
        const std::lock_guard lock(mutex);
        stopped.push_back(false);
    }
    bool leave() {
        const std::lock_guard lock(mutex);
        const bool told = stopped.back();
        stopped.pop_back();
        return told;
    }
    bool toldToStop() {
        const std::lock_guard lock(mutex);
        return stopped.back();
    }
    bool open() noexcept;
    void join(std::uint64_t key, WatchState& watch) const noexcept;
    bool round(int timeout) noexcept;
    void admitGuest() noexcept;
};

namespace {

class DescriptorWatch final : public RunLoop::Watch {
  public:
    DescriptorWatch(std::function<void()> end) : end_(std::move(end)) {}
    ~DescriptorWatch() override { end_(); }

  private:
    std::function<void()> end_;
};

}  // namespace

RunLoop::RunLoop() : state_(new State) { (void)state_->open(); }

RunLoop& RunLoop::main() {
    // Never ended: threads may still wake it while the process goes.
    static RunLoop& loop = *new RunLoop;
    return loop;
}

// Makes what the loop sleeps on. Each round tries again if there were no descriptors.
bool RunLoop::State::open() noexcept {
    const std::lock_guard lock(mutex);
    if (epoll < 0) epoll = epoll_create1(EPOLL_CLOEXEC);
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = kMainQueueKey;
    isOpen = epoll_ctl(epoll, EPOLL_CTL_ADD, MainQueue::shared().fileDescriptor(), &event) == 0;
    if (isOpen) {
        for (const auto& [key, watch] : watches) join(key, *watch);
    }
    return isOpen;
}

void RunLoop::State::join(std::uint64_t key, WatchState& watch) const noexcept {
    epoll_event event{};
    event.events = static_cast<std::uint16_t>(watch.events);
    event.data.u64 = key;
    if (epoll_ctl(epoll, EPOLL_CTL_ADD, watch.descriptor, &event) == 0 || errno != EEXIST) return;
    watch.copy = fcntl(watch.descriptor, F_DUPFD_CLOEXEC, 0);
    epoll_ctl(epoll, EPOLL_CTL_ADD, watch.copy, &event);
}

// Waits for something to do and does what is ready. No exception may reach what the host has on its stack.
bool RunLoop::State::round(int timeout) noexcept {
    if (!isOpen && !open()) [[unlikely]] {
        const bool ran = MainQueue::shared().drain();
        if (!ran && timeout != 0) std::this_thread::sleep_for(kRetry);
        return ran;
    }
    if (Shortage::isFelt()) [[unlikely]] {
        Shortage::tryAgain();
        if (timeout < 0 && Shortage::isFelt()) timeout = static_cast<int>(kRetry.count());
    }
    if (timeout != 0) admitGuest();
    std::array<epoll_event, 32> events{};
    const int count = epoll_wait(epoll, events.data(), static_cast<int>(events.size()), timeout);
    const std::span ready(events.data(), static_cast<std::size_t>(std::max(count, 0)));
    // The guest first, since nobody else was woken for it and the rest may take its time.
    const bool forGuest = std::ranges::any_of(ready, isGuests);
    if (forGuest) guest->ready();
    bool ran = forGuest;
    bool drained = false;
    for (const epoll_event& event : ready) {
        if (isGuests(event)) continue;
        if (event.data.u64 == kMainQueueKey) {
            drained = true;
            ran = MainQueue::shared().drain() || ran;
        } else if (const auto watch = find(event.data.u64); watch && !watch->ended) {
            // An earlier handler of this round may have ended the watch, so each is looked up anew.
            watch->handler(static_cast<short>(event.events));
            ran = true;
        }
    }
    // What the guest put on the queue is run without another look at the descriptors.
    if (forGuest && !drained && MainQueue::shared().hasWork()) MainQueue::shared().drain();
    return ran;
}

void RunLoop::State::admitGuest() noexcept {
    MainLoopGuest* const installed = MainLoopGuest::installed();
    if (installed == guest) return;
    guest = installed;
    guest->join(epoll);
}

void RunLoop::run() {
    state_->enter();
    while (!state_->toldToStop()) state_->round(-1);
    state_->leave();
}

bool RunLoop::runUntil(const std::function<bool()>& done, Clock::Duration limit) {
    const auto end = DispatchTime::now(limit);
    // The limit arrives like other delayed work, so a stepped clock steps it too.
    const auto alarm = DispatchSourceTimer::make(DispatchQueue::main());
    alarm->schedule(end, Clock::Duration::max());
    alarm->setEventHandler([] {});
    alarm->resume();
    state_->enter();
    bool met = done();
    while (!met && !state_->toldToStop() && DispatchTime::now().at < end.at) {
        state_->round(-1);
        met = done();
    }
    state_->leave();
    return met;
}

void RunLoop::stop() {
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->stopped.empty()) return;
        state_->stopped.back() = true;
    }
    MainQueue::shared().wake();
}

void RunLoop::setTurnHandler(TurnPart part, std::function<void()> handler) {
    MainQueue::shared().setTurnHandler(part == TurnPart::beforeQueue ? 0 : 1, std::move(handler));
}

void RunLoop::requestTurn() { MainQueue::shared().requestTurn(); }

bool RunLoop::drain() { return state_->round(0); }

int RunLoop::fileDescriptor() const noexcept { return state_->epoll; }

std::unique_ptr<RunLoop::Watch> RunLoop::watch(int fd, short events, std::function<void(short)> handler) {
    auto watch = std::make_shared<WatchState>();
    watch->descriptor = fd;
    watch->events = events;
    watch->handler = std::move(handler);
    State* state = state_;
    const std::lock_guard lock(state->mutex);
    const std::uint64_t key = ++state->lastKey;
    state->watches.emplace(key, watch);
    if (state->isOpen) state->join(key, *watch);
    return std::make_unique<DescriptorWatch>([state, key, watch] {
        watch->ended = true;
        const std::lock_guard inner(state->mutex);
        epoll_ctl(state->epoll, EPOLL_CTL_DEL, watch->copy >= 0 ? watch->copy : watch->descriptor, nullptr);
        if (watch->copy >= 0) close(watch->copy);
        state->watches.erase(key);
    });
}

}  // namespace zqcore::platform
