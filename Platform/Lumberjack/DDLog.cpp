#include "Platform/Lumberjack/DDLog.h"

#include <algorithm>
#include <utility>

#include "Platform/Lumberjack/Linux/LogQueue.h"

namespace zqcore::platform {

std::shared_ptr<DDLog> DDLog::make() { return std::make_shared<DDLog>(); }

DDLog::DDLog() : outputs_(new LogOutputs) {}

// Behind this logger's last line on the queue, so that no line finds its outputs gone.
DDLog::~DDLog() {
    LogQueue::shared().async([outputs = std::unique_ptr<LogOutputs>(outputs_)] {});
}

void DDLog::addLogger(std::shared_ptr<DDLogger> logger) {
    if (!logger) return;
    LogQueue::shared().async([outputs = outputs_, logger = std::move(logger)]() mutable {
        if (std::ranges::find(outputs->loggers, logger) == outputs->loggers.end())
            outputs->loggers.push_back(std::move(logger));
    });
}

void DDLog::log(bool asynchronous, std::uint64_t level, std::uint64_t flag, std::int64_t context,
                const char* file, const char* function, std::uint32_t line, const void* tag,
                std::string_view text) {
    LogQueue::shared().log(asynchronous, outputs_, {level, flag, context, file, function, line, tag}, text,
                           nullptr);
}

void DDLog::log(bool asynchronous, std::uint64_t level, std::uint64_t flag, std::int64_t context,
                const char* file, const char* function, std::uint32_t line, const void* tag,
                std::string&& text) {
    LogQueue::shared().log(asynchronous, outputs_, {level, flag, context, file, function, line, tag}, text,
                           &text);
}

void DDLog::flushLog() {
    LogQueue::shared().sync([] {});
}

}  // namespace zqcore::platform
