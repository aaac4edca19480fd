#pragma once

#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Combine/RACDisposable.h"

namespace zqcore {

namespace drak_mode {

/// Calls `changed` with the object for dark and light as long as it lives; the first call comes inside this
/// one when it is on the main thread.
ZQ_EXPORT std::shared_ptr<RACDisposable> follow(const std::shared_ptr<NSObject>& object,
                                                std::function<void(NSObject&, bool isDark)> changed);

}  // namespace drak_mode

/// Lets an object follow the light and the dark appearance.
///
///     DrakMode::execute(view, [](CardView& card) { card.setRule("#EFEFEF"); },
///                             [](CardView& card) { card.setRule("#313233"); });
///
/// Threads: from any; the closures run on the main thread. Lifetime: it ends with the object, which is not
/// kept, or by the disposable; dropping that ends nothing. Failure: a null object is called for nothing.
class DrakMode final {
  public:
    DrakMode() = delete;

    /// Runs the closure that matches the appearance now, and the one that matches after each change.
    template <class T>
    static std::shared_ptr<RACDisposable> execute(const std::shared_ptr<T>& object,
                                                  std::type_identity_t<std::function<void(T&)>> light,
                                                  std::type_identity_t<std::function<void(T&)>> dark) {
        return drak_mode::follow(
            object, [light = std::move(light), dark = std::move(dark)](NSObject& receiver, bool isDark) {
                const auto& matching = isDark ? dark : light;
                if (matching) matching(static_cast<T&>(receiver));
            });
    }
};

}  // namespace zqcore
