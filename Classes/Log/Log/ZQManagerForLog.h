#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {
class DDLog;
}  // namespace zqcore::platform

namespace zqcore {

/// The process's loggers and their level. Every logger made here writes to the system's log and to files of
/// its own directory, ROOT/"ZQLogs"/NAME, and begins with a banner that tells the application, the machine
/// and the well-known directories. Threads: any; what is done once is done once. Lifetime: the shared logger
/// lives as long as the process, others as long as the caller keeps them. Failure: an empty name gives the
/// absent value; nothing else is told.
class ZQ_EXPORT ZQManagerForLog final {
  public:
    ZQManagerForLog() = delete;

    /// Restores the stored level and gives the system's log its line format. Every other operation does this
    /// first, so nobody needs to call it.
    static void initialize();

    /// The process's default logger, named "Default". Made and configured at the first use. While that goes
    /// on, the thread that does it gets the unfinished logger, so that what it asks for may log.
    [[nodiscard]] static const std::shared_ptr<DDLog>& sharedDDLog();
    /// A new configured logger on each call; for "Default" the shared one, for an empty name none.
    [[nodiscard]] static std::shared_ptr<DDLog> createDDLogWithName(std::string_view name);
    /// Adds the two outputs to `ddlog` and writes the banner, if the level lets it. An empty name has no log
    /// directory; the files then lie where the platform puts those of an application that names none.
    static void configDDLog(DDLog& ddlog, std::string_view name);

    [[nodiscard]] static std::string rootLogDirectory();
    /// Absent for an empty name.
    [[nodiscard]] static std::optional<std::string> logDirectoryWithName(std::string_view name);
    /// The shared logger's directory. Worked out once.
    [[nodiscard]] static const std::string& defaultLogDirectory();

    /// Puts a level mask in force and stores its low 32 bits for the next launch.
    static void setLogLevel(std::uint64_t level);
    /// Puts the stored level in force, if a number is stored.
    static void restoreLogLevel();

    /// Puts `ddlog` in the place of the shared logger, or that one back for a null pointer. For test kits; a
    /// logger that was installed must live as long as the process.
    static void installSharedDDLogForTesting(const std::shared_ptr<DDLog>* ddlog);
};

}  // namespace zqcore
