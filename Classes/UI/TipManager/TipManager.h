#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "Classes/UI/TipManager/TipInfo.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Decides whether a tip may appear, when, where, and when it has to go. There is at most one on screen in
/// the whole process and one that waits. Time: a delayed tip waits a second, unless one is up or went less
/// than a second ago. Units: points. Threads: the operations from any, acting on the main thread: at once if
/// called there; the rest, callbacks included, is the main thread's. Lifetime: it keeps no view; a view that
/// goes takes its tip with it. Failure: what may not be shown ends with nothing on screen.
class ZQ_EXPORT TipManager final {
  public:
    TipManager() = delete;
    using CloseCallback = std::function<void()>;

    /// For every `TipInfo` that says nothing itself; `immediately` at first. Main thread.
    [[nodiscard]] static TipDisplayStrategy displayStrategy();
    static void setDisplayStrategy(TipDisplayStrategy strategy);
    /// The number of the tip's window; absent while there is none. Main thread.
    [[nodiscard]] static std::optional<int> windowNumber();

    /// Asks for the tip of `view`; one that waits, whichever it is, is dropped. `closeCallback` runs when the
    /// tip goes, unless this view's own next tip takes its place.
    ///
    /// A tip shows only while its view lies wholly on the screen of its visible window, on the present space,
    /// with the pointer in it. It goes by any button or key, and when the pointer moves or the wheel turns
    /// and that no longer holds.
    static void showTip(const std::shared_ptr<NSView>& view, const std::shared_ptr<TipInfo>& info,
                        CloseCallback closeCallback = {});
    /// Ends the tip of that view, waiting or shown; without a view any.
    static void close(const std::shared_ptr<NSView>& view = nullptr);
    /// Closes the shown tip if it may not be shown any more, as after scrolling.
    static void closeIfNeed();
};

}  // namespace zqcore
