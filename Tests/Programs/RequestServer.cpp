// A server of typed requests, as an application writes one. Prints "serving" when it serves.
// Usage: RequestServer IDENTIFIER VERSION
#include <unistd.h>

#include <cstdio>
#include <string>
#include <thread>

#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/NSScriptSuiteRegistry.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/LogCapture.h"

using namespace zqcore;

namespace {

/// Answers late, twice, from a thread of its own.
struct ServeHotkeys : CommonHotkeyFetchRequest {
    static void handle(const std::shared_ptr<RequestValue>&, const ASCompletion& completion) {
        std::thread([completion] {
            auto response = ResponseValue::make();
            response->requestId = "its own";
            completion(response);
            completion(ASCommonResponseModel::make(ASError::Code::internalError));
        }).detach();
    }
};

class ServerCommand final : public ASBaseRequestCommand {
  public:
    using ASBaseRequestCommand::ASBaseRequestCommand;
    bool distributeToHandler(const std::string& path, const std::string& json) override {
        if (path == "die") ::_exit(3);
        if (path == ServeHotkeys::path()) {
            handle<ServeHotkeys>(json);
            return true;
        }
        return ASBaseRequestCommand::distributeToHandler(path, json);
    }
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    // Nobody reads the log of this process.
    const testkit::LogCapture log;
    const testkit::FakeBundle bundle({{"CFBundleIdentifier", argv[1]},
                                      {"CFBundleName", "Request Server"},
                                      {"CFBundleShortVersionString", argv[2]}});
    const auto status = NSScriptSuiteRegistry::serve(argv[1], [](NSScriptCommandDescription description) {
        return makeObject<ServerCommand>(std::move(description));
    });
    std::puts(status == ScriptingServeStatus::serving ? "serving" : "refused");
    std::fflush(stdout);
    if (status == ScriptingServeStatus::serving) RunLoop::main().run();
    return 1;
}
