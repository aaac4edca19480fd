#include "Classes/AppleScript/RequestCommand/ASGuardedCall.h"

#include <exception>
#include <string>

#include "Classes/Log/Log/ZQLog.h"

namespace zqcore {

bool guardedCall(std::string_view name, const std::function<void()>& action) {
    std::string reason;
    try {
        action();
        return true;
    } catch (const std::exception& exception) {
        reason = exception.what();
    } catch (...) {
        reason = "unknown exception";
    }
    ZQLogError([&] { return std::string(name) + " 异常: " + reason; });
    return false;
}

}  // namespace zqcore
