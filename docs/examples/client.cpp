// docs/examples/client.cpp
#include <cstdio>

#include "Classes/AppleScript/BridgeSender/BridgeSender.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Platform/Dispatch/RunLoop.h"

int main(int argc, char** argv) {
    using namespace zqcore;
    const BridgeSender sender(argc > 1 ? argv[1] : "com.example.Words");
    sender.request(CommonInfoRequest::make(), [](BridgeSender::Status status, const auto& request) {
        const auto server =
            status == BridgeSender::Status::success ? request->responseValue->server : nullptr;
        std::puts(server ? server->name.value_or("").c_str() : std::string(caseName(status)).c_str());
        RunLoop::main().stop();
    });
    RunLoop::main().run();
}
