#include "Platform/Lumberjack/DDOSLogger.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

#include "Platform/Base/Linux/PipeSignalHeld.h"

namespace zqcore::platform {

namespace {

int journalPriority(std::uint64_t flag) noexcept {
    switch (flag) {
        case DDLogFlagError:
        case DDLogFlagWarning:
            return 3;
        case DDLogFlagInfo:
            return 6;
        case DDLogFlagDebug:
        case DDLogFlagVerbose:
            return 7;
        default:
            return 5;
    }
}

/// "NAME=", or what begins a value of several lines: the name and the value's length, 64 bits, least
/// significant byte first.
void beginField(std::string& datagram, std::string_view name, std::string_view value) {
    datagram += name;
    if (value.find('\n') == std::string_view::npos) {
        datagram += '=';
    } else {
        datagram += '\n';
        for (int shift = 0; shift < 64; shift += 8)
            datagram += static_cast<char>(static_cast<std::uint64_t>(value.size()) >> shift & 0xFF);
    }
}

void appendField(std::string& datagram, std::string_view name, std::string_view value) {
    beginField(datagram, name, value);
    datagram += value;
    datagram += '\n';
}

void writeWhole(int fd, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t count = ::write(fd, text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

}  // namespace

/// The journal's own datagram protocol (https://systemd.io/JOURNAL_NATIVE_PROTOCOL/). The library call for it
/// answers success where no journal is, and its socket can't be chosen; so the datagrams are made here.
class DDOSLogger::Journal {
  public:
    explicit Journal(const std::string& path) {
        address_.sun_family = AF_UNIX;
        // A path that is too long reaches no socket, which is answered like a missing one.
        if (path.size() < sizeof(address_.sun_path)) std::memcpy(address_.sun_path, path.data(), path.size());
    }
    ~Journal() {
        if (socket_ >= 0) ::close(socket_);
    }
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    bool send(std::string_view line, const DDLogMessage& message) {
        if (socket_ < 0) socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (socket_ < 0 || address_.sun_path[0] == '\0') return false;
        head_.clear();
        beginField(head_, "MESSAGE", line);
        tail_ = '\n';
        appendField(tail_, "PRIORITY", std::to_string(journalPriority(message.flag)));
        appendField(tail_, "SYSLOG_IDENTIFIER", program_invocation_short_name);
        appendField(tail_, "CODE_FILE", message.file);
        appendField(tail_, "CODE_LINE", std::to_string(message.line));
        appendField(tail_, "CODE_FUNC", message.function);
        // The line goes from where it lies: it may be long.
        const std::array<std::string_view, 3> entry{head_, line, tail_};
        std::array<iovec, 3> parts;
        std::ranges::transform(entry, parts.begin(), [](std::string_view part) {
            return iovec{const_cast<char*>(part.data()), part.size()};
        });
        msghdr header{};
        header.msg_iov = parts.data();
        header.msg_iovlen = parts.size();
        if (transmit(header)) return true;
        // Told before anyone has looked whether a journal is there.
        return (errno == EMSGSIZE || errno == ENOBUFS) && answers() && sendInMemory(entry);
    }

  private:
    bool transmit(msghdr& header) {
        header.msg_name = &address_;
        header.msg_namelen = sizeof(address_);
        ssize_t sent;
        do sent = ::sendmsg(socket_, &header, MSG_NOSIGNAL);
        while (sent < 0 && errno == EINTR);
        return sent >= 0;
    }

    [[nodiscard]] bool answers() const {
        const int probe = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (probe < 0) return false;
        const bool connected =
            ::connect(probe, reinterpret_cast<const sockaddr*>(&address_), sizeof(address_)) == 0;
        ::close(probe);
        return connected;
    }

    /// What is too long for a datagram goes as a sealed file in memory.
    bool sendInMemory(std::span<const std::string_view> entry) {
        const int file = ::memfd_create("journal-entry", MFD_CLOEXEC | MFD_ALLOW_SEALING);
        if (file < 0) return false;
        for (const std::string_view part : entry) writeWhole(file, part);
        ::fcntl(file, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL);
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
        msghdr header{};
        header.msg_control = control;
        header.msg_controllen = sizeof(control);
        cmsghdr* rights = CMSG_FIRSTHDR(&header);
        rights->cmsg_level = SOL_SOCKET;
        rights->cmsg_type = SCM_RIGHTS;
        rights->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(rights), &file, sizeof(int));
        const bool sent = transmit(header);
        ::close(file);
        return sent;
    }

    int socket_ = -1;
    sockaddr_un address_{};
    std::string head_;
    std::string tail_;
};

const std::shared_ptr<DDOSLogger>& DDOSLogger::sharedInstance() {
    static const auto& shared = *new std::shared_ptr<DDOSLogger>(make("/run/systemd/journal/socket"));
    return shared;
}

std::shared_ptr<DDOSLogger> DDOSLogger::make(const std::string& socketPath, int fallback) {
    return std::shared_ptr<DDOSLogger>(new DDOSLogger(socketPath, fallback));
}

DDOSLogger::DDOSLogger(const std::string& socketPath, int fallback)
    : journal_(std::make_unique<Journal>(socketPath)), fallback_(fallback) {}

DDOSLogger::~DDOSLogger() = default;

void DDOSLogger::logMessage(const DDLogMessage& message) {
    auto line = formatted(message);
    if (!line || journal_->send(*line, message)) return;
    *line += '\n';
    const PipeSignalHeld held;
    writeWhole(fallback_, *line);
}

}  // namespace zqcore::platform
