#pragma once

#include <string>
#include <utility>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Why an operation of the platform failed: a domain, a number within it, and a text for people.
/// Threads: a value.
class ZQ_EXPORT NSError final {
  public:
    NSError(std::string domain, long code, std::string text)
        : domain_(std::move(domain)), code_(code), text_(std::move(text)) {}

    [[nodiscard]] const std::string& domain() const noexcept { return domain_; }
    [[nodiscard]] long code() const noexcept { return code_; }
    [[nodiscard]] const std::string& localizedDescription() const noexcept { return text_; }
    /// "Error Domain=DOMAIN Code=CODE "TEXT"", the form that log lines carry.
    [[nodiscard]] std::string description() const;

    friend bool operator==(const NSError&, const NSError&) = default;

  private:
    std::string domain_;
    long code_;
    std::string text_;
};

inline constexpr const char* NSCocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr const char* NSPOSIXErrorDomain = "NSPOSIXErrorDomain";
inline constexpr const char* NSOSStatusErrorDomain = "NSOSStatusErrorDomain";

}  // namespace zqcore::platform
