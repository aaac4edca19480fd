#include "Platform/Combine/RACDisposable.h"

#include <ranges>
#include <utility>

namespace zqcore::platform {

std::shared_ptr<RACDisposable> RACDisposable::make(Action action) {
    auto disposable = std::make_shared<RACDisposable>(Private());
    if (action) disposable->actions_.push_back(std::move(action));
    return disposable;
}

bool RACDisposable::dispose() {
    std::vector<Action> actions;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(disposed_, true)) return false;
        actions.swap(actions_);
    }
    for (auto& action : std::views::reverse(actions)) action();
    return true;
}

bool RACDisposable::isDisposed() const {
    const std::lock_guard lock(mutex_);
    return disposed_;
}

void RACDisposable::add(Action action) {
    {
        const std::lock_guard lock(mutex_);
        if (!disposed_) {
            actions_.push_back(std::move(action));
            return;
        }
    }
    action();
}

void RACDisposable::add(std::shared_ptr<RACDisposable> other) {
    if (other) add([other = std::move(other)] { other->dispose(); });
}

}  // namespace zqcore::platform
