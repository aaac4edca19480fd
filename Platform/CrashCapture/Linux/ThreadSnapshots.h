#pragma once

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zqcore::platform::crash {

/// The stacks of the other threads, taken by the threads themselves when a signal asks them to. The signal is
/// SIGSYS, since threads that block all else leave the fatal ones open; a value that only this process knows
/// tells it from a real one.
inline constexpr int kSnapshotSignal = SIGSYS;

struct ThreadSnapshot {
    int identifier = 0;
    std::span<const std::uint64_t> frames;
    std::string_view queueLabel;
};

/// Asks `threads` and waits until all have answered, or none has for 20 ms. Async-signal-safe.
void requestSnapshots(std::span<const int> threads) noexcept;
/// Whether the signal asks for a snapshot; then it has been taken.
bool answerSnapshotRequest(const siginfo_t& info, const void* context) noexcept;
/// What the thread answered; no frames if it didn't.
[[nodiscard]] ThreadSnapshot snapshotOf(int identifier) noexcept;

/// The label of the queue that the calling thread works for; empty on a thread of its own.
[[nodiscard]] std::string_view currentQueueLabel() noexcept;

}  // namespace zqcore::platform::crash
