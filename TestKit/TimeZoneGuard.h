#pragma once

#include <optional>
#include <string>

namespace zqcore::testkit {

/// Puts the process into another time zone ("Europe/Berlin") until the guard ends. Threads: only while no
/// other thread reads the environment or works with dates.
class TimeZoneGuard final {
  public:
    explicit TimeZoneGuard(const char* zone);
    ~TimeZoneGuard();
    TimeZoneGuard(const TimeZoneGuard&) = delete;
    TimeZoneGuard& operator=(const TimeZoneGuard&) = delete;

  private:
    std::optional<std::string> earlier_;
};

}  // namespace zqcore::testkit
