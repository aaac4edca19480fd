#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace zqcore::platform::crash {

// What the kernel tells about this process under /proc/self, read without allocation, lock or buffer of the C
// library, so that it is true at the moment of a crash, libraries loaded late included.
// Async-signal-safe. Threads: one at a time. Failure: without /proc nothing is found.

/// A file of code that is mapped, with the build id that the linker gave it.
struct LoadedImage {
    std::uint64_t address = 0;
    std::uint64_t size = 0;
    /// Where the file itself wanted to lie; 0 for all that can move.
    std::uint64_t preferredAddress = 0;
    std::array<unsigned char, 32> buildId{};
    std::size_t buildIdSize = 0;
    std::string_view path;  ///< holds during the call only
};
using ImageCallback = void (*)(const LoadedImage& image, void* context);
void forEachLoadedImage(ImageCallback callback, void* context) noexcept;

/// The identifiers of the threads, the oldest first; gives how many were stored.
std::size_t listThreads(std::span<int> identifiers) noexcept;

/// The name of a thread, into `buffer`.
[[nodiscard]] std::string_view threadName(int identifier, std::span<char> buffer) noexcept;

}  // namespace zqcore::platform::crash
