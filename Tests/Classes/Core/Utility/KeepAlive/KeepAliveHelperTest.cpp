#include "Classes/Core/Utility/KeepAlive/KeepAliveHelper.h"

#include <gtest/gtest.h>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/LogCapture.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class KeepAliveHelperTest : public testing::Test {
  protected:
    ~KeepAliveHelperTest() override { KeepAliveHelper::stop(); }
    int ticks() {
        int count = 0;
        KeepAliveHelper::queue()->sync([&] { count = KeepAliveHelper::tickCountForTesting(); });
        return count;
    }

    testkit::LogCapture log;
    testkit::HeadlessApplication ui;
};

TEST_F(KeepAliveHelperTest, RunsOnceHoweverOftenItIsFired) {
    KeepAliveHelper::stop();
    EXPECT_EQ(log.messages(testkit::LogCapture::info), std::vector<std::string>{"停止保活"});
    const int reasons = static_cast<int>(NSProcessInfo::processInfo().automaticTerminationReasons().size());

    ui.display().setApplicationActive(false);
    KeepAliveHelper::fire();
    EXPECT_TRUE(ui.application().isActive());
    const auto window = KeepAliveHelper::window();
    ASSERT_TRUE(window);
    ui.display().setApplicationActive(false);
    KeepAliveHelper::fire();
    EXPECT_TRUE(ui.application().isActive()) << "a second one still activates";
    EXPECT_EQ(KeepAliveHelper::window(), window);
    EXPECT_EQ(log.count("启用保活"), 2U);

    const auto wishes = NSProcessInfo::processInfo().automaticTerminationReasons();
    ASSERT_EQ(static_cast<int>(wishes.size()), reasons + 1);
    EXPECT_EQ(wishes.back(), "KeepAliveHelper");
    EXPECT_GE(NSProcessInfo::processInfo().suddenTerminationDisableCount(), 1);
}

TEST_F(KeepAliveHelperTest, ItsWindowIsThereForNobody) {
    KeepAliveHelper::fire();
    const auto window = KeepAliveHelper::window();
    ASSERT_TRUE(window);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->frame(), CGRectMake(1, 1, 1, 1));
    EXPECT_EQ(window->collectionBehavior(), 262233U);
    EXPECT_EQ(window->level(), 8);
    EXPECT_FALSE(window->hasShadow() || window->isOpaque() || window->canBecomeKey() ||
                 window->canBecomeMain());
    EXPECT_TRUE(window->ignoresMouseEvents());
    EXPECT_EQ(window->sharingType(), NSWindowSharingType::none);
}

TEST_F(KeepAliveHelperTest, TicksOnceAMinuteUntilItEnds) {
    EXPECT_EQ(KeepAliveHelper::queue()->label(), "com.tessaradev.ZQCore.KeepAliveHelper");
    const int before = ticks();
    KeepAliveHelper::fire();
    ui.advance(59.999);
    EXPECT_EQ(ticks(), before);
    ui.advance(0.001);
    EXPECT_EQ(ticks(), before + 1);
    ui.advance(60.0 * (99 - ticks()));
    EXPECT_EQ(ticks(), 99);
    ui.advance(60);
    EXPECT_EQ(ticks(), 0) << "a hundred is none again";

    KeepAliveHelper::endTimer();
    ui.advance(600);
    EXPECT_EQ(ticks(), 0);
    EXPECT_TRUE(KeepAliveHelper::window()) << "only the timer ended";

    const auto first = KeepAliveHelper::window();
    KeepAliveHelper::stop();
    EXPECT_FALSE(KeepAliveHelper::window());
    EXPECT_FALSE(first->isVisible());
    KeepAliveHelper::fire();
    ASSERT_TRUE(KeepAliveHelper::window());
    EXPECT_NE(KeepAliveHelper::window(), first);
    ui.advance(60);
    EXPECT_EQ(ticks(), 1) << "the new one ticks";
}

TEST_F(KeepAliveHelperTest, FromAnotherThreadItStartsOnTheMainOne) {
    ui.display().setApplicationActive(false);
    DispatchQueue::global()->async([] { KeepAliveHelper::fire(); });
    EXPECT_FALSE(KeepAliveHelper::window());
    ui.turn();
    EXPECT_TRUE(KeepAliveHelper::window());
    EXPECT_TRUE(ui.application().isActive());
    ui.display().setApplicationActive(false);
    DispatchQueue::global()->async([] { KeepAliveHelper::fire(); });
    ui.turn();
    EXPECT_TRUE(ui.application().isActive()) << "also while it runs";
}

}  // namespace
}  // namespace zqcore
