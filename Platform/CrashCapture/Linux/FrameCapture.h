#pragma once

#include <ucontext.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace zqcore::platform::crash {

/// Loads the unwinder and runs it once, so that nothing is loaded or allocated in a signal handler. Without
/// the library frames come from the frame pointers alone.
void prepareFrameCapture() noexcept;

/// The call stack of a suspended context, innermost first: the address it stands at, then return addresses.
/// Gives how many were stored. Async-signal-safe after `prepareFrameCapture`; a broken stack may crash it.
std::size_t captureFrames(const ucontext_t& context, std::span<std::uint64_t> frames) noexcept;

/// The same by the chain of frame pointers: misses callers that keep none, but no stack can crash it.
std::size_t captureFramesByPointer(const ucontext_t& context, std::span<std::uint64_t> frames) noexcept;

/// Copies memory of this process; false, and nothing more, where it can't be read. Async-signal-safe.
bool readMemory(std::uint64_t address, void* into, std::size_t size) noexcept;

[[nodiscard]] std::uint64_t programCounter(const ucontext_t& context) noexcept;
[[nodiscard]] std::uint64_t stackPointer(const ucontext_t& context) noexcept;

struct Register {
    const char* name;
    std::uint64_t value;
};
/// The general registers under the platform's names; gives how many were stored (40 at most).
std::size_t registersOf(const ucontext_t& context, std::span<Register> registers) noexcept;

}  // namespace zqcore::platform::crash
