#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zqcore::testkit {

/// Takes the place of the shared logger while it lives: every line of it is kept here, and none goes to the
/// system's log, to a file or to the home. Captures may be nested; each keeps the lines of its own time.
/// Time: nothing here waits, but for `waitFor`. Threads: any. Lifetime: a value on the test's stack. Failure:
/// none.
///
///     LogCapture capture;
///     component.close();
///     EXPECT_TRUE(capture.has(LogCapture::error, "close failed")) << capture;
///     EXPECT_TRUE(capture.silent()) << capture;
class LogCapture final {
  public:
    enum Flag : std::uint64_t { error = 1, warning = 2, info = 4, debug = 8, verbose = 16 };

    struct Line {
        std::uint64_t flag;
        std::string message;
        std::string file;
        std::string fileName;
        std::string function;
        std::uint32_t line;
    };

    /// Starts with this level in force, which stays until the end of the capture unless the test changes it.
    explicit LogCapture(std::uint64_t level = 7);
    /// Puts the former logger and level back.
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // Each of these first lets every line out that was logged before.
    /// All lines since the beginning or the last `clear`, in the order of the calls.
    [[nodiscard]] std::vector<Line> lines() const;
    /// Their texts, of all lines or those of one flag.
    [[nodiscard]] std::vector<std::string> messages() const;
    [[nodiscard]] std::vector<std::string> messages(std::uint64_t flag) const;
    /// Whether a line has exactly this text, and that flag.
    [[nodiscard]] bool has(std::string_view message) const;
    [[nodiscard]] bool has(std::uint64_t flag, std::string_view message) const;
    /// Whether `part` stands in a line.
    [[nodiscard]] bool contains(std::string_view part) const;
    [[nodiscard]] std::size_t count(std::string_view message) const;
    [[nodiscard]] bool silent() const;
    /// Forgets the lines so far.
    void clear();

    /// Waits until `part` stands in a line, also in one that another thread has yet to log. False after
    /// `limit` of real time, which is there to end a test that hangs.
    [[nodiscard]] bool waitFor(std::string_view part,
                               std::chrono::milliseconds limit = std::chrono::seconds(20)) const;

    /// One row a line, for failure messages; `<<` prints the same to any stream.
    [[nodiscard]] std::string description() const;
    template <class Stream>
    friend Stream& operator<<(Stream& stream, const LogCapture& capture) {
        stream << capture.description();
        return stream;
    }

  private:
    class Sink;
    struct State;
    static Sink& sink();

    State* state_;
    std::uint64_t formerLevel_;
    bool formerReady_;
};

}  // namespace zqcore::testkit
