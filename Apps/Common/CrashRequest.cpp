#include "Apps/Common/CrashRequest.h"

#include <unistd.h>

#include <memory>
#include <string>

#include "Apps/Common/Fault.h"
#include "Apps/Common/ServerCommand.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Classes/Log/Log/ZQManagerForLog.h"
#include "Platform/Lumberjack/DDLog.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace demo {

using namespace zqcore;

namespace {

/// Takes a line and never gives control back.
class StalledOutput final : public DDLogger {
  public:
    void logMessage(const DDLogMessage&) override {
        for (;;) ::pause();
    }
};

}  // namespace

void CrashRequest::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    const auto& body = request->body;
    const std::string fault = body && body->fault ? *body->fault : "segv";
    if (!faults::isKnown(fault)) {
        return refuse(completion, ASError::Code::invalidParameter,
                      "the faults are " + std::string(faults::kNames));
    }
    if (body && body->stallLog.value_or(false)) {
        ZQManagerForLog::sharedDDLog()->addLogger(std::make_shared<StalledOutput>());
        ZQLogInfo("the log's outputs stall from here on");
    }
    ZQLogInfo([&] { return "asked to crash by " + fault; });
    ZQLogError("these are the last words");
    faults::commit(fault);
}

}  // namespace demo
