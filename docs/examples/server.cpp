// docs/examples/server.cpp
#include <cstdio>

#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"
#include "Classes/Core/Utility/ZQInfo.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/NSScriptSuiteRegistry.h"

int main() {
    using namespace zqcore;
    const auto identifier = ZQInfo::appIdentifier();  // that of the Info.plist
    const auto status = NSScriptSuiteRegistry::serve(identifier, [](NSScriptCommandDescription call) {
        return makeObject<ASBaseRequestCommand>(std::move(call));  // a subclass adds its own paths
    });
    if (status != ScriptingServeStatus::serving) {
        std::fprintf(stderr, "can't serve \"%s\": %s\n", identifier.c_str(), reason(status));
        return 1;
    }
    RunLoop::main().run();
}
