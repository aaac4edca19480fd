#include "Classes/Core/Utility/ZQTargetBindable.h"

#include "Classes/Core/Utility/ObjectAssociation.h"

namespace zqcore::target_binding {

namespace {

class ZQTarget final : public NSObject {
  public:
    void performAction() {
        // A copy: the action may bind another one while it runs.
        const auto closure = perfromActionClosure;
        if (closure) closure(*this);
    }

    std::function<void(ZQTarget&)> perfromActionClosure;
};

const ObjectAssociation<std::shared_ptr<ZQTarget>> slot;

}  // namespace

std::shared_ptr<NSObject> bind(NSObject& receiver, std::function<void()> closure) {
    auto target = slot[receiver];
    if (!target) {
        target = makeObject<ZQTarget>();
        slot.set(receiver, target);
    }
    target->perfromActionClosure = [closure = std::move(closure)](ZQTarget&) { closure(); };
    return target;
}

void unbind(NSObject& receiver) { slot.set(receiver, nullptr); }

Selector performAction() noexcept { return Selector::of<&ZQTarget::performAction>("performAction"); }

}  // namespace zqcore::target_binding
