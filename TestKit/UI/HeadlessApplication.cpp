#include "TestKit/UI/HeadlessApplication.h"

#include <utility>

namespace zqcore::testkit {

using namespace platform;

HeadlessApplication::HeadlessApplication(std::vector<DisplayScreen> screens)
    : display_(std::make_shared<HeadlessDisplay>(std::move(screens))) {
    NSApplication::resetForTesting();
    Display::install(display_);
    application_ = NSApplication::shared();
}

HeadlessApplication::~HeadlessApplication() {
    NSApplication::resetForTesting();
    application_.reset();
    clock_.waitUntilQuiet();
    Display::install(nullptr);
}

void HeadlessApplication::advance(double seconds) {
    clock_.advance(std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(seconds)));
}

}  // namespace zqcore::testkit
