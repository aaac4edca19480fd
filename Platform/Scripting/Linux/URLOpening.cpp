// The desktop's OpenURI portal, https://flatpak.github.io/xdg-desktop-portal; where there is none, and for
// files, which the portal takes as descriptors only, xdg-open.
#include <systemd/sd-bus.h>

#include <cctype>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Platform/Base/Linux/PipeSignalHeld.h"
#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Scripting/Linux/Subprocess.h"
#include "Platform/Scripting/NSWorkspace.h"

namespace zqcore::platform {
namespace {

constexpr std::uint64_t kPortalLimit = 5'000'000;  // microseconds

struct Opener {
    std::mutex mutex;
    NSWorkspace::URLOpener installed;
};

Opener& opener() {
    // Never ended: threads may still ask while the process goes.
    static auto& shared = *new Opener;
    return shared;
}

/// Scheme and colon in front, RFC 3986 section 3.1.
bool hasScheme(const std::string& url) {
    const std::size_t colon = url.find(':');
    if (colon == std::string::npos || colon == 0 || !std::isalpha(static_cast<unsigned char>(url[0]))) {
        return false;
    }
    for (std::size_t i = 0; i < colon; ++i) {
        const auto c = static_cast<unsigned char>(url[i]);
        if (!std::isalnum(c) && c != '+' && c != '-' && c != '.') return false;
    }
    return true;
}

/// Whether the portal took the request. What the user's choice was comes later, and nobody waits for it.
bool openByPortal(const std::string& url) {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return false;
    const std::unique_ptr<sd_bus, ReleasedBy<sd_bus_flush_close_unref>> bus(opened);
    sd_bus_set_method_call_timeout(opened, kPortalLimit);
    return sd_bus_call_method(opened, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                              "org.freedesktop.portal.OpenURI", "OpenURI", nullptr, nullptr, "ssa{sv}", "",
                              url.c_str(), 0) >= 0;
}

/// Left running by a shell of its own, so that nobody has to reap it.
bool openByCommand(const std::string& url) {
    const PipeSignalHeld held;
    const auto result = runSubprocess(
        {"/bin/sh", "-c", R"(command -v xdg-open >/dev/null || exit 127; xdg-open "$1" >/dev/null 2>&1 &)",
         "sh", url},
        {}, {});
    return result && result->end == SubprocessResult::End::exited && result->number == 0;
}

}  // namespace

bool NSWorkspace::openURL(const NSURL& url) {
    if (!hasScheme(url.absoluteString())) return false;
    URLOpener installed;
    {
        const std::lock_guard lock(opener().mutex);
        installed = opener().installed;
    }
    if (installed) return installed(url);
    if (!url.isFileURL() && openByPortal(url.absoluteString())) return true;
    return openByCommand(url.absoluteString());
}

void NSWorkspace::setURLOpenerForTesting(URLOpener urlOpener) {
    const std::lock_guard lock(opener().mutex);
    opener().installed = std::move(urlOpener);
}

}  // namespace zqcore::platform
