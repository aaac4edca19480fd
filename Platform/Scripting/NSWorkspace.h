#pragma once

#include <functional>
#include <optional>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSURL.h"

namespace zqcore::platform {

/// What the desktop knows about applications. Threads: any. Failure: absent for what isn't known.
class ZQ_EXPORT NSWorkspace final {
  public:
    /// Whether the session bus knows a name: one that is owned, or that it can start.
    using BusNameLookup = std::function<bool(std::string_view name)>;

    [[nodiscard]] static NSWorkspace& shared();

    /// Where the application with that identifier lies: its desktop entry, or "dbus:IDENTIFIER" for one that
    /// only the session bus knows. Starts nothing. A desktop entry IDENTIFIER.desktop is looked for below
    /// "applications" in XDG_DATA_HOME and XDG_DATA_DIRS, the first one found counts, a hyphen may stand for
    /// a folder, and one that is Hidden or whose TryExec is missing doesn't count (Desktop Entry
    /// Specification).
    [[nodiscard]] std::optional<NSURL> URLForApplicationWithBundleIdentifier(
        std::string_view identifier) const;

    /// Hands `url` to whatever the desktop opens its kind with, through the OpenURI portal or, where there is
    /// none and for files, by xdg-open. False if neither takes it, or without a scheme; doesn't wait for what
    /// the user sees, but up to five seconds for the portal.
    bool openURL(const NSURL& url);
    /// Asks `opener` in place of the desktop; one without content brings the desktop back.
    using URLOpener = std::function<bool(const NSURL& url)>;
    void setURLOpenerForTesting(URLOpener opener);

    /// Asks `lookup` in place of the session bus; one without content brings the bus back.
    void setBusNameLookupForTesting(BusNameLookup lookup);

  private:
    NSWorkspace() = default;
};

}  // namespace zqcore::platform
