#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore {

/// Ties the life of one object to another: the owner keeps the object, and a handler runs when the tie ends.
/// It ends with the owner, or with this association, whichever goes first.
/// Threads: no lock; a tie belongs to its owner's thread. The handler runs on the thread that ends the tie.
/// Lifetime: this holds neither the object nor the owner. When the handler runs the object still lives, and a
/// dying owner can't be reached any more. Failure: without an owner the tie ends at once.
class ZQ_EXPORT LifetimeAssociation final {
    struct Private {};
    class ObjectLifetimeTracker;

  public:
    using Handler = std::move_only_function<void()>;

    [[nodiscard]] static std::shared_ptr<LifetimeAssociation> make(std::shared_ptr<NSObject> object,
                                                                   const std::shared_ptr<NSObject>& owner,
                                                                   Handler deinitHandler);
    LifetimeAssociation(Private, std::shared_ptr<NSObject> object, const std::shared_ptr<NSObject>& owner,
                        Handler deinitHandler);
    /// Ends the tie.
    ~LifetimeAssociation();
    LifetimeAssociation(const LifetimeAssociation&) = delete;
    LifetimeAssociation& operator=(const LifetimeAssociation&) = delete;

    /// Ends the tie without its handler; the owner lets the object go.
    void invalidateSilently();

    /// The objects that are tied to `owner` now, in the order of their ties.
    [[nodiscard]] static std::vector<std::shared_ptr<NSObject>> objectsTiedTo(const NSObject& owner);

  private:
    void invalidate();

    std::weak_ptr<ObjectLifetimeTracker> wrappedObject_;
    std::weak_ptr<NSObject> owner_;
};

}  // namespace zqcore
