#include "Platform/Scripting/NSWorkspace.h"

#include <mutex>
#include <string>
#include <utility>

#include "Platform/Scripting/BusDirectory.h"
#include "Platform/Scripting/Linux/DesktopEntries.h"

namespace zqcore::platform {
namespace {

struct Lookup {
    std::mutex mutex;
    NSWorkspace::BusNameLookup installed;
};

Lookup& lookup() {
    // Never ended: threads may still ask while the process goes.
    static auto& shared = *new Lookup;
    return shared;
}

bool busKnows(std::string_view identifier) {
    NSWorkspace::BusNameLookup installed;
    {
        const std::lock_guard lock(lookup().mutex);
        installed = lookup().installed;
    }
    if (installed) return installed(identifier);
    const std::string name(identifier);
    return nameHasOwner(name) || isActivatable(name);
}

}  // namespace

NSWorkspace& NSWorkspace::shared() {
    static NSWorkspace workspace;
    return workspace;
}

std::optional<NSURL> NSWorkspace::URLForApplicationWithBundleIdentifier(std::string_view identifier) const {
    if (identifier.empty()) return std::nullopt;
    if (const auto entry = findDesktopEntry(identifier)) return NSURL::fileURLWithPath(entry->path);
    if (busKnows(identifier)) return NSURL("dbus:" + std::string(identifier));
    return std::nullopt;
}

void NSWorkspace::setBusNameLookupForTesting(BusNameLookup busNameLookup) {
    const std::lock_guard lock(lookup().mutex);
    lookup().installed = std::move(busNameLookup);
}

}  // namespace zqcore::platform
