#include "Platform/Lumberjack/DDLogPendingLines.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Platform/Lumberjack/Linux/LogQueue.h"

namespace zqcore::platform {

namespace {

/// A row under construction. Plain memory and write(2) only, for a signal handler.
class Row {
  public:
    explicit Row(int fd) : fd_(fd) {}
    ~Row() { empty(); }
    Row(const Row&) = delete;
    Row& operator=(const Row&) = delete;

    void add(std::string_view text) noexcept {
        while (!text.empty()) {
            if (used_ == sizeof(bytes_)) empty();
            const std::size_t count = std::min(text.size(), sizeof(bytes_) - used_);
            std::memcpy(bytes_ + used_, text.data(), count);
            used_ += count;
            text.remove_prefix(count);
        }
    }
    void addNumber(std::uint64_t number, std::size_t width = 1) noexcept {
        char digits[20];
        std::size_t at = sizeof(digits);
        do digits[--at] = static_cast<char>('0' + number % 10);
        while ((number /= 10) != 0);
        while (sizeof(digits) - at < width) digits[--at] = '0';
        add({digits + at, sizeof(digits) - at});
    }

  private:
    void empty() noexcept {
        for (std::size_t at = 0; at < used_;) {
            const ssize_t count = ::write(fd_, bytes_ + at, used_ - at);
            if (count < 0 && errno == EINTR) continue;
            if (count <= 0) break;
            at += static_cast<std::size_t>(count);
        }
        used_ = 0;
    }

    int fd_;
    std::size_t used_ = 0;
    char bytes_[1024];
};

void addTime(Row& row, std::int64_t timestamp) noexcept {
    using namespace std::chrono;
    // Calendar arithmetic of <chrono> is pure, unlike gmtime_r.
    const sys_time<milliseconds> time{floor<milliseconds>(nanoseconds(timestamp))};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    row.addNumber(static_cast<std::uint64_t>(static_cast<int>(date.year())), 4);
    row.add("-");
    row.addNumber(static_cast<unsigned>(date.month()), 2);
    row.add("-");
    row.addNumber(static_cast<unsigned>(date.day()), 2);
    row.add(" ");
    row.addNumber(static_cast<std::uint64_t>(clock.hours().count()), 2);
    row.add(":");
    row.addNumber(static_cast<std::uint64_t>(clock.minutes().count()), 2);
    row.add(":");
    row.addNumber(static_cast<std::uint64_t>(clock.seconds().count()), 2);
    row.add(".");
    row.addNumber(static_cast<std::uint64_t>(clock.subseconds().count()), 3);
}

void addLine(Row& row, const DDLogPendingLines::Line& line) noexcept {
    row.add("[");
    addTime(row, line.timestamp);
    row.add("Z ● ");
    row.add(logFileName(line.file));
    row.add(" ● ");
    row.addNumber(line.line);
    row.add(" ● ");
    row.addNumber(line.flag);
    row.add("] ");
    row.add(line.message);
    row.add("\n");
}

}  // namespace

std::size_t DDLogPendingLines::walk(Callback callback, void* context) noexcept {
    return LogQueue::walkPending(callback, context);
}

std::size_t DDLogPendingLines::writeTo(int fd, std::size_t limit) noexcept {
    const std::size_t count = walk(nullptr, nullptr);
    struct Context {
        Row row;
        std::size_t skip;
        std::size_t written;
    } context{Row(fd), count > limit ? count - limit : 0, 0};
    walk(
        [](const Line& line, void* opaque) {
            auto& to = *static_cast<Context*>(opaque);
            if (to.skip > 0) {
                --to.skip;
                return;
            }
            addLine(to.row, line);
            ++to.written;
        },
        &context);
    return context.written;
}

}  // namespace zqcore::platform
