#pragma once

#include <memory>

#include "TestKit/UI/DisplayDriver.h"
#include "TestKit/UI/XvfbServer.h"

namespace zqcore::testkit {

/// The display of an X server of the test's own, with the hands of a user.
class XvfbDriver final : public DisplayDriver {
  public:
    /// Null where there is no such server.
    [[nodiscard]] static std::unique_ptr<DisplayDriver> make();

    [[nodiscard]] std::shared_ptr<platform::Display> display() override { return display_; }
    void movePointer(platform::CGPoint location) override;
    void pressButton(int button) override;
    void releaseButton(int button) override;
    void scroll(platform::CGFloat steps) override;
    void pressKey(unsigned short keyCode) override;
    void releaseKey(unsigned short keyCode) override;
    void openForeignWindow(const platform::CGRect& frame) override;
    void lose() override;
    void settle() override;

  private:
    XvfbDriver() = default;

    static constexpr int kWidth = 800;
    static constexpr int kHeight = 600;
    XvfbServer server_{kWidth, kHeight};
    std::shared_ptr<platform::Display> display_;
};

}  // namespace zqcore::testkit
