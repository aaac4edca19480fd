#include "Classes/Core/Utility/AppKit/ZQTargetBindableControls.h"

#include <gtest/gtest.h>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSWindow.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

TEST(ZQTargetBindableControlsTest, APressRunsTheLastClosureThatWasBound) {
    testkit::HeadlessApplication ui;
    const auto window = makeObject<NSWindow>(CGRect{{0, 0}, {100, 100}});
    auto button = makeObject<NSButton>(CGRect{{0, 0}, {100, 100}});
    window->contentView()->addSubview(button);
    window->orderFront();
    int first = 0;
    int second = 0;
    zq_bindAction(button, [&](NSButton& /*pressed*/) { ++first; });
    ui.display().click({50, 50});
    EXPECT_EQ(first, 1);
    zq_bindAction(button, [&](NSButton& pressed) {
        ++second;
        EXPECT_EQ(&pressed, button.get());
    });
    ui.display().click({50, 50});
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
    zq_bindAction(button, {});
    EXPECT_EQ(button->target(), nullptr);
    EXPECT_FALSE(button->action());
    ui.display().click({50, 50});
    EXPECT_EQ(second, 1);
    const std::weak_ptr<NSButton> weak = button;
    zq_bindAction(button, [](NSButton& pressed) { pressed.removeFromSuperview(); });
    button.reset();
    ui.display().click({50, 50});
    EXPECT_TRUE(weak.expired()) << "a closure keeps its control neither before nor after";
}

TEST(ZQTargetBindableControlsTest, MenuItemsAndGesturesAreBoundLikewise) {
    int calls = 0;
    const auto item = makeObject<NSMenuItem>("item");
    zq_bindAction(item, [&](NSMenuItem& chosen) { calls += chosen.title() == "item" ? 1 : 100; });
    ASSERT_TRUE(item->action());
    EXPECT_TRUE(item->action()->perform(*item->target(), item.get()));
    const auto gesture = makeObject<NSGestureRecognizer>();
    zq_bindAction(gesture, [&](NSGestureRecognizer& /*recognised*/) { ++calls; });
    EXPECT_TRUE(gesture->action()->perform(*gesture->target(), gesture.get()));
    EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace zqcore
