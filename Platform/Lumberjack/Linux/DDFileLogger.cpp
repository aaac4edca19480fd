#include "Platform/Lumberjack/DDFileLogger.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "Platform/Base/Clock.h"
#include "Platform/Dispatch/DispatchSourceTimer.h"
#include "Platform/Lumberjack/DDLogFileManagerDefault.h"
#include "Platform/Lumberjack/Linux/LogQueue.h"

namespace zqcore::platform {

namespace {

// One write(2) for as many lines as are at hand, up to this size.
constexpr std::size_t kBufferLimit = 64 * 1024;

}  // namespace

std::shared_ptr<DDFileLogger> DDFileLogger::make(std::shared_ptr<DDLogFileManagerDefault> manager) {
    return std::shared_ptr<DDFileLogger>(new DDFileLogger(std::move(manager)));
}

DDFileLogger::DDFileLogger(std::shared_ptr<DDLogFileManagerDefault> manager) : manager_(std::move(manager)) {}

DDFileLogger::~DDFileLogger() {
    flush();
    close();
}

void DDFileLogger::logMessage(const DDLogMessage& message) {
    const auto line = formatted(message);
    if (!line || line->empty()) return;
    if (buffer_.empty()) {
        prepare();
        if (torn_) buffer_ = '\n';
    }
    buffer_ += *line;
    if (buffer_.back() != '\n') buffer_ += '\n';
    if (size_ + buffer_.size() >= maximumFileSize) {
        flush();
        // On a full disk it may not have got there.
        if (size_ >= maximumFileSize) roll();
    } else if (buffer_.size() >= kBufferLimit) {
        flush();
    }
}

void DDFileLogger::flush() {
    // O_APPEND seeks to the end, which another output may have moved.
    for (std::size_t at = 0; at < buffer_.size() && file_ >= 0;) {
        const ssize_t count = ::write(file_, buffer_.data() + at, buffer_.size() - at);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        at += static_cast<std::size_t>(count);
        size_ += static_cast<std::uint64_t>(count);
        torn_ = buffer_[at - 1] != '\n';
    }
    buffer_.clear();
    if (buffer_.capacity() > 2 * kBufferLimit) buffer_.shrink_to_fit();
}

/// Before the first line of a batch: the right file is open and its size known.
void DDFileLogger::prepare() {
    if (file_ >= 0 && !fileIsThere()) close();
    rollIfOld();
    if (file_ < 0) open();
}

bool DDFileLogger::fileIsThere() {
    struct stat status {};
    if (::stat(path_.c_str(), &status) != 0) return false;
    size_ = static_cast<std::uint64_t>(status.st_size);
    return status.st_dev == device_ && status.st_ino == node_;
}

void DDFileLogger::open() {
    const Date now = Clock::current().wallNow();
    const auto infos = manager_->sortedLogFileInfos();
    const auto current = std::ranges::find(infos, false, &DDLogFileInfo::isArchived);
    if (current != infos.end()) {
        if (current->fileSize < maximumFileSize && now - current->creationDate < rollingFrequency) {
            file_ = ::open(current->path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC);
            path_ = current->path;
            creationDate_ = current->creationDate;
        } else {
            manager_->markArchived(current->path);
        }
    }
    if (file_ < 0) {
        auto made = manager_->createNewLogFile();
        if (!made) return;
        file_ = made->descriptor;
        path_ = std::move(made->info.path);
        creationDate_ = made->info.creationDate;
    }
    struct stat status {};
    ::fstat(file_, &status);
    size_ = static_cast<std::uint64_t>(status.st_size);
    device_ = status.st_dev;
    node_ = status.st_ino;
    char last = '\n';
    torn_ = size_ > 0 && ::pread(file_, &last, 1, status.st_size - 1) == 1 && last != '\n';
    startAgeTimer();
}

void DDFileLogger::startAgeTimer() {
    ageTimer_ = DispatchSourceTimer::make(LogQueue::shared().shared_from_this());
    ageTimer_->schedule(
        {DispatchTime::Base::wall, creationDate_.time_since_epoch() + Clock::Duration(rollingFrequency)},
        Clock::Duration::max());
    ageTimer_->setEventHandler([weak = weak_from_this()] {
        if (const auto self = std::static_pointer_cast<DDFileLogger>(weak.lock())) self->rollIfOld();
    });
    ageTimer_->resume();
}

void DDFileLogger::rollIfOld() {
    if (file_ >= 0 && Clock::current().wallNow() - creationDate_ >= rollingFrequency) roll();
}

void DDFileLogger::roll() {
    if (file_ < 0) return;
    manager_->markArchived(path_);
    close();
}

void DDFileLogger::close() {
    if (file_ >= 0) ::close(file_);
    file_ = -1;
    size_ = 0;
    ageTimer_.reset();
}

}  // namespace zqcore::platform
