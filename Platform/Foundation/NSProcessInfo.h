#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

struct NSOperatingSystemVersion {
    long majorVersion = 0;
    long minorVersion = 0;
    long patchVersion = 0;
    friend bool operator==(const NSOperatingSystemVersion&, const NSOperatingSystemVersion&) = default;
};

/// What the system knows about this process. Threads: any, as long as nobody changes the environment
/// meanwhile. Nothing is kept: every call asks again.
class ZQ_EXPORT NSProcessInfo final {
  public:
    [[nodiscard]] static const NSProcessInfo& processInfo() noexcept;

    [[nodiscard]] std::map<std::string, std::string> environment() const;
    /// One variable of the environment; absent if it isn't set.
    [[nodiscard]] std::optional<std::string> environment(const std::string& name) const;
    [[nodiscard]] std::vector<std::string> arguments() const;
    /// The file name of the executable.
    [[nodiscard]] std::string processName() const;
    [[nodiscard]] std::int32_t processIdentifier() const noexcept;
    /// The numbers of VERSION_ID in os-release(5); 0 for one that isn't there.
    [[nodiscard]] NSOperatingSystemVersion operatingSystemVersion() const;

    /// Asks the system not to end this process by itself. Nothing here ends processes, so the wish is only
    /// noted: for as long as the process lives, each call with its reason.
    void disableAutomaticTermination(std::string reason) const;
    [[nodiscard]] std::vector<std::string> automaticTerminationReasons() const;
    /// The same for ending without asking; counted.
    void disableSuddenTermination() const noexcept;
    [[nodiscard]] int suddenTerminationDisableCount() const noexcept;

  private:
    NSProcessInfo() = default;
};

}  // namespace zqcore::platform
