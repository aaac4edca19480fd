#include <gtest/gtest.h>

#include "Classes/UI/TipManager/TipManager.h"
#include "Classes/UI/TipManager/TipableButton.h"
#include "Classes/UI/TipManager/TipableScrollView.h"
#include "Classes/UI/TipManager/TipableSegmentedControl.h"
#include "Classes/UI/TipManager/TipableView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class Watched final : public TipableView {
  public:
    using TipableView::TipableView;
    [[nodiscard]] std::optional<NSTrackingAreaOptions> trackOptionsForTip() const override { return options; }
    std::optional<NSTrackingAreaOptions> options;
};

class TipableTest : public testing::Test {
  protected:
    TipableTest() {
        window->orderFront();
        outside();
    }
    ~TipableTest() override { TipManager::close(); }

    template <class View>
    std::shared_ptr<View> add(const CGRect& frame = CGRectMake(50, 60, 80, 24)) {
        auto view = makeObject<View>(frame);
        window->contentView()->addSubview(view);
        ui.turn();
        return view;
    }
    static std::shared_ptr<TipInfo> tip() {
        auto info = TipInfo::make();
        info->text = "Translate";
        return info;
    }
    void inside() { ui.display().movePointer({180, 270}); }
    void outside() { ui.display().movePointer({300, 400}); }
    static bool shown() { return TipManager::windowNumber().has_value(); }

    template <class View>
    void followsThePointer() {
        const auto view = add<View>();
        EXPECT_FALSE(view->tipInfo() || view->fetchTipInfo() || view->trackOptionsForTip());
        ASSERT_EQ(view->trackingAreas().size(), 1U);
        EXPECT_EQ(view->trackingAreas().front()->options(), 129U);
        view->setFrame(CGRectMake(50, 60, 100, 24));
        ui.turn();
        ASSERT_EQ(view->trackingAreas().size(), 1U) << "the old area goes";
        EXPECT_EQ(view->trackingAreas().front()->rect(), CGRectMake(0, 0, 100, 24));

        inside();
        EXPECT_FALSE(shown() || view->isTipShowing()) << "no tip yet";
        outside();
        view->setTipInfo(tip());
        inside();
        EXPECT_TRUE(shown() && view->isTipShowing());
        outside();
        EXPECT_FALSE(shown() || view->isTipShowing());
        view->removeFromSuperview();
    }

    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRectMake(100, 200, 400, 300));
};

TEST_F(TipableTest, EachControlShowsItsTipWhileThePointerIsInIt) {
    followsThePointer<TipableView>();
    followsThePointer<TipableButton>();
    followsThePointer<TipableSegmentedControl>();
}

TEST_F(TipableTest, ATipIsFetchedOnlyWhereNoneIsSet) {
    const auto view = add<TipableView>();
    int fetched = 0;
    std::shared_ptr<TipInfo> made = tip();
    view->setFetchTipInfo([&] {
        ++fetched;
        return made;
    });
    view->setTipInfo(tip());
    inside();
    EXPECT_TRUE(shown());
    EXPECT_EQ(fetched, 0);
    outside();
    view->setTipInfo(nullptr);
    inside();
    EXPECT_TRUE(shown());
    EXPECT_EQ(fetched, 1);
    made = nullptr;
    view->updateTip(true);
    EXPECT_FALSE(shown() || view->isTipShowing()) << "none to show, so the one that was up goes";
    EXPECT_EQ(fetched, 2);
}

TEST_F(TipableTest, LeavingGivesUpOnlyWhatWasAskedFor) {
    const auto view = add<TipableView>();
    view->setTipInfo(tip());
    inside();
    ASSERT_TRUE(shown());
    TipManager::close();
    EXPECT_TRUE(view->isTipShowing()) << "it has asked, and not withdrawn";
    outside();
    EXPECT_FALSE(view->isTipShowing());

    const auto other = add<TipableView>(CGRectMake(200, 60, 80, 24));
    inside();
    ASSERT_TRUE(shown());
    other->updateTip(false);
    EXPECT_TRUE(shown()) << "another view has nothing to give up";
}

TEST_F(TipableTest, AClickOnAButtonClosesTheTipAndGoesOn) {
    const auto button = add<TipableButton>();
    button->setButtonType(NSButtonType::toggle);
    button->setTipInfo(tip());
    inside();
    ASSERT_TRUE(shown());
    ui.display().pressButton();
    EXPECT_FALSE(shown() || button->isTipShowing());
    EXPECT_TRUE(button->cell()->isHighlighted());
    ui.display().releaseButton();
    EXPECT_EQ(button->state(), NSControlStateValue::on);
}

TEST_F(TipableTest, AViewMayChooseHowItIsWatched) {
    const auto view = add<Watched>();
    EXPECT_EQ(view->trackingAreas().front()->options(), 129U);
    view->options = NSTrackingMouseEnteredAndExited | NSTrackingActiveInKeyWindow;
    view->setFrame(CGRectMake(50, 60, 100, 24));
    ui.turn();
    ASSERT_EQ(view->trackingAreas().size(), 1U);
    EXPECT_EQ(view->trackingAreas().front()->options(), 33U);
}

TEST_F(TipableTest, ScrollingClosesTheTipOfAViewThatMovedAway) {
    const auto scroll = makeObject<TipableScrollView>(CGRectMake(0, 0, 200, 150));
    window->contentView()->addSubview(scroll);
    const auto document = makeObject<NSView>(CGRectMake(0, 0, 200, 1000));
    scroll->setDocumentView(document);
    const auto view = makeObject<TipableView>(CGRectMake(50, 60, 80, 24));
    document->addSubview(view);
    view->setTipInfo(tip());
    ui.turn();
    inside();
    ASSERT_TRUE(shown());
    scroll->contentView()->setBoundsOrigin({0, 3});
    EXPECT_TRUE(shown()) << "the pointer is still in it";
    scroll->contentView()->setBoundsOrigin({0, 100});
    EXPECT_FALSE(shown());
}

}  // namespace
}  // namespace zqcore
