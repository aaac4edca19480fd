#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/DisplayDriver.h"

namespace zqcore {

/// What holds on every display. A display joins by instantiating the suite with its driver's maker.
class DisplayContract : public testing::TestWithParam<std::unique_ptr<testkit::DisplayDriver> (*)()> {
  protected:
    void SetUp() override {
        driver = GetParam()();
        if (!driver) GTEST_SKIP() << "this display can't be had here";
        NSApplication::resetForTesting();
        Display::install(driver->display());
        application = NSApplication::shared();
        application->activate(true);
        driver->movePointer({5, 5});
        driver->settle();
    }
    void TearDown() override {
        if (!driver) return;
        window.reset();
        application.reset();
        NSApplication::resetForTesting();
        Display::install(nullptr);
    }

    /// A borderless window above the others, as tips and panels are.
    std::shared_ptr<NSWindow> show(const CGRect& frame, NSWindowLevel level = NSFloatingWindowLevel) {
        auto made = makeObject<NSWindow>(frame);
        made->setLevel(level);
        made->orderFrontRegardless();
        driver->settle();
        return made;
    }

    std::unique_ptr<testkit::DisplayDriver> driver;
    std::shared_ptr<NSApplication> application;
    std::shared_ptr<NSWindow> window;
};

/// A view that writes down what it hears, with the place in its own space.
class HearingView : public NSView {
  public:
    using NSView::NSView;
    std::vector<std::string> heard;
    CGPoint last;

    void mouseDown(const NSEvent& event) override { hear("down", event); }
    void mouseUp(const NSEvent& event) override { hear("up", event); }
    void mouseDragged(const NSEvent& event) override { hear("drag", event); }
    void rightMouseDown(const NSEvent& event) override { hear("right", event); }
    void mouseEntered(const NSEvent& event) override { hear("enter", event); }
    void mouseExited(const NSEvent& event) override { hear("exit", event); }
    void scrollWheel(const NSEvent& event) override {
        hear(event.scrollingDeltaY() > 0 ? "wheel up" : "wheel down", event);
    }
    [[nodiscard]] std::vector<std::string> take() { return std::exchange(heard, {}); }

  private:
    void hear(const char* what, const NSEvent& event) {
        heard.emplace_back(what);
        last = convertPointFromView(event.locationInWindow(), nullptr);
    }
};

}  // namespace zqcore
