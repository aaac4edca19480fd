// The main application's window, asked for by request over a bus of the test's own.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestKit/ChildProcess.h"
#include "TestKit/PrivateBus.h"
#include "TestKit/UI/XvfbServer.h"

namespace {

using namespace zqcore;

constexpr const char* kOrbel = "com.tessaradev.Orbel";

int send(const std::string& path) {
    return testkit::ChildProcess(
               {ZQ_TEST_APPS "/zq", "send", path, "--to", kOrbel, "--body", R"({"action":"showWindow"})"})
        .wait();
}

TEST(OrbelWindowTest, ShowsWhatARequestAsksForAndLivesOnWhenItIsClosed) {
    const testkit::XvfbServer server;
    if (!server.running()) GTEST_SKIP() << "Xvfb isn't installed here, or didn't come up";
    testkit::PrivateBus bus;
    ASSERT_TRUE(bus.running());
    bus.addService(kOrbel,
                   "/usr/bin/env GDK_SCALE=1 DISPLAY=" + server.display() + " " ZQ_TEST_APPS "/orbel");
    // The window is 420 by 160 points, 160 from the left and from below; its line stands in the middle.
    const auto ground = [&] { return server.pixel(170, 430); };
    const auto line = [&] {
        std::vector<std::uint32_t> pixels;
        for (int x = 270; x < 470; ++x) pixels.push_back(server.pixel(x, 360));
        return pixels;
    };
    EXPECT_EQ(ground(), 0U);
    ASSERT_EQ(send("translate"), 0);
    ASSERT_TRUE(server.waitFor([&] { return ground() != 0 && line() != std::vector(200, ground()); }));
    const auto translation = line();
    ASSERT_EQ(send("ocr"), 0);
    EXPECT_TRUE(server.waitFor([&] { return line() != translation; })) << "another line in the same window";

    ASSERT_TRUE(server.waitFor([&] { return server.focusedWindow() > 1; }));
    server.requestClose(server.focusedWindow());
    EXPECT_TRUE(server.waitFor([&] { return ground() == 0; }));
    ASSERT_EQ(send("translate"), 0);
    EXPECT_TRUE(server.waitFor([&] { return ground() != 0 && line() == translation; })) << "shown again";
}

TEST(OrbelWindowTest, AnswersWithoutADisplayToo) {
    testkit::PrivateBus bus;
    ASSERT_TRUE(bus.running());
    bus.addService(kOrbel, "/usr/bin/env -u DISPLAY " ZQ_TEST_APPS "/orbel");
    EXPECT_EQ(send("translate"), 0);
    EXPECT_EQ(send("ocr"), 0) << "it is still there";
}

}  // namespace
