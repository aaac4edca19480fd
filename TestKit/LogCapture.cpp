#include "TestKit/LogCapture.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "Classes/Log/Log/ZQLog.h"
#include "Classes/Log/Log/ZQManagerForLog.h"
#include "Platform/Lumberjack/DDLog.h"

namespace zqcore::testkit {

struct LogCapture::State {
    std::vector<Line> lines;
};

/// The one output of the logger that stands in. Both live for ever, since a thread of the code under test may
/// still hold the logger when a capture ends.
class LogCapture::Sink final : public DDLogger {
  public:
    void logMessage(const DDLogMessage& message) override {
        const std::lock_guard lock(mutex);
        for (State* capture : captures) {
            capture->lines.push_back({message.flag, std::string(message.message), std::string(message.file),
                                      std::string(message.fileName), std::string(message.function),
                                      message.line});
        }
        arrived.notify_all();
    }

    void add(State* capture) {
        const std::lock_guard lock(mutex);
        captures.push_back(capture);
        ZQManagerForLog::installSharedDDLogForTesting(&ddlog);
    }

    void remove(State* capture) {
        const std::lock_guard lock(mutex);
        std::erase(captures, capture);
        if (captures.empty()) ZQManagerForLog::installSharedDDLogForTesting(nullptr);
    }

    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<State*> captures;
    std::shared_ptr<DDLog> ddlog = DDLog::make();
};

LogCapture::Sink& LogCapture::sink() {
    static Sink& shared = [] -> Sink& {
        static auto& kept = *new std::shared_ptr<Sink>(std::make_shared<Sink>());
        kept->ddlog->addLogger(kept);
        return *kept;
    }();
    return shared;
}

LogCapture::LogCapture(std::uint64_t level)
    : state_(new State),
      formerLevel_(ZQDefaultLogLevel.exchange(level)),
      // A developer's own stored level must not reach the test.
      formerReady_(logging::ready.exchange(true)) {
    DDLog::flushLog();
    sink().add(state_);
}

LogCapture::~LogCapture() {
    DDLog::flushLog();
    sink().remove(state_);
    ZQDefaultLogLevel.store(formerLevel_);
    logging::ready.store(formerReady_);
    delete state_;
}

std::vector<LogCapture::Line> LogCapture::lines() const {
    DDLog::flushLog();
    const std::lock_guard lock(sink().mutex);
    return state_->lines;
}

std::vector<std::string> LogCapture::messages() const {
    std::vector<std::string> texts;
    for (Line& line : lines()) texts.push_back(std::move(line.message));
    return texts;
}

std::vector<std::string> LogCapture::messages(std::uint64_t flag) const {
    std::vector<std::string> texts;
    for (Line& line : lines()) {
        if (line.flag == flag) texts.push_back(std::move(line.message));
    }
    return texts;
}

bool LogCapture::has(std::string_view message) const { return count(message) > 0; }

bool LogCapture::has(std::uint64_t flag, std::string_view message) const {
    return std::ranges::any_of(
        lines(), [&](const Line& line) { return line.flag == flag && line.message == message; });
}

bool LogCapture::contains(std::string_view part) const {
    return std::ranges::any_of(lines(), [&](const Line& line) { return line.message.contains(part); });
}

std::size_t LogCapture::count(std::string_view message) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(lines(), [&](const Line& line) { return line.message == message; }));
}

bool LogCapture::silent() const { return lines().empty(); }

void LogCapture::clear() {
    DDLog::flushLog();
    const std::lock_guard lock(sink().mutex);
    state_->lines.clear();
}

bool LogCapture::waitFor(std::string_view part, std::chrono::milliseconds limit) const {
    DDLog::flushLog();
    std::unique_lock lock(sink().mutex);
    std::size_t tested = 0;
    return sink().arrived.wait_for(lock, limit, [&] {
        for (; tested < state_->lines.size(); ++tested) {
            if (state_->lines[tested].message.contains(part)) return true;
        }
        return false;
    });
}

std::string LogCapture::description() const {
    const auto all = lines();
    if (all.empty()) return "(no line)";
    std::string text;
    for (const Line& line : all) text += "[" + std::to_string(line.flag) + "] " + line.message + "\n";
    return text;
}

}  // namespace zqcore::testkit
