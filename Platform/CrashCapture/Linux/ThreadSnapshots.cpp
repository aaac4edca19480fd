#include "Platform/CrashCapture/Linux/ThreadSnapshots.h"

#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>

#include "Platform/CrashCapture/Linux/FrameCapture.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform::crash {

namespace {

struct Slot {
    std::atomic<int> identifier{0};
    std::atomic<bool> answered{false};
    std::size_t frameCount = 0;
    std::array<std::uint64_t, 64> frames{};
    std::size_t labelSize = 0;
    std::array<char, 128> label{};
};

// 64 threads are enough to see what the others were at; a process with more gets the oldest.
std::array<Slot, 64> slots;
std::atomic<std::size_t> slotCount{0};

Slot* slotOf(int identifier) noexcept {
    for (std::size_t i = 0; i < slotCount.load(std::memory_order_acquire); ++i) {
        if (slots[i].identifier.load(std::memory_order_relaxed) == identifier) return &slots[i];
    }
    return nullptr;
}

std::size_t answers() noexcept {
    std::size_t count = 0;
    for (std::size_t i = 0; i < slotCount.load(std::memory_order_relaxed); ++i) {
        if (slots[i].answered.load(std::memory_order_acquire)) ++count;
    }
    return count;
}

void pause(long nanoseconds) noexcept {
    const timespec time{0, nanoseconds};
    nanosleep(&time, nullptr);
}

}  // namespace

void requestSnapshots(std::span<const int> threads) noexcept {
    std::size_t asked = 0;
    const int self = static_cast<int>(syscall(SYS_gettid));
    const pid_t process = getpid();
    for (const int thread : threads) {
        if (asked == slots.size()) break;
        if (thread == self) continue;
        slots[asked].identifier.store(thread, std::memory_order_relaxed);
        slots[asked].answered.store(false, std::memory_order_relaxed);
        slotCount.store(++asked, std::memory_order_release);
        siginfo_t request{};
        request.si_code = SI_QUEUE;
        request.si_pid = process;
        request.si_uid = getuid();
        request.si_value.sival_ptr = &slots;
        syscall(SYS_rt_tgsigqueueinfo, process, thread, kSnapshotSignal, &request);
    }
    constexpr long kStep = 100'000;
    constexpr int kPatience = 200;
    std::size_t seen = 0;
    for (int idle = 0; seen < asked && idle < kPatience; ++idle) {
        pause(kStep);
        const std::size_t count = answers();
        if (count != seen) idle = 0;
        seen = count;
    }
}

bool answerSnapshotRequest(const siginfo_t& info, const void* context) noexcept {
    if (info.si_code != SI_QUEUE || info.si_value.sival_ptr != &slots || info.si_pid != getpid())
        return false;
    Slot* slot = slotOf(static_cast<int>(syscall(SYS_gettid)));
    if (!slot || slot->answered.load(std::memory_order_relaxed)) return true;
    slot->frameCount = captureFrames(*static_cast<const ucontext_t*>(context), slot->frames);
    const std::string_view label = currentQueueLabel();
    slot->labelSize = label.size() < slot->label.size() ? label.size() : slot->label.size();
    std::memcpy(slot->label.data(), label.data(), slot->labelSize);
    slot->answered.store(true, std::memory_order_release);
    return true;
}

ThreadSnapshot snapshotOf(int identifier) noexcept {
    const Slot* slot = slotOf(identifier);
    if (!slot || !slot->answered.load(std::memory_order_acquire)) return {identifier, {}, {}};
    return {
        identifier, std::span(slot->frames).first(slot->frameCount), {slot->label.data(), slot->labelSize}};
}

std::string_view currentQueueLabel() noexcept {
    // A plain thread counts as one of the default root queue, which tells nobody anything.
    const std::string_view label = DispatchQueue::currentLabel();
    return label == "com.apple.root.default-qos" ? std::string_view() : label;
}

}  // namespace zqcore::platform::crash
