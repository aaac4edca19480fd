#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Lumberjack/DDLogMessage.h"

namespace zqcore::platform {

/// Turns a message into the line that an output writes. Threads: called on the log queue, one call at a time.
class ZQ_EXPORT DDLogFormatter {
  public:
    virtual ~DDLogFormatter() = default;
    /// The line without its line end; absent drops the message. A formatter that throws drops it too.
    [[nodiscard]] virtual std::optional<std::string> formatLogMessage(const DDLogMessage& message) = 0;
};

/// An output of the log. Threads: `logMessage` and `flush` are called on the log queue, one call at a time;
/// `setLogFormatter` from any thread. Lifetime: held by `std::shared_ptr`, by each `DDLog` that it was added
/// to. Failure: an output that can't write drops the line; nothing is told, since there is nowhere to.
class ZQ_EXPORT DDLogger : public std::enable_shared_from_this<DDLogger> {
  public:
    DDLogger() = default;
    DDLogger(const DDLogger&) = delete;
    DDLogger& operator=(const DDLogger&) = delete;
    virtual ~DDLogger() = default;

    virtual void logMessage(const DDLogMessage& message) = 0;
    /// Hands over what the output keeps back for speed. The log calls it before a synchronous call returns,
    /// before it turns to another `DDLog`, and when no line is waiting.
    virtual void flush() {}

    /// Takes effect in its order among the log calls; on the log queue at once.
    void setLogFormatter(std::shared_ptr<DDLogFormatter> formatter);

  protected:
    /// The formatter's line, or the bare text if there is none. On the log queue.
    [[nodiscard]] std::optional<std::string> formatted(const DDLogMessage& message) const;

  private:
    std::shared_ptr<DDLogFormatter> formatter_;
};

}  // namespace zqcore::platform
