#pragma once

#include <compare>
#include <functional>
#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

/// What ends a subscription: by `cancel`, or with its last copy. Copies are the same subscription, and they
/// are equal; order is identity. One that was moved from is empty and does nothing. Threads: a value; of
/// several threads that cancel, one runs the action, on itself. Failure: none.
class ZQ_EXPORT AnyCancellable final {
  public:
    AnyCancellable() noexcept = default;
    explicit AnyCancellable(std::move_only_function<void()> action);

    /// Runs the action, once; later calls do nothing.
    void cancel() const;

    /// The object that the copies share, for what hangs on objects: associated values, weak references. Null
    /// for an empty one.
    [[nodiscard]] const std::shared_ptr<NSObject>& object() const noexcept { return object_; }
    /// The subscription whose object this is; an empty one for any other object.
    [[nodiscard]] static AnyCancellable ofObject(std::shared_ptr<NSObject> object) noexcept;

    friend auto operator<=>(const AnyCancellable& a, const AnyCancellable& b) noexcept {
        return std::compare_three_way{}(a.object_.get(), b.object_.get());
    }
    friend bool operator==(const AnyCancellable& a, const AnyCancellable& b) noexcept = default;

  private:
    std::shared_ptr<NSObject> object_;
};

}  // namespace zqcore::platform
