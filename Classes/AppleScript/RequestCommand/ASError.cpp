#include "Classes/AppleScript/RequestCommand/ASError.h"

namespace zqcore {

std::string_view message(ASError::Code code) noexcept {
    using Code = ASError::Code;
    switch (code) {
        case Code::unknown:
            break;
        case Code::invalidParameter:
            return "无效参数";
        case Code::pathNotIncluded:
            return "参数不包含 path";
        case Code::unsupportedPath:
            return "不支持的 path";
        case Code::responseTimeout:
            return "响应超时";
        case Code::internalError:
            return "内部错误";
    }
    return "未知错误";
}

}  // namespace zqcore
