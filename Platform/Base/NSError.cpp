#include "Platform/Base/NSError.h"

namespace zqcore::platform {

std::string NSError::description() const {
    return "Error Domain=" + domain_ + " Code=" + std::to_string(code_) + " \"" + text_ + "\"";
}

}  // namespace zqcore::platform
