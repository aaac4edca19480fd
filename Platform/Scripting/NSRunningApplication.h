#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Foundation/NSURL.h"

namespace zqcore::platform {

/// A process of this machine, by its number. Threads: any. Lifetime: it tells of the process as it was when
/// it was looked up. Failure: null for a number that no process has.
class ZQ_EXPORT NSRunningApplication final : public NSObject {
  public:
    [[nodiscard]] static std::shared_ptr<NSRunningApplication> currentApplication();
    [[nodiscard]] static std::shared_ptr<NSRunningApplication> runningApplicationWithProcessIdentifier(
        std::int32_t processIdentifier);

    [[nodiscard]] std::int32_t processIdentifier() const noexcept { return identifier_; }
    /// Its program; absent where the system doesn't tell, as of another user's process (proc(5), "exe").
    [[nodiscard]] const std::optional<NSURL>& executableURL() const noexcept { return executable_; }

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSRunningApplication(std::int32_t processIdentifier, std::optional<NSURL> executable)
        : identifier_(processIdentifier), executable_(std::move(executable)) {}

    std::int32_t identifier_;
    std::optional<NSURL> executable_;
};

}  // namespace zqcore::platform
