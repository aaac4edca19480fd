#include "Platform/Base/Linux/PipeSignalHeld.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace zqcore {
namespace {

bool isPending() {
    sigset_t pending;
    ::sigpending(&pending);
    return ::sigismember(&pending, SIGPIPE) == 1;
}

TEST(PipeSignalHeldTest, TakesBackWhatCameMeanwhileAndNothingElse) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    const auto writeHeld = [&] {
        const platform::PipeSignalHeld held;
        EXPECT_EQ(::write(ends[1], "x", 1), -1);
        EXPECT_TRUE(isPending());
    };
    sigset_t pipe;
    ::sigemptyset(&pipe);
    ::sigaddset(&pipe, SIGPIPE);
    sigset_t before;
    ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
    writeHeld();
    EXPECT_FALSE(isPending());
    EXPECT_EQ(errno, EPIPE);

    ::raise(SIGPIPE);
    writeHeld();
    EXPECT_TRUE(isPending()) << "the caller's own signal is lost";
    int taken = 0;
    ::sigwait(&pipe, &taken);

    sigset_t after;
    ::pthread_sigmask(SIG_SETMASK, &before, &after);
    EXPECT_EQ(::sigismember(&after, SIGPIPE), 1) << "the caller's mask is lost";
    ::close(ends[1]);
}

}  // namespace
}  // namespace zqcore
