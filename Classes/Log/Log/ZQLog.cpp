#include "Classes/Log/Log/ZQLog.h"

#include "Classes/Log/Log/ZQManagerForLog.h"
#include "Platform/Foundation/NSThread.h"
#include "Platform/Lumberjack/DDLog.h"

namespace zqcore {

std::atomic<std::uint64_t> ZQDefaultLogLevel{7};
std::atomic<std::uint8_t> ZQDefaultLogAsyncEnabled{1};

namespace logging {

std::atomic<bool> ready{false};

void initializeOnce() { ZQManagerForLog::initialize(); }

void write(std::string_view message, std::uint64_t level, std::uint64_t flag, bool asynchronous, DDLog* ddlog,
           const std::source_location& where) {
    DDLog* const logger = ddlog ? ddlog : ZQManagerForLog::sharedDDLog().get();
    logger->log(asynchronous, level, flag, 0, where.file_name(), where.function_name(), where.line(), nullptr,
                message);
}

void write(std::string&& message, std::uint64_t level, std::uint64_t flag, bool asynchronous, DDLog* ddlog,
           const std::source_location& where) {
    DDLog* const logger = ddlog ? ddlog : ZQManagerForLog::sharedDDLog().get();
    logger->log(asynchronous, level, flag, 0, where.file_name(), where.function_name(), where.line(), nullptr,
                std::move(message));
}

}  // namespace logging

void logCallStackSymbols(const std::source_location& where) {
    ZQLogVerbose(
        [] {
            std::string symbols;
            for (const std::string& symbol : NSThread::callStackSymbols()) symbols += "\n" + symbol;
            return "调用栈：\n" + symbols;
        },
        nullptr, where);
}

}  // namespace zqcore
