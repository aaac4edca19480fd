#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zqcore::platform::crash {

/// Writes JSON to a descriptor by nothing but write(2): no allocation, no lock, no locale, so a signal
/// handler may use it. A writer that was stopped in the middle of a value can be brought back to a clean
/// state. Threads: one at a time. Failure: a write that fails loses its bytes; the rest goes on.
class ReportWriter final {
  public:
    void open(int fd) noexcept;
    [[nodiscard]] std::size_t depth() const noexcept { return depth_; }
    /// Ends whatever is open below `depth`, a text that was cut short included.
    void closeTo(std::size_t depth) noexcept;
    void flush() noexcept;

    // A null key in an array, a text in an object.
    void beginObject(const char* key = nullptr) noexcept { begin(key, '{'); }
    void beginArray(const char* key = nullptr) noexcept { begin(key, '['); }
    void end() noexcept { closeTo(depth_ - 1); }
    void unsignedInteger(const char* key, std::uint64_t value) noexcept;
    void integer(const char* key, std::int64_t value) noexcept;
    void boolean(const char* key, bool value) noexcept;
    /// Bytes that are no UTF-8 are written as U+FFFD.
    void text(const char* key, std::string_view value) noexcept;
    /// Members of the open object as they stand, without the comma before them; nothing if empty.
    void members(std::string_view json) noexcept;

  private:
    void begin(const char* key, char bracket) noexcept;
    void startValue(const char* key) noexcept;
    void quoted(std::string_view value) noexcept;
    void append(std::string_view bytes) noexcept;
    void append(char byte) noexcept { append(std::string_view(&byte, 1)); }

    static constexpr std::size_t kMaxDepth = 16;

    std::array<char, 4096> buffer_{};
    std::size_t used_ = 0;
    std::array<char, kMaxDepth> open_{};
    std::size_t depth_ = 0;
    int fd_ = -1;
    bool needsComma_ = false;
    bool inText_ = false;
};

/// A number as digits in `base` (10 or 16, lower case), into `digits`; gives the part that holds them.
[[nodiscard]] std::string_view digitsOf(std::uint64_t value, unsigned base,
                                        std::array<char, 20>& digits) noexcept;

}  // namespace zqcore::platform::crash
