#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore {

/// Fires a function at most once for every so many days, and remembers that across launches: in the standard
/// user defaults, under "ZQTrigger_" and the caller's key, as seconds since 1970.
/// Time: the wall. The period must be over by more than nothing: at its exact end it doesn't fire.
/// Threads: any; one lock holds all operations from start to end, also while `execute` or `cancel` runs. They
/// may come back here on their own thread, and must not wait for another that does. Failure: a count of 0 or
/// an empty key does nothing at all; a stored value that isn't a number counts as none.
class ZQ_EXPORT ZQTrigger final {
  public:
    using Action = std::function<void()>;

    ZQTrigger() = delete;

    /// Calls `execute` if more than `count` times 24 hours have passed since it last did, else `cancel`.
    static void triggerOnceForNumberOf24Hour(std::uint64_t count, std::string_view key, const Action& execute,
                                             const Action& cancel = nullptr);
    /// The same, counted from the start of the day, in the current time zone, on which it last fired.
    static void triggerOnceForNumberOfDateDay(std::uint64_t count, std::string_view key,
                                              const Action& execute, const Action& cancel = nullptr);
    static void resetWithKey(std::string_view key);
    static void resetAll();
};

}  // namespace zqcore
