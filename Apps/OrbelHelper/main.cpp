// orbel-helper: the resident companion as a small demonstration server.

#include <string_view>

#include "Apps/Common/ServerCommand.h"
#include "Apps/OrbelHelper/HelperHandlers.h"
#include "Apps/OrbelHelper/HelperState.h"

namespace {

using namespace demo;

constexpr std::string_view kHelp =
    "usage: orbel-helper [OPTIONS]\n\n"
    "Serves the helper's requests over the session bus until SIGTERM or SIGINT. Started by the\n"
    "bus, it ends when that is gone.\n\n"
    "  --current-app ID[,NAME[,VERSION]]  the application that is said to be in front\n"
    "  --selected-text TEXT               the text that is said to be selected there\n"
    "  --without PATH                     acts as if it had never heard of that request; may be repeated\n"
    "  --end-with PID                     ends when that process ends\n"
    "  --allow-crash                      hears \"debug/crash\", which ends it by a fault: for showing crash "
    "reports\n"
    "  --version                          tells the release\n";

std::shared_ptr<zqcore::ASClient> parseApplication(std::string_view text) {
    auto application = zqcore::ASClient::make();
    for (auto* field : {&application->identifier, &application->name, &application->version}) {
        const auto comma = text.find(',');
        *field = std::string(text.substr(0, comma));
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    return application;
}

}  // namespace

int main(int argc, char** argv) {
    using Command = ServerCommand<ServeOpen, ServeHotkey, ServeToggle, ServeSelectedText, ServeCurrentApp,
                                  ServeLaunch, ServeHotkeyFetch, ServeHotkeyHandle>;
    static ServerOptions options;
    constexpr ServerOption kOthers[] = {
        {"--current-app", [](auto value) { HelperState::shared().currentApp = parseApplication(value); }},
        {"--selected-text", [](auto value) { HelperState::shared().selectedText = value; }},
    };
    if (!parseServerOptions(argc, argv, options, kHelp, kOthers)) return 2;
    return runServer(options, [](zqcore::NSScriptCommandDescription description) {
        return zqcore::makeObject<Command>(std::move(description), options);
    });
}
