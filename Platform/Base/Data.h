#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace zqcore::platform {

/// A buffer of bytes. It lies in the same storage as a text, so that UTF-8 text and bytes turn into each
/// other by a move and a large text is never copied for it. Threads: a value; distinct objects may be used on
/// distinct threads.
class Data final {
  public:
    Data() = default;
    explicit Data(std::string bytes) noexcept : bytes_(std::move(bytes)) {}
    explicit Data(std::span<const std::uint8_t> bytes)
        : bytes_(reinterpret_cast<const char*>(bytes.data()), bytes.size()) {}

    [[nodiscard]] std::size_t size() const noexcept { return bytes_.size(); }
    [[nodiscard]] bool empty() const noexcept { return bytes_.empty(); }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept {
        return {reinterpret_cast<const std::uint8_t*>(bytes_.data()), bytes_.size()};
    }
    /// The bytes seen as characters; nothing is checked.
    [[nodiscard]] std::string_view view() const noexcept { return bytes_; }
    /// The storage itself, moved out. Nothing is checked.
    [[nodiscard]] std::string take() && noexcept { return std::move(bytes_); }

    friend bool operator==(const Data&, const Data&) = default;

  private:
    std::string bytes_;
};

}  // namespace zqcore::platform
