// The file chooser portal, https://flatpak.github.io/xdg-desktop-portal: OpenFile answers with the path of a
// request object, whose signal Response brings the user's answer.
#include "Platform/Scripting/PortalOpenPanel.h"

#include <systemd/sd-bus.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"

namespace zqcore::platform {
namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kFileChooser = "org.freedesktop.portal.FileChooser";
constexpr const char* kToken = "zqcore";
constexpr std::uint32_t kChosen = 0;

using Bus = std::unique_ptr<sd_bus, ReleasedBy<sd_bus_flush_close_unref>>;
using Message = std::unique_ptr<sd_bus_message, ReleasedBy<sd_bus_message_unref>>;
using Slot = std::unique_ptr<sd_bus_slot, ReleasedBy<sd_bus_slot_unref>>;

/// What the portal is asked for.
struct Settings {
    std::string title;
    std::string acceptLabel;
    std::string folder;
    bool directories = false;
    bool multiple = false;
};

/// What it answered.
struct Response {
    bool ended = false;
    std::optional<NSURL> chosen;
};

/// Reads the array of URIs in the variant at hand; the first one counts.
void readUris(sd_bus_message* message, Response& response) {
    if (sd_bus_message_enter_container(message, 'v', "as") < 0) return;
    if (sd_bus_message_enter_container(message, 'a', "s") < 0) return;
    const char* uri = nullptr;
    while (sd_bus_message_read(message, "s", &uri) > 0) {
        if (!response.chosen) response.chosen = NSURL(uri);
    }
    sd_bus_message_exit_container(message);
    sd_bus_message_exit_container(message);
}

int onResponse(sd_bus_message* message, void* userdata, sd_bus_error*) {
    auto& response = *static_cast<Response*>(userdata);
    response.ended = true;
    std::uint32_t outcome = kChosen + 1;
    if (sd_bus_message_read(message, "u", &outcome) < 0 || outcome != kChosen) return 0;
    if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) return 0;
    while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
        const char* key = nullptr;
        if (sd_bus_message_read(message, "s", &key) < 0) return 0;
        if (std::string_view(key) == "uris") {
            readUris(message, response);
        } else {
            sd_bus_message_skip(message, "v");
        }
        if (sd_bus_message_exit_container(message) < 0) return 0;
    }
    return 0;
}

/// The path at which the answer will come: known before the call, so that it can't be missed.
std::string requestPath(sd_bus* bus) {
    const char* name = nullptr;
    if (sd_bus_get_unique_name(bus, &name) < 0 || !name) return {};
    std::string sender(name[0] == ':' ? name + 1 : name);
    std::replace(sender.begin(), sender.end(), '.', '_');
    return std::string(kPortalPath) + "/request/" + sender + "/" + kToken;
}

bool appendOptions(sd_bus_message* call, const Settings& settings) {
    if (sd_bus_message_open_container(call, 'a', "{sv}") < 0) return false;
    int status =
        sd_bus_message_append(call, "{sv}{sv}{sv}{sv}", "handle_token", "s", kToken, "accept_label", "s",
                              settings.acceptLabel.c_str(), "directory", "b", settings.directories ? 1 : 0,
                              "multiple", "b", settings.multiple ? 1 : 0);
    if (status < 0) return false;
    if (!settings.folder.empty()) {
        // A path is bytes, with the final NUL among them.
        if (sd_bus_message_open_container(call, 'e', "sv") < 0) return false;
        if (sd_bus_message_append(call, "s", "current_folder") < 0) return false;
        if (sd_bus_message_open_container(call, 'v', "ay") < 0) return false;
        status = sd_bus_message_append_array(call, 'y', settings.folder.c_str(), settings.folder.size() + 1);
        if (status < 0) return false;
        if (sd_bus_message_close_container(call) < 0 || sd_bus_message_close_container(call) < 0)
            return false;
    }
    return sd_bus_message_close_container(call) >= 0;
}

bool openFile(sd_bus* bus, const Settings& settings) {
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(bus, &made, kPortal, kPortalPath, kFileChooser, "OpenFile") < 0)
        return false;
    const Message call(made);
    if (sd_bus_message_append(made, "ss", "", settings.title.c_str()) < 0) return false;
    return appendOptions(made, settings) && sd_bus_call(bus, made, 0, nullptr, nullptr) >= 0;
}

/// Asks the portal and waits as long as the user takes; absent also without a bus or a portal.
std::optional<NSURL> choose(const Settings& settings) {
    sd_bus* opened = nullptr;
    if (sd_bus_open_user(&opened) < 0) return std::nullopt;
    const Bus bus(opened);
    const auto path = requestPath(opened);
    Response response;
    sd_bus_slot* subscribed = nullptr;
    if (path.empty() ||
        sd_bus_match_signal(opened, &subscribed, kPortal, path.c_str(), "org.freedesktop.portal.Request",
                            "Response", onResponse, &response) < 0) {
        return std::nullopt;
    }
    const Slot slot(subscribed);
    // A portal that ends would never answer.
    sd_bus_slot* watching = nullptr;
    const auto onOwnerChanged = [](sd_bus_message* message, void* userdata, sd_bus_error*) {
        const char* newOwner = nullptr;
        if (sd_bus_message_read(message, "sss", nullptr, nullptr, &newOwner) >= 0 && !*newOwner) {
            static_cast<Response*>(userdata)->ended = true;
        }
        return 0;
    };
    const auto rule =
        std::string("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='") +
        kPortal + "'";
    if (sd_bus_add_match(opened, &watching, rule.c_str(), onOwnerChanged, &response) < 0) return std::nullopt;
    const Slot watch(watching);

    if (!openFile(opened, settings)) return std::nullopt;
    while (!response.ended) {
        const int processed = sd_bus_process(opened, nullptr);
        if (processed < 0) return std::nullopt;
        if (processed == 0 && !response.ended && sd_bus_wait(opened, UINT64_MAX) < 0) return std::nullopt;
    }
    return response.chosen;
}

}  // namespace

void PortalOpenPanel::present(const NSOpenPanel& panel, Answer answer) {
    Settings settings{
        panel.message(), panel.prompt(), panel.directoryURL() ? panel.directoryURL()->path() : "",
        panel.canChooseDirectories() && !panel.canChooseFiles(), panel.allowsMultipleSelection()};
    // A user may take hours, so the panel has a thread of its own. Without one the dropped answer cancels.
    (void)startWorkerThread("zq.panel", [settings = std::move(settings),
                                         answer = std::move(answer)]() mutable { answer(choose(settings)); });
}

}  // namespace zqcore::platform
