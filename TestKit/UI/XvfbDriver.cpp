#include "TestKit/UI/XvfbDriver.h"

#include <chrono>
#include <cmath>

#include "Platform/AppKit/X11/X11Display.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Keyboard/EvdevKeyCodes.h"

namespace zqcore::testkit {

using namespace platform;

namespace {

constexpr int kEvdevOffset = 8;

// Left, right, middle, then the ones beyond the wheel's four.
int serverButton(int button) { return button == 0 ? 1 : button == 1 ? 3 : button == 2 ? 2 : button + 5; }

}  // namespace

std::unique_ptr<DisplayDriver> XvfbDriver::make() {
    std::unique_ptr<XvfbDriver> driver(new XvfbDriver);
    if (driver->server_.running()) driver->display_ = X11Display::open(driver->server_.display());
    if (!driver->display_) return nullptr;
    return driver;
}

void XvfbDriver::movePointer(CGPoint location) {
    server_.movePointer(static_cast<int>(location.x), kHeight - static_cast<int>(location.y));
    settle();
}

void XvfbDriver::pressButton(int button) {
    server_.pressButton(serverButton(button));
    settle();
}

void XvfbDriver::releaseButton(int button) {
    server_.releaseButton(serverButton(button));
    settle();
}

void XvfbDriver::scroll(CGFloat steps) {
    for (int step = 0; step < std::lround(std::fabs(steps)); ++step) server_.click(steps > 0 ? 4 : 5);
    settle();
}

void XvfbDriver::pressKey(unsigned short keyCode) {
    if (const auto code = evdevCodeForKeyCode(keyCode)) server_.pressKey(*code + kEvdevOffset);
    settle();
}

void XvfbDriver::releaseKey(unsigned short keyCode) {
    if (const auto code = evdevCodeForKeyCode(keyCode)) server_.releaseKey(*code + kEvdevOffset);
    settle();
}

void XvfbDriver::openForeignWindow(const CGRect& frame) {
    server_.addWindow(static_cast<int>(frame.origin.x),
                      kHeight - static_cast<int>(frame.origin.y + frame.size.height),
                      static_cast<int>(frame.size.width), static_cast<int>(frame.size.height), 0xD0D0D0);
    settle();
}

void XvfbDriver::lose() {
    server_.stop();
    // The socket's end is an event like any other.
    RunLoop::main().runUntil([this] { return display_->isLost(); }, std::chrono::seconds(10));
}

// What a turn asks of the server, its answers, and what they lead to, until nothing follows.
void XvfbDriver::settle() {
    do (void)display_->pointerLocation();
    while (RunLoop::main().drain());
}

}  // namespace zqcore::testkit
