#include "Platform/Scripting/Linux/Subprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "Platform/Foundation/Linux/FileSupport.h"

namespace zqcore::platform {
namespace {

using posix::Descriptor;

constexpr std::size_t kLargestOutput = std::size_t{128} << 20U;
constexpr std::size_t kKeptErrors = 16 * 1024;
constexpr int kPipeSize = 1 << 20;

std::unexpected<NSError> failure(int number, std::string_view what) {
    return std::unexpected(
        NSError(NSPOSIXErrorDomain, number, std::string(what) + ": " + std::strerror(number)));
}

struct Pipe {
    Descriptor read;
    Descriptor write;
};

/// A process without its own standard descriptors is given those numbers for the pipe, and would lay the
/// child's onto each other.
bool moveAboveStandard(Descriptor& descriptor) {
    if (descriptor.get() > STDERR_FILENO) return true;
    descriptor = Descriptor(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    return static_cast<bool>(descriptor);
}

bool makePipe(Pipe& made) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
    made = {Descriptor(ends[0]), Descriptor(ends[1])};
    (void)fcntl(ends[1], F_SETPIPE_SZ, kPipeSize);  // a large text then takes fewer turns
    return moveAboveStandard(made.read) && moveAboveStandard(made.write);
}

void doNotBlock(const Descriptor& descriptor) {
    fcntl(descriptor.get(), F_SETFL, fcntl(descriptor.get(), F_GETFL) | O_NONBLOCK);
}

/// posix_spawn's two parameter objects, released at their end.
struct SpawnSettings {
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};

    explicit SpawnSettings(int moreFlags = 0) {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        // The child starts with the signals as a shell would have them, whatever our thread blocks.
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        sigaddset(&signals, SIGPIPE);
        sigaddset(&signals, SIGCHLD);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        posix_spawnattr_setflags(
            &attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | moreFlags));
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;
};

/// Whether `entry`, "NAME=VALUE", names a variable that one of `environment` sets.
bool isSetBy(const std::vector<std::string>& environment, std::string_view entry) {
    const auto withSign = entry.substr(0, entry.find('=')).size() + 1;
    return std::ranges::any_of(environment, [&](std::string_view own) {
        return own.size() >= withSign && own.substr(0, withSign) == entry.substr(0, withSign);
    });
}

int spawn(pid_t& child, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment, SpawnSettings& settings) {
    std::vector<char*> argumentList;
    argumentList.reserve(arguments.size() + 1);
    for (const auto& argument : arguments) argumentList.push_back(const_cast<char*>(argument.c_str()));
    argumentList.push_back(nullptr);
    std::vector<char*> environmentList;
    environmentList.reserve(environment.size() + 1);
    for (const auto& entry : environment) environmentList.push_back(const_cast<char*>(entry.c_str()));
    // A variable that stands there twice is read the first way by some programs and the last by shells.
    for (char** entry = environ; entry && *entry; ++entry) {
        if (!isSetBy(environment, *entry)) environmentList.push_back(*entry);
    }
    environmentList.push_back(nullptr);

    // Descriptors that others opened without close-on-exec stay here too.
    posix_spawn_file_actions_addclosefrom_np(&settings.actions, STDERR_FILENO + 1);
    return posix_spawnp(&child, argumentList[0], &settings.actions, &settings.attributes, argumentList.data(),
                        environmentList.data());
}

/// The three streams and the life of one child.
class Conversation {
  public:
    Conversation(pid_t child, Descriptor toChild, Descriptor output, Descriptor errors,
                 std::string_view input)
        : child_(child),
          life_(static_cast<int>(::syscall(SYS_pidfd_open, child, 0))),
          toChild_(std::move(toChild)),
          output_(std::move(output)),
          errors_(std::move(errors)),
          input_(input) {
        doNotBlock(toChild_);
        doNotBlock(output_);
        doNotBlock(errors_);
    }

    /// Until the child has ended and what it wrote is read; false if it wrote too much.
    bool hold() {
        while (!ended_ && (output_ || errors_ || life_)) {
            if (input_.empty()) toChild_ = Descriptor();
            std::array<pollfd, 4> watched{pollfd{output_.get(), POLLIN, 0}, pollfd{errors_.get(), POLLIN, 0},
                                          pollfd{toChild_.get(), POLLOUT, 0}, pollfd{life_.get(), POLLIN, 0}};
            if (poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) break;
            if (watched[2].revents) write();
            // Looked at before reading, so that what a child wrote before its end is read after it.
            ended_ = watched[3].revents != 0;
            if (watched[0].revents || ended_) read(output_, result_.output, kLargestOutput);
            if (watched[1].revents || ended_) read(errors_, result_.lastErrors, kLargestOutput);
            trimErrors();
            if (result_.output.size() >= kLargestOutput) {
                ::kill(child_, SIGKILL);
                reap();
                return false;
            }
        }
        reap();
        return true;
    }

    SubprocessResult takeResult() { return std::move(result_); }

  private:
    void write() {
        const auto written = ::write(toChild_.get(), input_.data(), input_.size());
        if (written > 0) input_.remove_prefix(static_cast<std::size_t>(written));
        // The child doesn't want the rest, which is its right.
        if (written < 0 && errno != EAGAIN && errno != EINTR) input_ = {};
    }

    static void read(Descriptor& stream, std::string& text, std::size_t limit) {
        std::array<char, 64 * 1024> buffer;
        while (stream && text.size() < limit) {
            const auto got = ::read(stream.get(), buffer.data(), buffer.size());
            if (got > 0) {
                text.append(buffer.data(), static_cast<std::size_t>(got));
            } else if (got == 0 || (errno != EAGAIN && errno != EINTR)) {
                stream = Descriptor();
            } else if (errno == EAGAIN) {
                return;
            }
        }
    }

    void trimErrors() {
        auto& text = result_.lastErrors;
        if (text.size() > 2 * kKeptErrors) text.erase(0, text.size() - kKeptErrors);
    }

    void reap() {
        siginfo_t info{};
        int outcome = 0;
        do {
            outcome = waitid(P_PID, static_cast<id_t>(child_), &info, WEXITED);
        } while (outcome != 0 && errno == EINTR);
        // Somebody else may have reaped it (SIGCHLD ignored): then nobody knows.
        if (outcome != 0) return;
        result_.end =
            info.si_code == CLD_EXITED ? SubprocessResult::End::exited : SubprocessResult::End::killed;
        result_.number = info.si_status;
    }

    pid_t child_;
    Descriptor life_;
    Descriptor toChild_;
    Descriptor output_;
    Descriptor errors_;
    std::string_view input_;
    bool ended_ = false;
    SubprocessResult result_;
};

}  // namespace

std::expected<SubprocessResult, NSError> runSubprocess(const std::vector<std::string>& arguments,
                                                       const std::vector<std::string>& environment,
                                                       std::string_view input) {
    Pipe toChild;
    Pipe output;
    Pipe errors;
    if (!makePipe(toChild) || !makePipe(output) || !makePipe(errors)) return failure(errno, "pipe");
    SpawnSettings settings;
    posix_spawn_file_actions_adddup2(&settings.actions, toChild.read.get(), STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&settings.actions, output.write.get(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&settings.actions, errors.write.get(), STDERR_FILENO);
    pid_t child = 0;
    const int status = spawn(child, arguments, environment, settings);
    if (status != 0) return failure(status, arguments[0]);
    for (auto* end : {&toChild.read, &output.write, &errors.write}) *end = Descriptor();

    Conversation conversation(child, std::move(toChild.write), std::move(output.read), std::move(errors.read),
                              input);
    if (!conversation.hold()) return failure(EFBIG, arguments[0]);
    return conversation.takeResult();
}

std::expected<pid_t, NSError> startDetached(const std::vector<std::string>& arguments,
                                            const std::vector<std::string>& environment,
                                            const std::string& workingFolder) {
    SpawnSettings settings(POSIX_SPAWN_SETSID);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&settings.actions, stream, "/dev/null", O_RDWR, 0);
    if (!workingFolder.empty())
        posix_spawn_file_actions_addchdir_np(&settings.actions, workingFolder.c_str());
    pid_t child = 0;
    if (const int status = spawn(child, arguments, environment, settings); status != 0)
        return failure(status, arguments[0]);
    return child;
}

}  // namespace zqcore::platform
