#include "Platform/Lumberjack/DDOSLogger.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>

#include "TestKit/ScratchFolder.h"
#include "Tests/Platform/Lumberjack/LogTestSupport.h"

namespace zqcore {
namespace {

using testing_support::contentOf;
using testing_support::say;

/// A journal that the test plays.
class Journal {
  public:
    Journal() { listen(); }
    ~Journal() { ::close(socket_); }

    [[nodiscard]] const std::string& path() const { return path_; }
    void end() {
        ::close(socket_);
        ::unlink(path_.c_str());
    }
    void listen() {
        socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path_.data(), path_.size());
        EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    }
    /// The next datagram, or the content of the sealed file that came in its place.
    std::string receive() {
        std::string bytes(1 << 20, '\0');
        iovec part{bytes.data(), bytes.size()};
        alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
        msghdr header{};
        header.msg_iov = &part;
        header.msg_iovlen = 1;
        header.msg_control = control;
        header.msg_controllen = sizeof(control);
        const ssize_t count = ::recvmsg(socket_, &header, MSG_CMSG_CLOEXEC);
        if (count < 0) return "(nothing)";
        bytes.resize(static_cast<std::size_t>(count));
        const cmsghdr* rights = CMSG_FIRSTHDR(&header);
        if (!rights) return bytes;
        int file = -1;
        std::memcpy(&file, CMSG_DATA(rights), sizeof(int));
        EXPECT_EQ(::fcntl(file, F_GET_SEALS), F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL);
        const std::string content = contentOf("/proc/self/fd/" + std::to_string(file));
        ::close(file);
        return content;
    }

  private:
    testkit::ScratchFolder folder_;
    std::string path_ = folder_ / "socket";
    int socket_ = -1;
};

class DDOSLoggerTest : public testing::Test {
  protected:
    DDOSLoggerTest() { ddlog_->addLogger(DDOSLogger::make(journal_.path(), fallback_)); }
    ~DDOSLoggerTest() override { ::close(fallback_); }

    [[nodiscard]] std::string fallbackText() const { return contentOf(folder_ / "stderr"); }

    testkit::ScratchFolder folder_;
    Journal journal_;
    int fallback_ = ::open((folder_ / "stderr").c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600);
    std::shared_ptr<DDLog> ddlog_ = DDLog::make();
};

TEST_F(DDOSLoggerTest, SendsOneDatagramALineWithItsPlace) {
    say(*ddlog_, "100 % of it", false, DDLogFlagInfo);
    EXPECT_EQ(journal_.receive(), "MESSAGE=100 % of it\nPRIORITY=6\nSYSLOG_IDENTIFIER=" +
                                      std::string(program_invocation_short_name) +
                                      "\nCODE_FILE=/x/Place.cpp\nCODE_LINE=7\nCODE_FUNC=function()\n");
    EXPECT_EQ(fallbackText(), "");
}

TEST_F(DDOSLoggerTest, MapsFlagsToPriorities) {
    struct Case {
        std::uint64_t flag;
        int priority;
    };
    for (const auto& [flag, priority] :
         {Case{1, 3}, Case{2, 3}, Case{4, 6}, Case{8, 7}, Case{16, 7}, Case{3, 5}, Case{32, 5}}) {
        say(*ddlog_, "text", false, flag);
        const std::string datagram = journal_.receive();
        EXPECT_TRUE(datagram.contains("\nPRIORITY=" + std::to_string(priority) + "\n")) << flag << datagram;
    }
}

TEST_F(DDOSLoggerTest, TellsTextsOfSeveralLinesByTheirLength) {
    say(*ddlog_, "one\nMESSAGE=two");
    EXPECT_TRUE(
        journal_.receive().starts_with(std::string("MESSAGE\n\x0f\0\0\0\0\0\0\0one\nMESSAGE=two\nPRIO", 36)));
}

TEST_F(DDOSLoggerTest, SendsWhatIsTooLongForADatagramInASealedFile) {
    const std::string text(2 << 20, 'x');
    say(*ddlog_, text);
    EXPECT_TRUE(journal_.receive().starts_with("MESSAGE=" + text + "\nPRIORITY=6\n"));
    EXPECT_EQ(fallbackText(), "");
}

std::size_t memoryInUse() {
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST_F(DDOSLoggerTest, KeepsNoMemoryOfALongLine) {
    say(*ddlog_, "short");
    const std::string text(8 << 20, 'x');
    const std::size_t before = memoryInUse();
    say(*ddlog_, text);
    EXPECT_LT(memoryInUse(), before + (1 << 20));
}

TEST_F(DDOSLoggerTest, WritesRowsToStandardErrorWhileNoJournalAnswers) {
    journal_.end();
    say(*ddlog_, "no journal");
    EXPECT_EQ(fallbackText(), "no journal\n");
    journal_.listen();
    say(*ddlog_, "it is back");
    EXPECT_TRUE(journal_.receive().starts_with("MESSAGE=it is back\n"));
    EXPECT_EQ(fallbackText(), "no journal\n");
    journal_.end();
    const std::string text(2 << 20, 'x');
    say(*ddlog_, text);
    EXPECT_EQ(fallbackText(), "no journal\n" + text + "\n") << "nor one for what is too long for a datagram";
    ASSERT_EQ(::ftruncate(fallback_, 0), 0);

    const auto elsewhere = DDLog::make();
    elsewhere->addLogger(DDOSLogger::make("/" + std::string(200, 'p'), fallback_));
    say(*elsewhere, "no such path");
    EXPECT_EQ(fallbackText(), "no such path\n");
}

}  // namespace
}  // namespace zqcore
