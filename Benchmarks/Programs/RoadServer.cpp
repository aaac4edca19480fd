// The far end of the request road, ours or bare. Prints "serving". Usage: RoadServer ours|bare
#include <systemd/sd-bus.h>

#include <array>
#include <cstdio>
#include <string_view>

#include "Benchmarks/Classes/AppleScript/RoadRequest.h"
#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/NSScriptSuiteRegistry.h"
#include "TestKit/LogCapture.h"

using namespace zqcore;
using namespace zqcore::bench;

namespace {

struct ServeRoad : RoadRequest {
    static void handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
        auto response = ResponseValue::make();
        response->body = request->body;
        completion(response);
    }
};

class RoadCommand final : public ASBaseRequestCommand {
  public:
    using ASBaseRequestCommand::ASBaseRequestCommand;
    bool distributeToHandler(const std::string& path, const std::string& json) override {
        if (path != ServeRoad::path()) return ASBaseRequestCommand::distributeToHandler(path, json);
        handle<ServeRoad>(json);
        return true;
    }
};

void sayServing() {
    std::puts("serving");
    std::fflush(stdout);
}

int serveOurs() {
    // The bare server logs nothing, so neither does this one.
    const testkit::LogCapture log(logging::kFlagError);
    const auto status = NSScriptSuiteRegistry::serve(kOurServer, [](NSScriptCommandDescription description) {
        return makeObject<RoadCommand>(std::move(description));
    });
    if (status != ScriptingServeStatus::serving) return 1;
    sayServing();
    RunLoop::main().run();
    return 0;
}

int onRequest(sd_bus_message* message, void*, sd_bus_error*) {
    const char* text = nullptr;
    if (sd_bus_message_read(message, "s", &text) < 0) return -EINVAL;
    return sd_bus_reply_method_return(message, "s", text);
}

int serveBare() {
    static const std::array<sd_bus_vtable, 3> table{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("request", "s", "s", &onRequest, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) return 1;
    if (sd_bus_add_object_vtable(bus, nullptr, kBarePath, kBareInterface, table.data(), nullptr) < 0)
        return 1;
    if (sd_bus_request_name(bus, kBareServer, 0) < 0) return 1;
    sayServing();
    for (;;) {
        const int progress = sd_bus_process(bus, nullptr);
        if (progress < 0) return 1;
        if (progress == 0 && sd_bus_wait(bus, UINT64_MAX) < 0) return 1;
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    return std::string_view(argv[1]) == "ours" ? serveOurs() : serveBare();
}
