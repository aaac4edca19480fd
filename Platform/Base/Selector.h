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

    /// Calls the operation on `target`; nothing happens on an object of another class. `sender` may be null.
    void perform(NSObject& target, NSObject* sender) const { call_(target, sender); }

    friend constexpr bool operator==(const Selector&, const Selector&) noexcept = default;

  private:
    using Call = void (*)(NSObject&, NSObject*);

    constexpr Selector(std::string_view name, Call trampoline) noexcept : name_(name), call_(trampoline) {}

    template <auto Operation>
    static void call(NSObject& target, NSObject* sender) {
        perform(Operation, target, sender);
    }
    template <class T>
    static void perform(void (T::*operation)(), NSObject& target, NSObject* /*sender*/) {
        if (auto* receiver = dynamic_cast<T*>(&target)) (receiver->*operation)();
    }
    template <class T>
    static void perform(void (T::*operation)(NSObject*), NSObject& target, NSObject* sender) {
        if (auto* receiver = dynamic_cast<T*>(&target)) (receiver->*operation)(sender);
    }

    std::string_view name_;
    Call call_;
};

}  // namespace zqcore::platform
