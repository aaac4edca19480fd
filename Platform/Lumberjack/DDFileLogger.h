#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace zqcore::platform {

class DDLogFileManagerDefault;
class DispatchSourceTimer;

/// The output to files. Lines are appended to the newest file of the manager's directory that is not
/// archived, as long as it is smaller than 1 MiB and younger than 24 hours; else it is archived and a new one
/// is made. A file is made when the first line comes, and made again if it was deleted or renamed. The size
/// is tested behind a line, so no line is ever cut. Time: ages by `Clock`. Threads: see `DDLogger`. Lifetime:
/// held by `std::shared_ptr`; several outputs, and several processes, may append to one file. Failure: lines
/// that can't be written are dropped, and the next ones try again; one that was cut short stands on a row of
/// its own.
class ZQ_EXPORT DDFileLogger final : public DDLogger {
  public:
    static constexpr std::uint64_t maximumFileSize = 1'048'576;
    static constexpr std::chrono::hours rollingFrequency{24};

    [[nodiscard]] static std::shared_ptr<DDFileLogger> make(std::shared_ptr<DDLogFileManagerDefault> manager);
    ~DDFileLogger() override;

    void logMessage(const DDLogMessage& message) override;
    void flush() override;

  private:
    explicit DDFileLogger(std::shared_ptr<DDLogFileManagerDefault> manager);

    void prepare();
    [[nodiscard]] bool fileIsThere();
    void open();
    void startAgeTimer();
    void rollIfOld();
    void roll();
    void close();

    const std::shared_ptr<DDLogFileManagerDefault> manager_;
    std::string buffer_;
    int file_ = -1;
    std::string path_;
    dev_t device_ = 0;
    ino_t node_ = 0;
    Date creationDate_{};
    std::shared_ptr<DispatchSourceTimer> ageTimer_;
    std::uint64_t size_ = 0;  // of the file, without the buffer
    bool torn_ = false;       // the file ends amid a line
};

}  // namespace zqcore::platform
