#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The platform's numbers for well-known folders.
enum class NSSearchPathDirectory : unsigned {
    library = 5,
    documents = 9,
    desktop = 12,
    caches = 13,
    applicationSupport = 14,
    downloads = 15,
    applicationScripts = 23,
};

inline constexpr unsigned NSUserDomainMask = 1;

/// Who answers for the user's folders. The system's body reads the XDG base directories (specification 0.8)
/// and user-dirs.dirs; a test installs one that answers in another system's shapes. Threads: any; the
/// environment is asked at every call. Failure: a folder that isn't known is empty.
class ZQ_EXPORT SearchPaths {
  public:
    virtual ~SearchPaths() = default;
    /// Without a slash at its end.
    [[nodiscard]] virtual std::string homeDirectory() const = 0;
    /// With a slash at its end.
    [[nodiscard]] virtual std::string temporaryDirectory() const = 0;
    /// The user's own folder of that kind, whether it is on disk or not; empty if there is none.
    [[nodiscard]] virtual std::string userDirectory(NSSearchPathDirectory directory) const = 0;

    [[nodiscard]] static const SearchPaths& current() noexcept;
    [[nodiscard]] static const SearchPaths& system() noexcept;
    /// Puts `paths` in force, the system's again for a null pointer. It must outlive its use.
    static void installForTesting(const SearchPaths* paths) noexcept;
};

/// The user's home, without a slash at its end: HOME, else the user database's. Any thread.
[[nodiscard]] ZQ_EXPORT std::string NSHomeDirectory();

/// TMPDIR or /tmp, with a slash at its end. Any thread.
[[nodiscard]] ZQ_EXPORT std::string NSTemporaryDirectory();

/// The folders of that kind in the domains of the mask; only the user's domain has any. Here: Documents,
/// Desktop and Downloads by user-dirs.dirs, Library = XDG_CONFIG_HOME, Caches = XDG_CACHE_HOME, Application
/// Support = XDG_DATA_HOME, Application Scripts = XDG_DATA_HOME/Application Scripts/IDENTIFIER (none without
/// an identifier of the main bundle). Paths are always given in full, so `expandTilde` changes nothing. Any
/// thread.
[[nodiscard]] ZQ_EXPORT std::vector<std::string> NSSearchPathForDirectoriesInDomains(
    NSSearchPathDirectory directory, unsigned domainMask, bool expandTilde);

}  // namespace zqcore::platform
