#include "TestKit/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace zqcore::testkit {

ChildProcess::ChildProcess(const std::vector<std::string>& arguments) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return;
    // Everything that allocates happens before the fork: the child of a threaded process may not.
    std::vector<char*> vector;
    vector.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) vector.push_back(const_cast<char*>(argument.c_str()));
    vector.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::dup2(ends[1], STDOUT_FILENO);
        ::execvp(vector.front(), vector.data());
        ::_exit(127);
    }
    ::close(ends[1]);
    output_ = ends[0];
}

ChildProcess::~ChildProcess() {
    kill();
    if (output_ >= 0) ::close(output_);
}

std::optional<std::string> ChildProcess::readLine() {
    for (;;) {
        if (const auto end = unread_.find('\n'); end != std::string::npos) {
            std::string line = unread_.substr(0, end);
            unread_.erase(0, end + 1);
            return line;
        }
        std::array<char, 4096> bytes{};
        const ssize_t count = ::read(output_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        unread_.append(bytes.data(), static_cast<std::size_t>(count));
    }
}

void ChildProcess::kill() {
    if (pid_ <= 0 || ended_) return;
    ::kill(pid_, SIGKILL);
    wait();
}

int ChildProcess::wait() {
    if (pid_ <= 0) return -1;
    if (ended_) return *ended_;
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    ended_ = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    return *ended_;
}

}  // namespace zqcore::testkit
