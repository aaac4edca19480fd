#include "Platform/Combine/AnyCancellable.h"

#include <atomic>
#include <utility>

namespace zqcore::platform {

namespace {

class Subscription final : public NSObject {
  public:
    explicit Subscription(std::move_only_function<void()> action) : action_(std::move(action)) {}
    ~Subscription() override { cancel(); }

    void cancel() {
        if (cancelled_.exchange(true)) return;
        // Taken first: what the action holds ends with it, not with the last copy.
        if (auto action = std::exchange(action_, nullptr)) action();
    }

  private:
    std::atomic<bool> cancelled_{false};
    std::move_only_function<void()> action_;
};

}  // namespace

AnyCancellable::AnyCancellable(std::move_only_function<void()> action)
    : object_(makeObject<Subscription>(std::move(action))) {}

void AnyCancellable::cancel() const {
    // Held, since the action may end the place that this one lies in.
    const auto held = object_;
    if (held) static_cast<Subscription&>(*held).cancel();
}

AnyCancellable AnyCancellable::ofObject(std::shared_ptr<NSObject> object) noexcept {
    AnyCancellable one;
    if (dynamic_cast<Subscription*>(object.get())) one.object_ = std::move(object);
    return one;
}

}  // namespace zqcore::platform
