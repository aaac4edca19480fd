#pragma once

#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Combine/AnyCancellable.h"
#include "Platform/Combine/RACSignal.h"

namespace zqcore {

/// Tells whether the application shows the dark appearance, and when that changes.
/// Threads: main thread; the value changes on the main queue, one turn after the appearance did, so that two
/// changes that end where they began change nothing. Lifetime: made at the first use, which comes after the
/// application object exists; then as long as the process. Failure: an appearance that is neither is light.
class ZQ_EXPORT DarkModeManager final : public NSObject {
  public:
    [[nodiscard]] static const std::shared_ptr<DarkModeManager>& shared();

    [[nodiscard]] bool isDarkMode() const { return isDarkMode_->value(); }
    /// The value at once, then each change of it.
    [[nodiscard]] RACSignal<bool> isDarkModeValues() const { return RACSignal<bool>::valuesOf(isDarkMode_); }

    /// Follows the application object of this moment, where a test has put a new one in its place.
    void observeAgainForTesting();

  protected:
    void setup() override;

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> platform::makeObject(Arguments&&...);
    DarkModeManager();
    void observe();
    void readAgain();

    std::shared_ptr<CurrentValueSubject<bool>> isDarkMode_;
    AnyCancellable ob_;
};

}  // namespace zqcore
