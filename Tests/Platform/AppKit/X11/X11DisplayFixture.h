#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/X11/X11Display.h"
#include "TestKit/UI/XvfbServer.h"

namespace zqcore::platform {

/// Writes down what a display tells.
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

inline Pixels plain(int width, int height, std::uint32_t color) {
    return {width, height, std::vector<std::uint32_t>(static_cast<std::size_t>(width * height), color)};
}

/// A display on a server of its own.
class X11DisplayTest : public testing::Test {
  protected:
    static constexpr int kWidth = 800;
    static constexpr int kHeight = 600;

    void SetUp() override {
        server = std::make_unique<testkit::XvfbServer>(kWidth, kHeight);
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
    static bool waitFor(const std::function<bool()>& done) { return testkit::XvfbServer::waitFor(done); }
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

    std::unique_ptr<testkit::XvfbServer> server;
    std::shared_ptr<X11Display> display;
    Recorder heard;
};

}  // namespace zqcore::platform
