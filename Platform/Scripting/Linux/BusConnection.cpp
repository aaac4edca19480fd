#include "Platform/Scripting/Linux/BusConnection.h"

#include <poll.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <limits>
#include <string>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"
#include "Platform/Scripting/Linux/BusErrors.h"

namespace zqcore::platform {
namespace {

std::atomic<std::chrono::microseconds> limitInForce{kCallLimit};

// How many messages the main thread takes in before it turns to its blocks.
constexpr int kMostInATurn = 32;
constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();

[[nodiscard]] short wantedEvents(sd_bus* bus) {
    const int events = sd_bus_get_events(bus);
    return events < 0 ? short{POLLIN} : static_cast<short>(events);
}

/// When sd-bus wants to run although nothing arrives: microseconds of CLOCK_MONOTONIC.
[[nodiscard]] std::uint64_t wantedTime(sd_bus* bus) {
    std::uint64_t until = kNever;
    return sd_bus_get_timeout(bus, &until) < 0 ? kNever : until;
}

[[nodiscard]] int millisecondsUntil(std::uint64_t until) {
    if (until == kNever) return -1;
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    const auto present =
        static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000;
    if (until <= present) return 0;
    // Rounded up: a sleep that ends too early would only spin.
    return static_cast<int>(std::min<std::uint64_t>((until - present + 999) / 1'000, 3'600'000));
}

void ring(const FileDescriptor& bell) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(bell.get(), &one, sizeof one);
}

void silence(const FileDescriptor& bell) {
    std::uint64_t count = 0;
    [[maybe_unused]] const auto read = ::read(bell.get(), &count, sizeof count);
}

}  // namespace

std::chrono::microseconds callLimit() noexcept { return limitInForce; }
void setCallLimitForTesting(std::chrono::microseconds limit) noexcept { limitInForce = limit; }

BusConnection::BusConnection(Owner& owner)
    : owner_(owner),
      poller_(::epoll_create1(EPOLL_CLOEXEC)),
      threadWake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      leaderWake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = threadWake_.get();
    ::epoll_ctl(poller_.get(), EPOLL_CTL_ADD, threadWake_.get(), &event);
    MainLoopGuest::install(*this);
}

BusConnection::Access::Access(BusConnection& connection, Opening opening)
    : connection_(connection), opening_(opening), lock_(connection.mutex_) {
    if (opening_ == Opening::ifNeeded) open();
}

BusConnection::Access::~Access() {
    connection_.rouse();
    connection_.deliver(lock_);
}

int BusConnection::Access::open() { return failure_ = connection_.ensureOpen(); }

void BusConnection::Access::takeInArrived() {
    if (!bus()) return;
    connection_.processArrived();
    if (!bus() && opening_ == Opening::ifNeeded) open();
}

int BusConnection::ensureOpen() {
    if (bus_) return 0;
    sd_bus* bus = nullptr;
    const int failure = sd_bus_open_user_with_description(&bus, "zqcore");
    if (failure < 0) return failure;
    bus_.reset(bus);
    welcomed_ = false;
    startThread();
    owner_.opened(bus);
    return 0;
}

void BusConnection::startThread() {
    if (threadStarted_) return;
    // The application's signals are for its own threads; a new thread inherits the mask.
    sigset_t all;
    sigset_t before;
    ::sigfillset(&all);
    for (const int fault : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTRAP, SIGABRT, SIGSYS})
        ::sigdelset(&all, fault);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    threadStarted_ = startWorkerThread("zqcore-bus", [this] { pump(); });
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void BusConnection::pump() {
    Lock lock(mutex_);
    for (;;) {
        if (bus_ && !leader_) processArrived();
        deliver(lock);
        const bool mine = bus_ && !leader_;
        watchBus(mine ? wantedEvents(bus_.get()) : short{0});
        threadSleep_ = {.asleep = true, .until = mine ? wantedTime(bus_.get()) : kNever, .events = 0};
        const int limit = millisecondsUntil(threadSleep_.until);
        lock.unlock();
        std::array<epoll_event, 2> events{};
        ::epoll_wait(poller_.get(), events.data(), static_cast<int>(events.size()), limit);
        silence(threadWake_);
        lock.lock();
        threadSleep_.asleep = false;
    }
}

// Both sets have the socket, exclusively: whoever of the main thread and the connection's own sleeps is woken
// for it, and only one of them. It is the one that put it in first, if both do.
void BusConnection::watchBus(short events) {
    if (!bus_ || events == watched_) return;
    const int socket = sd_bus_get_fd(bus_.get());
    epoll_event event{};
    event.events = static_cast<std::uint32_t>(events) | EPOLLEXCLUSIVE;
    event.data.u64 = MainLoopGuest::kKey;
    for (const int set : {mainSet_, poller_.get()}) {
        if (set < 0) continue;
        // Taken out rather than silenced: a hang-up is reported for whatever is in the set. Nor can an
        // exclusive watch be changed.
        if (watched_ != 0) ::epoll_ctl(set, EPOLL_CTL_DEL, socket, nullptr);
        if (events != 0) ::epoll_ctl(set, EPOLL_CTL_ADD, socket, &event);
    }
    watched_ = events;
}

void BusConnection::join(int epoll) noexcept {
    const Lock lock(mutex_);
    const short events = watched_;
    watchBus(0);
    mainSet_ = epoll;
    watchBus(events);
}

void BusConnection::ready() noexcept {
    Lock lock(mutex_);
    if (bus_ && !leader_) {
        // What is left wakes it again, after what else it has to do.
        processArrived(kMostInATurn);
        rouse();
    }
    deliver(lock);
}

void BusConnection::processArrived(int most) {
    int progress = 0;
    do {
        progress = sd_bus_process(bus_.get(), nullptr);
        if (!welcomed_ && sd_bus_is_ready(bus_.get()) > 0) {
            welcomed_ = true;
            owner_.welcomed();
        }
    } while (progress > 0 && --most > 0);
    if (progress < 0 || sd_bus_is_open(bus_.get()) <= 0) close(progress < 0 ? progress : -ECONNRESET);
}

void BusConnection::close(int reason) {
    watchBus(0);
    owner_.closing();
    // sd-bus has answered its pending calls by now; whatever it forgot must not wait for ever.
    for (Pending* pending : std::exchange(pending_, {})) {
        // An answer that came just before the end still counts.
        if (!pending->done)
            settle(*pending, std::unexpected(scriptingErrorForErrno(reason, "the bus went away")));
    }
    bus_.reset();
    defer([this] { owner_.lost(); });
}

BusConnection::Outcome BusConnection::outcome(sd_bus_message* message, const Read& read) {
    if (sd_bus_message_is_method_error(message, nullptr) > 0) {
        // When the connection goes, sd-bus itself answers what is pending, as if the target kept silent.
        if (sd_bus_is_open(sd_bus_message_get_bus(message)) <= 0)
            return std::unexpected(scriptingErrorForErrno(-ECONNRESET, "the bus went away"));
        const sd_bus_error* error = sd_bus_message_get_error(message);
        return std::unexpected(
            scriptingErrorForBusError(error->name ? error->name : "", error->message ? error->message : ""));
    }
    const int failure = read(message);
    if (failure < 0) return std::unexpected(scriptingErrorForErrno(failure, "the answer can't be read"));
    return {};
}

int BusConnection::onAnswer(sd_bus_message* message, void* pointer, sd_bus_error*) {
    auto& pending = *static_cast<Pending*>(pointer);
    pending.connection.settle(pending, outcome(message, pending.read));
    return 1;
}

void BusConnection::settle(Pending& pending, Outcome result) {
    pending.result = std::move(result);
    pending.done = true;
    // Another thread may have read the answer of the one that sleeps on the socket.
    if (&pending == leader_ && leaderSleep_.asleep) ring(leaderWake_);
    pending.changed.notify_one();
}

int BusConnection::sendCall(const Build& build, Pending& pending, SdSlotHandle& slot) {
    sd_bus_message* raw = nullptr;
    const int made = build(bus_.get(), &raw);
    const SdMessageHandle message(raw);
    if (made < 0) return made;
    // Zero would be sd-bus's own limit.
    const auto left = std::max(
        std::chrono::microseconds(1),
        std::chrono::ceil<std::chrono::microseconds>(pending.deadline - std::chrono::steady_clock::now()));
    sd_bus_slot* rawSlot = nullptr;
    const int sent = sd_bus_call_async(bus_.get(), &rawSlot, raw, &onAnswer, &pending,
                                       static_cast<std::uint64_t>(left.count()));
    slot.reset(rawSlot);
    return sent;
}

BusConnection::Outcome BusConnection::call(const Build& build, const Read& read, Deadline deadline) {
    Access access(*this);
    if (access.failure() < 0) return std::unexpected(scriptingErrorForErrno(access.failure(), "no bus"));
    Pending pending{.connection = *this, .read = read, .deadline = deadline};
    SdSlotHandle slot;
    const int failure = sendCall(build, pending, slot);
    if (failure < 0) return std::unexpected(scriptingErrorForErrno(failure, "the call can't be sent"));
    pending_.push_back(&pending);
    waitForAnswer(pending, access.lock_);
    return std::move(pending.result);
}

void BusConnection::waitForAnswer(Pending& pending, Lock& lock) {
    const DispatchBlockingScope blocking;
    while (!pending.done) {
        if (leader_) {
            // Another caller reads the socket; it passes on when it has its own answer.
            rouse();
            waiting_.push_back(&pending);
            pending.changed.wait(lock, [&] { return pending.done || !leader_; });
            std::erase(waiting_, &pending);
        } else {
            lead(pending, lock);
        }
    }
    std::erase(pending_, &pending);
    if (!leader_ && !waiting_.empty()) waiting_.front()->changed.notify_one();
}

void BusConnection::lead(Pending& pending, Lock& lock) {
    leader_ = &pending;
    watchBus(0);
    while (!pending.done) {
        processArrived();
        deliver(lock);
        if (!pending.done && bus_) sleepOnBus(lock);
    }
    leader_ = nullptr;
}

void BusConnection::sleepOnBus(Lock& lock) {
    leaderSleep_ = {.asleep = true, .until = wantedTime(bus_.get()), .events = wantedEvents(bus_.get())};
    std::array<pollfd, 2> sources{
        {{sd_bus_get_fd(bus_.get()), leaderSleep_.events, 0}, {leaderWake_.get(), POLLIN, 0}}};
    const int limit = millisecondsUntil(leaderSleep_.until);
    lock.unlock();
    ::poll(sources.data(), sources.size(), limit);
    if (sources[1].revents != 0) silence(leaderWake_);
    lock.lock();
    leaderSleep_.asleep = false;
}

void BusConnection::rouse() {
    if (!bus_) return;
    const short events = wantedEvents(bus_.get());
    const std::uint64_t until = wantedTime(bus_.get());
    if (leader_) {
        const bool more = (events & ~leaderSleep_.events) != 0 || until < leaderSleep_.until;
        if (leaderSleep_.asleep && more) ring(leaderWake_);
        return;
    }
    // One of the waiting callers has been told to read from here on.
    if (!waiting_.empty()) return;
    watchBus(events);
    if (threadSleep_.asleep && until < threadSleep_.until) ring(threadWake_);
}

void BusConnection::defer(Work work, Weight weight) {
    deferred_.push_back(std::move(work));
    if (weight == Weight::heavy) heavy_ = true;
}

void BusConnection::deliver(Lock& lock) {
    // One thread at a time, so that the order of arrival is kept.
    if (delivering_) return;
    delivering_ = true;
    while (!deferred_.empty()) {
        if (heavy_ && isMainThread()) {
            ring(threadWake_);
            break;
        }
        heavy_ = false;
        auto batch = std::exchange(deferred_, {});
        lock.unlock();
        for (Work& work : batch) work();
        batch.clear();
        lock.lock();
    }
    delivering_ = false;
}

}  // namespace zqcore::platform
