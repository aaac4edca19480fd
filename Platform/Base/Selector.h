#pragma once

#include <string_view>

#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

/// The name of an operation together with the way to perform it on an object, for what calls a target that it
/// knows nothing else of. Two are equal if they are the same operation under the same name.
/// Threads: a value; performing runs on the caller's thread. Lifetime: the name must be a literal.
///
///     constexpr auto kReload = Selector::of<&Panel::reload>("reload");     // void reload(NSObject* sender)
///     kReload.perform(*panel, button.get());
class Selector final {
  public:
    /// The operation of a class below `NSObject`, with the sender or without arguments.
    template <auto Operation>
    [[nodiscard]] static constexpr Selector of(std::string_view name) noexcept {
        return Selector(name, &call<Operation>);
    }

    [[nodiscard]] constexpr std::string_view name() const noexcept { return name_; }

    /// Calls the operation on `target`; on an object of another class nothing happens. `sender` may be null.
    /// Gives whether the target has the operation.
    bool perform(NSObject& target, NSObject* sender) const { return call_(target, sender); }

    friend constexpr bool operator==(const Selector&, const Selector&) noexcept = default;

  private:
    using Call = bool (*)(NSObject&, NSObject*);

    constexpr Selector(std::string_view name, Call trampoline) noexcept : name_(name), call_(trampoline) {}

    template <auto Operation>
    static bool call(NSObject& target, NSObject* sender) {
        return perform(Operation, target, sender);
    }
    template <class T>
    static bool perform(void (T::*operation)(), NSObject& target, NSObject* /*sender*/) {
        auto* receiver = dynamic_cast<T*>(&target);
        if (receiver) (receiver->*operation)();
        return receiver != nullptr;
    }
    template <class T>
    static bool perform(void (T::*operation)(NSObject*), NSObject& target, NSObject* sender) {
        auto* receiver = dynamic_cast<T*>(&target);
        if (receiver) (receiver->*operation)(sender);
        return receiver != nullptr;
    }

    std::string_view name_;
    Call call_;
};

}  // namespace zqcore::platform
