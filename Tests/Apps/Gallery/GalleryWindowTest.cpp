#include <gtest/gtest.h>

#include "TestKit/UI/XvfbServer.h"

namespace {

using namespace zqcore;

TEST(GalleryWindowTest, TurnsPagesByKeySwitchesTheAppearanceByClickAndEndsWhenItIsClosed) {
    const testkit::XvfbServer server(1280, 800);
    if (!server.running()) GTEST_SKIP() << "Xvfb isn't installed here, or didn't come up";
    const auto gallery = server.start({ZQ_TEST_APPS "/gallery", "--light", "--scale", "1"});
    ASSERT_TRUE(gallery);
    // The window stands 80 points from the lower left corner and is 520 high; the list is at its left.
    constexpr int kLeft = 80, kTop = 800 - 80 - 520;
    const auto ground = [&] { return server.pixel(kLeft + 2, kTop + 2); };
    const auto item = [&](int number) { return server.pixel(kLeft + 180, kTop + 12 + 30 * number + 4); };
    ASSERT_TRUE(server.waitFor([&] { return ground() == 0xFFFFFF && item(0) != ground(); }));
    EXPECT_EQ(item(1), ground()) << "the first page is the chosen one";
    ASSERT_TRUE(server.waitFor([&] { return server.focusedWindow() > 1; }));
    server.pressKey(114);  // the right arrow
    server.releaseKey(114);
    EXPECT_TRUE(server.waitFor([&] { return item(1) != ground() && item(0) == ground(); }));

    server.movePointer(kLeft + 50, kTop + 520 - 12 - 15);
    server.click(1);
    EXPECT_TRUE(server.waitFor([&] { return (ground() & 0xFF) < 0x60 && item(1) != ground(); }));
    server.requestClose(server.focusedWindow());
    EXPECT_EQ(gallery->wait(), 0);
}

}  // namespace
