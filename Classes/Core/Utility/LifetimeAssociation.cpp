#include "Classes/Core/Utility/LifetimeAssociation.h"

#include <algorithm>
#include <utility>

#include "Classes/Core/Utility/ObjectAssociation.h"

namespace zqcore {

class LifetimeAssociation::ObjectLifetimeTracker final {
  public:
    using List = std::vector<std::shared_ptr<ObjectLifetimeTracker>>;

    ObjectLifetimeTracker(std::shared_ptr<NSObject> tied, Handler handler)
        : object(std::move(tied)), deinitHandler(std::move(handler)) {}
    ObjectLifetimeTracker(const ObjectLifetimeTracker&) = delete;
    ObjectLifetimeTracker& operator=(const ObjectLifetimeTracker&) = delete;
    ~ObjectLifetimeTracker() {
        // First the handler, then the object goes.
        if (deinitHandler) deinitHandler();
    }

    /// The slot of an owner with all its trackers.
    static const ObjectAssociation<List> trackers;

    const std::shared_ptr<NSObject> object;
    Handler deinitHandler;
};

const ObjectAssociation<LifetimeAssociation::ObjectLifetimeTracker::List>
    LifetimeAssociation::ObjectLifetimeTracker::trackers;

std::shared_ptr<LifetimeAssociation> LifetimeAssociation::make(std::shared_ptr<NSObject> object,
                                                               const std::shared_ptr<NSObject>& owner,
                                                               Handler deinitHandler) {
    return std::make_shared<LifetimeAssociation>(Private{}, std::move(object), owner,
                                                 std::move(deinitHandler));
}

LifetimeAssociation::LifetimeAssociation(Private, std::shared_ptr<NSObject> object,
                                         const std::shared_ptr<NSObject>& owner, Handler deinitHandler)
    : owner_(owner) {
    auto tracker = std::make_shared<ObjectLifetimeTracker>(std::move(object), std::move(deinitHandler));
    wrappedObject_ = tracker;
    if (!owner) return;
    auto list = ObjectLifetimeTracker::trackers[*owner].value_or(ObjectLifetimeTracker::List());
    list.push_back(std::move(tracker));
    ObjectLifetimeTracker::trackers.set(*owner, std::move(list));
}

LifetimeAssociation::~LifetimeAssociation() { invalidate(); }

void LifetimeAssociation::invalidate() {
    const auto owner = owner_.lock();
    // The last reference, when the list has let the tracker go: its handler runs at the end of this function.
    const auto tracker = wrappedObject_.lock();
    if (!owner || !tracker) return;
    auto list = ObjectLifetimeTracker::trackers[*owner];
    if (!list) return;
    const auto found = std::ranges::find(*list, tracker);
    if (found == list->end()) return;
    list->erase(found);
    ObjectLifetimeTracker::trackers.set(*owner, std::move(list));
    owner_.reset();
}

void LifetimeAssociation::invalidateSilently() {
    if (const auto tracker = wrappedObject_.lock()) tracker->deinitHandler = nullptr;
    invalidate();
}

std::vector<std::shared_ptr<NSObject>> LifetimeAssociation::objectsTiedTo(const NSObject& owner) {
    std::vector<std::shared_ptr<NSObject>> objects;
    for (const auto& tracker :
         ObjectLifetimeTracker::trackers[owner].value_or(ObjectLifetimeTracker::List())) {
        if (tracker->object) objects.push_back(tracker->object);
    }
    return objects;
}

}  // namespace zqcore
