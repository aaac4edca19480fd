#include "Classes/Log/Log/ZQFileLogFormatter.h"

#include <array>
#include <charconv>

#include "Classes/Log/Log/LogMark.h"

namespace zqcore {

namespace {

constexpr std::string_view kSeparator = " ● ";
// Date, marks and separators.
constexpr std::size_t kFixedPart = 64;

}  // namespace

std::optional<std::string> ZQFileLogFormatter::formatLogMessage(const DDLogMessage& message) {
    std::array<char, 12> number;
    const char* numberEnd = std::to_chars(number.begin(), number.end(), message.line).ptr;

    std::string line;
    line.reserve(kFixedPart + message.fileName.size() + message.function.size() + message.message.size());
    line += '[';
    dateFormatter_.append(line, message.timestamp);
    line.append(kSeparator).append(message.fileName).append(kSeparator);
    line.append(std::string_view(number.data(), numberEnd)).append(kSeparator);
    line.append(logMark(message.flag)).append("] ");
    line.append(message.function).append(kSeparator).append(message.message);
    return line;
}

}  // namespace zqcore
