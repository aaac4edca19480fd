#include "Platform/Scripting/Linux/BusErrors.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace zqcore::platform {
namespace {

constexpr std::string_view kPrefix = "org.freedesktop.DBus.Error.";

constexpr std::array<std::pair<std::string_view, long>, 17> kCodes{{
    {"AccessDenied", kErrorNotPermitted},
    {"AuthFailed", kErrorNotPermitted},
    {"InteractiveAuthorizationRequired", kErrorNotPermitted},
    {"ServiceUnknown", kErrorNoSuchProcess},
    {"NameHasNoOwner", kErrorNoSuchProcess},
    {"NoServer", kErrorConnectionInvalid},
    {"Disconnected", kErrorConnectionInvalid},
    {"NoReply", kErrorTimedOut},
    {"Timeout", kErrorTimedOut},
    {"TimedOut", kErrorTimedOut},
    {"UnknownMethod", kErrorNotHandled},
    {"UnknownInterface", kErrorNotHandled},
    {"UnknownObject", kErrorNotHandled},
    {"NotSupported", kErrorNotHandled},
    {"InvalidArgs", kErrorBadParameter},
    {"InvalidSignature", kErrorBadParameter},
    {"LimitsExceeded", kErrorBadParameter},
}};

[[nodiscard]] long codeForName(std::string_view name) {
    if (!name.starts_with(kPrefix)) return kErrorNotHandled;
    name.remove_prefix(kPrefix.size());
    for (const auto& [known, code] : kCodes) {
        if (name == known) return code;
    }
    // Spawn.ChildExited and its kin: the bus tried to start the target, and there is none.
    return name.starts_with("Spawn.") ? kErrorNoSuchProcess : kErrorNotHandled;
}

}  // namespace

NSError makeScriptingError(long code, std::string text) {
    return NSError(NSOSStatusErrorDomain, code, std::move(text));
}

NSError scriptingErrorForBusError(std::string_view name, std::string_view message) {
    std::string text(name);
    if (!message.empty()) text.append(": ").append(message);
    return makeScriptingError(codeForName(name), std::move(text));
}

NSError scriptingErrorForErrno(int negativeErrno, std::string_view what) {
    const int number = -negativeErrno;
    long code = kErrorConnectionInvalid;
    if (number == EINVAL || number == EMSGSIZE) code = kErrorBadParameter;
    if (number == EACCES || number == EPERM) code = kErrorNotPermitted;
    if (number == ETIMEDOUT) code = kErrorTimedOut;
    return makeScriptingError(code, std::string(what) + ": " + std::strerror(number));
}

}  // namespace zqcore::platform
