#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Scripting/SBApplication.h"

namespace zqcore {

// What the bridge wants of a scripting object, each on top of the last. Whether a target really has
// `request:` is found out at run time, by `respondsToSelector`.

template <class T>
concept SBObjectProtocol = requires(T& object) {
    object.get();
};

template <class T>
concept SBApplicationProtocol = SBObjectProtocol<T> &&
    requires(T& application, std::weak_ptr<SBApplicationDelegate> delegate) {
    application.activate();
    { application.delegate() } -> std::same_as<std::shared_ptr<SBApplicationDelegate>>;
    application.setDelegate(delegate);
    { application.isRunning() } -> std::same_as<bool>;
};

template <class T>
concept BridgeApplication = SBApplicationProtocol<T> && requires(T& application, std::string_view text) {
    { application.respondsToSelector(text) } -> std::same_as<bool>;
    { application.request(text) } -> std::same_as<std::optional<std::string>>;
};

static_assert(BridgeApplication<SBApplication>);

}  // namespace zqcore
