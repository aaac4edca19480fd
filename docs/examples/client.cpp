// docs/examples/client.cpp
#include <cstdio>

#include "Classes/AppleScript/BridgeSender/BridgeSender.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Platform/Dispatch/RunLoop.h"

int main(int argc, char** argv) {
    using namespace zqcore;
    const BridgeSender sender(argc > 1 ? argv[1] : "com.tessaradev.OrbelHelper");
    sender.request(CommonInfoRequest::make(), [](BridgeSender::Status status, const auto& request) {
        std::puts(status == BridgeSender::Status::success ? request->responseValue->server->name->c_str()
                                                          : "no answer");
        RunLoop::main().stop();
    });
    RunLoop::main().run();
}
