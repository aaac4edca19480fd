// Hears distributed requests. Prints "listening", then "PATH JSON" for each.
// Usage: DistributedListener IDENTIFIER
#include <unistd.h>

#include <cstdio>
#include <string>

#include "Classes/AppleScript/DistributedSender/DistributedSender.h"
#include "Platform/Scripting/ScriptingBus.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/LogCapture.h"

using namespace zqcore;

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const testkit::LogCapture log;
    const auto bundle = testkit::FakeBundle::named(argv[1]);
    const auto& sender = DistributedSender::defaultSender();
    sender->injectPostHandler([](const std::string& path, const std::string& json) {
        std::printf("%s %s\n", path.c_str(), json.c_str());
        std::fflush(stdout);
    });
    // The bus answers in order: what is posted once this has come back will be heard.
    (void)platform::ScriptingBus::current().nameHasOwner("org.freedesktop.DBus");
    std::puts("listening");
    std::fflush(stdout);
    for (;;) ::pause();
}
