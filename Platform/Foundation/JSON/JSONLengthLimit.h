#pragma once

#include <cstddef>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Gives up every JSON text that this thread writes, once it grows beyond `length` bytes (about: a writer
/// looks when it needs room), until the scope ends: for a thread that has time for a short text only. It
/// reaches past whatever stands between the caller and the writer, a model's own operations too. An array is
/// still gone through, without being kept. Lifetime: a value on the stack; scopes may nest, and the innermost
/// counts.
class ZQ_EXPORT JSONLengthLimit final {
  public:
    explicit JSONLengthLimit(std::size_t length) noexcept : length_(length), outer_(current_) {
        current_ = this;
    }
    ~JSONLengthLimit() { current_ = outer_; }
    JSONLengthLimit(const JSONLengthLimit&) = delete;
    JSONLengthLimit& operator=(const JSONLengthLimit&) = delete;

    /// Whether a text was given up.
    [[nodiscard]] bool exceeded() const noexcept { return exceeded_; }

    /// For the writer: whether a text of that length is too long here; then it counts as given up.
    [[nodiscard]] static bool refuses(std::size_t length) noexcept {
        if (!current_ || length <= current_->length_) return false;
        current_->exceeded_ = true;
        return true;
    }
    /// Whether this thread has just given a text up, so that its absence is no failure.
    [[nodiscard]] static bool gaveUp() noexcept { return current_ && current_->exceeded_; }

  private:
    static thread_local constinit JSONLengthLimit* current_;
    const std::size_t length_;
    JSONLengthLimit* const outer_;
    bool exceeded_ = false;
};

}  // namespace zqcore::platform
