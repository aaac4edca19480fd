#include "Platform/Lumberjack/DDLogger.h"

#include <utility>

#include "Platform/Lumberjack/Linux/LogQueue.h"

namespace zqcore::platform {

void DDLogger::setLogFormatter(std::shared_ptr<DDLogFormatter> formatter) {
    if (LogQueue::isCurrent()) {
        formatter_ = std::move(formatter);
        return;
    }
    LogQueue::shared().async([self = shared_from_this(), formatter = std::move(formatter)]() mutable {
        self->formatter_ = std::move(formatter);
    });
}

std::optional<std::string> DDLogger::formatted(const DDLogMessage& message) const {
    if (!formatter_) return std::string(message.message);
    return formatter_->formatLogMessage(message);
}

}  // namespace zqcore::platform
