#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"
#include "Platform/Foundation/NSProcessInfo.h"

namespace zqcore::platform {

/// One entry of the device registry: its own properties, and those of the device that carries it.
struct IORegistryEntry {
    std::string bsdName;
    Value::Dictionary properties;
    Value::Dictionary parentProperties;
};

/// Where the facts about the machine come from. The system's reads /sys, /proc-like trees and os-release
/// below a root folder; a test installs one with a small tree of its own, or one that answers what it likes.
/// Threads: any. Failure: an absent value, an empty list.
class ZQ_EXPORT MachineFacts {
  public:
    virtual ~MachineFacts() = default;
    /// "hw.model" and "hw.machine"; absent for every other name and for what the machine doesn't tell.
    [[nodiscard]] virtual std::optional<std::string> systemControl(std::string_view name) const = 0;
    /// The network interfaces that answer to a BSD name.
    [[nodiscard]] virtual std::vector<IORegistryEntry> networkServices(std::string_view bsdName) const = 0;
    [[nodiscard]] virtual NSOperatingSystemVersion operatingSystemVersion() const = 0;

    [[nodiscard]] static const MachineFacts& current() noexcept;
    /// Puts `facts` in force, the system's again for a null pointer. It must outlive its use.
    static void installForTesting(const MachineFacts* facts) noexcept;
    /// The system's own way of reading, below `root` ("/" for this machine). `machine` stands for what the
    /// kernel calls the architecture.
    [[nodiscard]] static std::unique_ptr<MachineFacts> belowRoot(std::string root, std::string machine);
};

/// sysctlbyname(3) for text values: with a null `oldp` only the size is told, its closing NUL included. An
/// unknown name leaves the size 0 and gives -1.
ZQ_EXPORT int sysctlbyname(const char* name, void* oldp, std::size_t* oldlenp);

/// The registry entries for a BSD name such as "en0".
///
/// How interfaces get these names: only real hardware of the Ethernet type (Wi-Fi is of it too) with a
/// permanent address counts. An interface that itself is called "en" and a number keeps its name. The others
/// take the free numbers from 0 up, built-in ones before those on USB, each group in the order of their
/// names, so that plugging in an adapter doesn't rename what is soldered on.
[[nodiscard]] ZQ_EXPORT std::vector<IORegistryEntry> IOServiceGetMatchingServices(std::string_view bsdName);
/// A property of the entry itself.
[[nodiscard]] ZQ_EXPORT std::optional<Value> IORegistryEntryCreateCFProperty(const IORegistryEntry& entry,
                                                                             std::string_view key);
/// A property of the entry or, failing that, of what carries it.
[[nodiscard]] ZQ_EXPORT std::optional<Value> IORegistryEntrySearchCFProperty(const IORegistryEntry& entry,
                                                                             std::string_view key);

}  // namespace zqcore::platform
