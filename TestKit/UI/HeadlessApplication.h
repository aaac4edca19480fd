#pragma once

#include <memory>

#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/NSApplication.h"
#include "TestKit/ManualClock.h"

namespace zqcore::testkit {

/// A fresh application on a headless display, under a clock that stands still. Threads: main thread.
/// Lifetime: one at a time; at its end windows, monitors and timers are gone and the system's clock is back.
class HeadlessApplication {
  public:
    explicit HeadlessApplication(std::vector<platform::DisplayScreen> screens = {});
    ~HeadlessApplication();
    HeadlessApplication(const HeadlessApplication&) = delete;
    HeadlessApplication& operator=(const HeadlessApplication&) = delete;

    [[nodiscard]] ManualClock& clock() noexcept { return clock_; }
    [[nodiscard]] platform::HeadlessDisplay& display() noexcept { return *display_; }
    [[nodiscard]] platform::NSApplication& application() noexcept { return *application_; }
    /// Lets everything run that is due now: timers, the main queue, display passes.
    void turn() { clock_.waitUntilQuiet(); }
    /// Lets time pass, one turn at each thing that comes due.
    void advance(double seconds);

  private:
    ManualClock clock_;
    std::shared_ptr<platform::HeadlessDisplay> display_;
    std::shared_ptr<platform::NSApplication> application_;
};

}  // namespace zqcore::testkit
