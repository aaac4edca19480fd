// orbel: the main application as a small demonstration server. It takes what is asked of it and remembers
// nothing of it but a line in its log: the real application has the translating.

#include <string_view>

#include "Apps/Common/ServerCommand.h"
#include "Apps/Orbel/OrbelHandlers.h"

namespace {

constexpr std::string_view kHelp =
    "usage: orbel [OPTIONS]\n\n"
    "Serves the main application's requests over the session bus until SIGTERM or SIGINT. Started by the\n"
    "bus, it ends when that is gone.\n\n"
    "  --without PATH      acts as if it had never heard of that request, as an older release; may be "
    "repeated\n"
    "  --end-with PID      ends when that process ends\n"
    "  --allow-crash       hears \"debug/crash\", which ends it by a fault: for showing crash reports\n"
    "  --version           tells the release\n";

}  // namespace

int main(int argc, char** argv) {
    using namespace demo;
    using Command = ServerCommand<ServeTranslate, ServeOCR, ServeLaunch, ServeHotkeyFetch, ServeHotkeyHandle>;
    static ServerOptions options;
    if (!parseServerOptions(argc, argv, options, kHelp)) return 2;
    return runServer(options, [](zqcore::NSScriptCommandDescription description) {
        return zqcore::makeObject<Command>(std::move(description), options);
    });
}
