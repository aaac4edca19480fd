#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace zqcore::testkit {

/// A second process that a test started, with a pipe from its standard output. Time: waits are for real
/// events of the child. Threads: one. Lifetime: the end of the object ends the process by its number.
/// Failure: a program that can't be started has number -1 and gives no lines.
class ChildProcess final {
  public:
    /// Starts `arguments[0]` with the rest, in the present environment. It gets the signal `SIGKILL` should
    /// the test die first.
    explicit ChildProcess(const std::vector<std::string>& arguments);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    [[nodiscard]] pid_t pid() const noexcept { return pid_; }
    /// The next line of its standard output, without its end; waits for it. Absent at the end of the output.
    [[nodiscard]] std::optional<std::string> readLine();
    /// Ends it with SIGKILL and waits until it is gone.
    void kill();
    /// Waits until it has ended by itself; its exit code, or the negative number of the signal.
    int wait();

  private:
    pid_t pid_ = -1;
    int output_ = -1;
    std::optional<int> ended_;
    std::string unread_;
};

}  // namespace zqcore::testkit
