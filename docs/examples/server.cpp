// docs/examples/server.cpp
#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"
#include "Classes/Core/Utility/ZQInfo.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/NSScriptSuiteRegistry.h"

int main() {
    using namespace zqcore;
    const auto status =
        NSScriptSuiteRegistry::serve(ZQInfo::appIdentifier(), [](NSScriptCommandDescription call) {
            return makeObject<ASBaseRequestCommand>(std::move(call));  // a subclass adds its own paths
        });
    if (status != ScriptingServeStatus::serving) return 1;
    RunLoop::main().run();
}
