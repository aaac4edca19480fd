#include "Classes/Core/Utility/AppKit/ZQEventMonitor.h"

#include <gtest/gtest.h>

#include <vector>

#include "Classes/Core/Utility/AppKit/FamousApp.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

constexpr NSEventMask kDownMask = NSEventMaskFromType(NSEventType::leftMouseDown);

class ClickedView final : public NSView {
  public:
    using NSView::NSView;
    void mouseDown(const NSEvent&) override { ++downs; }
    int downs = 0;
};

class ZQEventMonitorTest : public testing::Test {
  protected:
    ZQEventMonitorTest() {
        window->setContentView(content);
        window->orderFront();
        ui.turn();
    }
    void clickOurs() { ui.display().click({150, 250}); }
    void clickOthers() { ui.display().click({1000, 700}); }

    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRectMake(100, 200, 400, 300));
    std::shared_ptr<ClickedView> content = makeObject<ClickedView>(CGRectMake(0, 0, 400, 300));
    int seen = 0;
    ZQEventMonitor::Handler count = [this](const std::shared_ptr<NSEvent>&) { ++seen; };
};

TEST_F(ZQEventMonitorTest, EachKindSeesItsEventsAndSwallowsNone) {
    struct Case {
        std::shared_ptr<ZQEventMonitor> monitor;
        int ours, others;
    };
    const Case cases[] = {
        {ZQEventMonitor::localMonitorWithEvent(kDownMask, count), 1, 0},
        {ZQEventMonitor::globalMonitorWithEvent(kDownMask, count), 0, 1},
        {ZQEventMonitor::bothMonitorWithEvent(kDownMask, count), 1, 1},
    };
    for (const auto& [monitor, ours, others] : cases) {
        const int kind = static_cast<int>(monitor->type);
        ui.application().activate();  // else the first click would only do that
        seen = content->downs = 0;
        clickOurs();
        EXPECT_EQ(seen, 0) << "not before its start, kind " << kind;
        monitor->start();
        monitor->start();
        clickOurs();
        EXPECT_EQ(seen, ours) << "started twice, seen once, kind " << kind;
        EXPECT_EQ(content->downs, 2) << "the view gets each click, kind " << kind;
        clickOthers();
        EXPECT_EQ(seen, ours + others) << "kind " << kind;
        EXPECT_EQ(monitor->localMonitor() != nullptr, ours == 1);
        EXPECT_EQ(monitor->globalMonitor() != nullptr, others == 1);

        monitor->stop();
        monitor->stop();
        clickOurs();
        clickOthers();
        EXPECT_EQ(seen, ours + others) << "kind " << kind;
        EXPECT_FALSE(monitor->localMonitor() || monitor->globalMonitor());
    }
}

TEST_F(ZQEventMonitorTest, AnOwnerThatForgetsToStopLeavesTheGlobalHalf) {
    auto monitor = ZQEventMonitor::bothMonitorWithEvent(kDownMask, count);
    monitor->start();
    monitor.reset();
    clickOurs();
    EXPECT_EQ(seen, 0) << "the local half looks for its monitor";
    EXPECT_EQ(content->downs, 1) << "and passes the event on";
    clickOthers();
    EXPECT_EQ(seen, 1) << "the global half is the handler itself";
}

TEST(FamousAppTest, IsItsIdentifier) {
    EXPECT_EQ(FamousApp{"com.tencent.qq"}, FamousApp::qq());
    EXPECT_NE(FamousApp::chrome(), FamousApp::edge());
    EXPECT_EQ(FamousApp::foxitPDFReader().rawValue, "com.foxit-software.Foxit PDF Reader");
}

}  // namespace
}  // namespace zqcore
