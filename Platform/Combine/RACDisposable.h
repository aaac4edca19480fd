#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// What ends a subscription when told to. Unlike `AnyCancellable` it does nothing when it is dropped.
/// Threads: any; actions run on the thread that disposes, under no lock. Lifetime: shared; the actions go
/// when they have run. Failure: none.
class ZQ_EXPORT RACDisposable final {
    struct Private {};

  public:
    using Action = std::move_only_function<void()>;

    [[nodiscard]] static std::shared_ptr<RACDisposable> make(Action action = {});
    explicit RACDisposable(Private) {}
    RACDisposable(const RACDisposable&) = delete;
    RACDisposable& operator=(const RACDisposable&) = delete;

    /// Runs the actions, once, the newest first; gives whether this call was the one that did.
    bool dispose();
    [[nodiscard]] bool isDisposed() const;
    /// One more thing to do; at once if it is disposed already.
    void add(Action action);
    void add(std::shared_ptr<RACDisposable> other);

  private:
    mutable std::mutex mutex_;
    bool disposed_ = false;
    std::vector<Action> actions_;
};

}  // namespace zqcore::platform
