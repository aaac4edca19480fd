#include "Classes/Log/Log/ZQConsoleLogFormatter.h"

#include "Classes/Log/Log/LogMark.h"

namespace zqcore {

std::optional<std::string> ZQConsoleLogFormatter::formatLogMessage(const DDLogMessage& message) {
    std::string line;
    line.reserve(message.message.size() + 8);
    line.append("[").append(logMark(message.flag)).append("] ").append(message.message);
    return line;
}

}  // namespace zqcore
