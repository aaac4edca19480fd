#pragma once

#include <any>
#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The root of objects with identity. They are held by `std::shared_ptr` and made by `makeObject`.
/// Threads: associated values and dealloc handlers may be set from any thread.
/// Lifetime: at the last reference weak references read nothing; then the dealloc handlers run, then the
/// destructors and the fields go, and last the associated values.
class ZQ_EXPORT NSObject : public std::enable_shared_from_this<NSObject> {
  public:
    NSObject() = default;
    NSObject(const NSObject&) = delete;
    NSObject& operator=(const NSObject&) = delete;
    virtual ~NSObject();

    /// Stores `value` under the address `key`; a value without content removes.
    void setAssociatedValue(const void* key, std::any value);
    /// A copy of the value under `key`, without content if there is none.
    [[nodiscard]] std::any associatedValue(const void* key) const;

    /// Runs `handler` once when the object dies, before its own destructor, in the order of registration. It
    /// can't reach the object any more. Only for objects that `makeObject` made.
    void addDeallocHandler(std::move_only_function<void()> handler);

    /// A text for log lines: the type's name and the address.
    [[nodiscard]] virtual std::string description() const;

  protected:
    /// Called once by `makeObject` on the finished object: what a constructor can't do, since virtual calls
    /// don't reach the derived class there and `weak_from_this()` is still empty. An override calls its
    /// base's first.
    virtual void setup() {}

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);

    struct SideTable;
    SideTable& sideTable() const;
    void willDealloc() noexcept;

    // Most objects never need one, so it is made at first use.
    mutable std::atomic<SideTable*> sideTable_{nullptr};
};

/// Makes an object of a class below `NSObject` in two phases, constructor and `setup`; the one way to get
/// dealloc handlers run.
template <class T, class... Arguments>
[[nodiscard]] std::shared_ptr<T> makeObject(Arguments&&... arguments) {
    auto made = std::shared_ptr<T>(new T(std::forward<Arguments>(arguments)...), [](T* object) {
        static_cast<NSObject*>(object)->willDealloc();
        delete object;
    });
    static_cast<NSObject*>(made.get())->setup();
    return made;
}

}  // namespace zqcore::platform
