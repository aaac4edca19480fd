#pragma once

#include <functional>
#include <memory>

#include "Platform/AppKit/Headless/HeadlessDisplay.h"

namespace zqcore::testkit {

/// A display together with the hands of a user: what a contract suite needs to run on any display.
/// Threads: main thread. Each operation returns when what it caused has been told to the application, as far
/// as it is going to be.
class DisplayDriver {
  public:
    virtual ~DisplayDriver() = default;
    [[nodiscard]] virtual std::shared_ptr<platform::Display> display() = 0;

    virtual void movePointer(platform::CGPoint location) = 0;
    virtual void pressButton(int button = 0) = 0;
    virtual void releaseButton(int button = 0) = 0;
    virtual void scroll(platform::CGFloat steps) = 0;
    virtual void pressKey(unsigned short keyCode) = 0;
    virtual void releaseKey(unsigned short keyCode) = 0;
    /// A window of another application in front of level 0; it stays until the driver ends.
    virtual void openForeignWindow(const platform::CGRect& frame) = 0;
    /// Ends what the display stands on, under the application.
    virtual void lose() = 0;
    /// Lets everything that is under way arrive.
    virtual void settle() = 0;
};

/// The one over a headless display.
class HeadlessDriver final : public DisplayDriver {
  public:
    [[nodiscard]] std::shared_ptr<platform::Display> display() override { return display_; }
    void movePointer(platform::CGPoint location) override { display_->movePointer(location); }
    void pressButton(int button) override { display_->pressButton(button); }
    void releaseButton(int button) override { display_->releaseButton(button); }
    void scroll(platform::CGFloat steps) override { display_->scroll(0, steps); }
    void pressKey(unsigned short keyCode) override { display_->pressKey(keyCode); }
    void releaseKey(unsigned short keyCode) override { display_->releaseKey(keyCode); }
    void openForeignWindow(const platform::CGRect& frame) override {
        platform::HeadlessDisplay::ForeignWindow window;
        window.frame = frame;
        display_->addForeignWindow(window);
    }
    void lose() override { display_->lose("as a test wished"); }
    void settle() override;

  private:
    std::shared_ptr<platform::HeadlessDisplay> display_ = std::make_shared<platform::HeadlessDisplay>();
};

}  // namespace zqcore::testkit
