#pragma once

#include <string_view>

// Real deaths, for showing and testing what crash capture makes of them.
namespace faults {

/// Blank-separated: segv abort bus ill fpe trap throw overflow.
inline constexpr std::string_view kNames = "segv abort bus ill fpe trap throw overflow";

[[nodiscard]] bool isKnown(std::string_view name) noexcept;

/// Ends the process by the fault of that name, on the calling thread; no core file is left. Returns only for
/// an unknown name. Throws for "throw".
void commit(std::string_view name);

/// The same on a serial queue with the label "com.tessaradev.faulty"; does not return for a known name.
void commitOnQueue(std::string_view name);

}  // namespace faults
