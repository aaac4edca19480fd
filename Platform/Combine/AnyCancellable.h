#pragma once

#include <compare>
#include <functional>
#include <memory>
#include <utility>

namespace zqcore::platform {

/// What ends a subscription: by `cancel`, or by its own end. Threads: a value; the action runs on the thread
/// that cancels. Lifetime: move-only; one that was moved from, or cancelled before, does nothing. May be kept
/// in vectors and sets: equality and order are identity.
class AnyCancellable final {
  public:
    AnyCancellable() noexcept = default;
    explicit AnyCancellable(std::move_only_function<void()> action)
        : action_(std::make_unique<std::move_only_function<void()>>(std::move(action))) {}
    AnyCancellable(AnyCancellable&&) noexcept = default;
    AnyCancellable& operator=(AnyCancellable&& other) noexcept {
        // Taken first: the action may end the owner of either side.
        AnyCancellable taken(std::move(other));
        std::swap(action_, taken.action_);
        return *this;
    }
    ~AnyCancellable() { cancel(); }

    void cancel() {
        if (const auto action = std::exchange(action_, nullptr)) (*action)();
    }

    friend auto operator<=>(const AnyCancellable& a, const AnyCancellable& b) noexcept {
        return std::compare_three_way{}(a.action_.get(), b.action_.get());
    }
    friend bool operator==(const AnyCancellable& a, const AnyCancellable& b) noexcept {
        return a.action_ == b.action_;
    }

  private:
    std::unique_ptr<std::move_only_function<void()>> action_;
};

}  // namespace zqcore::platform
