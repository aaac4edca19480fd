#pragma once

#include <string_view>

#include "Classes/AppleScript/RequestCommand/ASRequestCarrier.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// What a response text means to the sender that brought it.
enum class ASAnswerVerdict {
    success,                 ///< decoded; whether the request failed is told by the response's own `error`
    decodeResponseFail,      ///< it is no response of this request
    notReachMinimumVersion,  ///< an error from an application that is too old to know the request
};

/// Keeps the decoded response in the request and judges it. An error counts as the fault of an old
/// application only if the request has a minimum version, the response names the server's version, and that
/// one is lower. Any thread, one at a time for one request.
[[nodiscard]] ZQ_EXPORT ASAnswerVerdict fillAndJudge(const ASRequestCarrier& request, std::string_view json);

}  // namespace zqcore
