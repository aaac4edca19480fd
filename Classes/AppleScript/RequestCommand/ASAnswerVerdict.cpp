#include "Classes/AppleScript/RequestCommand/ASAnswerVerdict.h"

#include "Classes/Core/Utility/ZQVersionComparator.h"

namespace zqcore {

ASAnswerVerdict fillAndJudge(const ASRequestCarrier& request, std::string_view json) {
    const auto answer = request.decodeAndFill(json);
    if (!answer.decoded) return ASAnswerVerdict::decodeResponseFail;
    if (!answer.hasError) return ASAnswerVerdict::success;
    const auto minVersion = request.minVersion();
    if (!minVersion || !answer.serverVersion) return ASAnswerVerdict::success;
    const auto order = ZQVersionComparator::compareVersion(*answer.serverVersion, *minVersion);
    return order == NSOrderedAscending ? ASAnswerVerdict::notReachMinimumVersion : ASAnswerVerdict::success;
}

}  // namespace zqcore
