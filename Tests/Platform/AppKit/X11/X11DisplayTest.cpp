#include "Platform/AppKit/X11/X11Display.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/AppKit/DefaultDisplay.h"
#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Keyboard/Sauce.h"
#include "TestKit/UI/XvfbServer.h"

namespace zqcore::platform {
namespace {

using namespace std::chrono_literals;
using testkit::XvfbServer;

constexpr int kWidth = 800;
constexpr int kHeight = 600;

struct Recorder final : DisplayHandler {
    std::vector<DisplayEvent> events;
    std::vector<DisplayWindowNumber> focus, closing, wantPixels;
    std::vector<bool> activity;
    std::vector<CGRect> moves;
    std::vector<std::string> losses;
    int screenChanges = 0;

    void displaySentEvent(const DisplayEvent& event) override { events.push_back(event); }
    void displayScreensChanged() override { ++screenChanges; }
    void displayAppearanceChanged(DisplayAppearance) override {}
    void displayActivationChanged(bool active) override { activity.push_back(active); }
    void displayFocusChanged(DisplayWindowNumber window) override { focus.push_back(window); }
    void displayWindowMoved(DisplayWindowNumber, const CGRect& frame) override { moves.push_back(frame); }
    void displayWindowCloseRequested(DisplayWindowNumber window) override { closing.push_back(window); }
    void displayWindowNeedsPixels(DisplayWindowNumber window) override { wantPixels.push_back(window); }
    void displayLost(std::string_view reason) override { losses.emplace_back(reason); }
};

struct Pixels {
    int width, height;
    std::vector<std::uint32_t> values;
    [[nodiscard]] DisplaySurface surface() const {
        return {width, height, static_cast<std::size_t>(width) * 4, values.data(), 1};
    }
};

Pixels plain(int width, int height, std::uint32_t color) {
    return {width, height, std::vector<std::uint32_t>(static_cast<std::size_t>(width * height), color)};
}

class X11DisplayTest : public testing::Test {
  protected:
    void SetUp() override {
        server = std::make_unique<XvfbServer>(kWidth, kHeight);
        if (!server->running()) GTEST_SKIP() << "Xvfb isn't installed here, or didn't come up";
        open();
    }
    void TearDown() override { display.reset(); }

    void open() {
        std::string reason;
        display = X11Display::open(server->display(), &reason);
        ASSERT_TRUE(display) << reason;
        display->setHandler(&heard);
    }
    static bool waitFor(const std::function<bool()>& done) { return RunLoop::main().runUntil(done, 10s); }
    /// The server has done all that the display asked for.
    void settle() const { (void)display->pointerLocation(); }
    [[nodiscard]] std::uint32_t pixel(int x, int y) const {
        settle();
        return server->pixel(x, y);
    }
    DisplayWindowNumber show(const DisplayWindowState& state, const Pixels& pixels) {
        const auto window = display->openWindow(state);
        display->orderFront(window, true);
        display->present(window, pixels.surface());
        settle();
        return window;
    }
    static DisplayWindowState card(CGRect frame, int level = NSFloatingWindowLevel) {
        DisplayWindowState state;
        state.frame = frame;
        state.level = level;
        return state;
    }
    /// Waits for an event of a type; null if none comes.
    const DisplayEvent* next(NSEventType type) {
        const auto found = [&] { return std::ranges::find(heard.events, type, &DisplayEvent::type); };
        waitFor([&] { return found() != heard.events.end(); });
        return found() == heard.events.end() ? nullptr : &*found();
    }

    std::unique_ptr<XvfbServer> server;
    std::shared_ptr<X11Display> display;
    Recorder heard;
};

TEST_F(X11DisplayTest, ShowsPixelsWhereTheFrameLies) {
    Pixels pixels = plain(100, 50, 0xFF2040C0);
    pixels.values[0] = 0xFFFF0000;  // the upper left one
    const auto window = show(card({{200, 300}, {100, 50}}), pixels);
    ASSERT_GT(window, 0);
    // y-up: the upper edge at 350 is the row 250 from the top.
    EXPECT_EQ(pixel(200, 250), 0xFF0000U);
    EXPECT_EQ(pixel(299, 299), 0x2040C0U);
    EXPECT_EQ(pixel(300, 299), 0U);
    EXPECT_EQ(pixel(299, 300), 0U);
    EXPECT_EQ(pixel(199, 250), 0U);

    // Another application's window comes over it and goes; nobody needs to draw anew.
    const auto other = server->addWindow(150, 240, 200, 100, 0x00FF00);
    EXPECT_EQ(pixel(250, 280), 0x00FF00U);
    server->removeWindow(other);
    EXPECT_EQ(pixel(250, 280), 0x2040C0U);
    EXPECT_TRUE(heard.wantPixels.empty());

    display->updateWindow(window, card({{0, 0}, {100, 50}}));
    EXPECT_EQ(pixel(0, 550), 0xFF0000U);
    EXPECT_EQ(pixel(250, 280), 0U);
    display->hideWindow(window);
    EXPECT_EQ(pixel(0, 550), 0U);
    display->orderFront(window, true);
    EXPECT_EQ(pixel(0, 550), 0xFF0000U) << "shown again with the pixels it had";
    display->closeWindow(window);
    EXPECT_EQ(pixel(0, 550), 0U);
}

}  // namespace
}  // namespace zqcore::platform
