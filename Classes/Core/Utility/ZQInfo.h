#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Base/Export.h"

namespace zqcore {

/// What this application is and what machine it runs on. Nothing is cached: every read asks the system again.
/// Threads: any.
/// Failure: a fact that is missing reads as the empty text, or as absent where the type says so.
class ZQ_EXPORT ZQInfo final {
  public:
    ZQInfo() = delete;

    /// The boolean under "ZQCore_sandboxed" of the information dictionary; without one, whether the
    /// environment has a non-empty "APP_SANDBOX_CONTAINER_ID".
    [[nodiscard]] static bool appSandboxed();
    [[nodiscard]] static std::string appBundleName();
    [[nodiscard]] static std::optional<std::string> appDisplayName();
    [[nodiscard]] static std::string appIdentifier();
    [[nodiscard]] static std::string appVersion();
    [[nodiscard]] static std::string appBuild();
    /// Version and build as in 1.2.3[456]; "[]" without either.
    [[nodiscard]] static std::string appFullVersion();
    /// "macOS " and the three numbers of the operating system's version.
    [[nodiscard]] static std::string macOSVersion();
    [[nodiscard]] static std::string macModel();
    [[nodiscard]] static std::string macArchitecture();
    /// The hardware address of a network interface as upper-case hexadecimal digits: twelve for six bytes.
    [[nodiscard]] static std::optional<std::string> macGuid();
    [[nodiscard]] static std::int32_t pid();
};

}  // namespace zqcore
