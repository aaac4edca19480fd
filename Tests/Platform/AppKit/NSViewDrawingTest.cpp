#include <gtest/gtest.h>

#include "Platform/AppKit/NSProgressIndicator.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/CIFilter.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSPDFImageRep.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/UI/FlippedView.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class NSViewDrawingTest : public testing::TestWithParam<int> {
  protected:
    const int scale = GetParam();
    testkit::HeadlessApplication ui{
        {{{{0, 0}, {500, 500}}, {{0, 0}, {500, 500}}, static_cast<CGFloat>(scale)}}};
    std::shared_ptr<NSWindow> window =
        makeObject<NSWindow>(CGRectMake(0, 0, 40, 40), NSWindowStyleMaskTitled);

    void SetUp() override { window->setBackgroundColor(NSColor::whiteColor()); }
    std::shared_ptr<NSView> box(const CGRect& frame, const CGColor& color, bool flipped = false) {
        auto view = flipped ? makeObject<testkit::FlippedView>(frame) : makeObject<NSView>(frame);
        view->layer()->setBackgroundColor(color);
        return view;
    }
    /// The pixel in the middle of a point's square, y from the top.
    std::uint32_t pixel(int x, int y) {
        ui.turn();
        const auto picture = ui.display().windowPicture(window->windowNumber());
        return picture ? picture->pixel(x * scale + scale / 2, y * scale + scale / 2) : 0;
    }
};

TEST_P(NSViewDrawingTest, ABrightnessFilterAddsToTheWholeSubtree) {
    const auto filter = CIFilter::filterWithName("CIColorControls");
    filter->setDefaults();
    filter->setValueForKey(0.2, "inputBrightness");
    for (const bool flipped : {false, true}) {
        // Half a point off the pixels, one subview inside and one that sticks out below.
        const auto view = box(CGRectMake(10, 20, 10, 10), CGColor::rgb(0.2, 0.4, 1), flipped);
        view->addSubview(box(CGRectMake(0, flipped ? 0 : 8, 10, 2), CGColor::rgb(0, 0, 0)));
        view->addSubview(box(CGRectMake(0, flipped ? 10 : -5, 4, 5), CGColor::rgb(1, 0, 0)));
        window->contentView()->addSubview(view);
        window->orderFront();
        view->setContentFilters({filter, nullptr});
        EXPECT_EQ(view->contentFilters().size(), 1U);
        EXPECT_EQ(pixel(15, 15), 0xFF6699FFU);
        EXPECT_EQ(pixel(15, 10), 0xFF333333U) << "above, of the subview";
        EXPECT_EQ(pixel(11, 22), 0xFFFF3333U) << "outside of the view's bounds";
        EXPECT_EQ(pixel(9, 15), 0xFFFFFFFFU);
        EXPECT_EQ(pixel(18, 22), 0xFFFFFFFFU) << "nothing where nothing is";
        view->setContentFilters({});
        EXPECT_EQ(pixel(15, 15), 0xFF3366FFU);
        view->removeFromSuperview();
    }
}

TEST_P(NSViewDrawingTest, AFilteredSpinnerIsWhite) {
    window->setBackgroundColor(NSColor::blackColor());
    const auto spinner = makeObject<NSProgressIndicator>(CGRectMake(4, 4, 32, 32));
    spinner->setStyle(NSProgressIndicatorStyle::spinning);
    const auto filter = CIFilter::filterWithName("CIColorControls");
    filter->setValueForKey(1, "inputBrightness");
    spinner->setContentFilters({filter});
    window->contentView()->addSubview(spinner);
    window->orderFront();
    EXPECT_GT(pixel(20, 8) & 0xFFU, 0x90U) << "the spoke in front, upwards";
}

TEST_P(NSViewDrawingTest, TheFocusRingGoesRoundTheFirstResponderOfTheKeyWindow) {
    const auto field = makeObject<NSTextField>(CGRectMake(10, 10, 20, 20));
    field->setBackgroundColor(NSColor::whiteColor());
    window->contentView()->addSubview(field);
    window->makeKeyAndOrderFront();
    EXPECT_EQ(pixel(8, 20), 0xFFFFFFFFU);
    window->makeFirstResponder(field);
    const std::uint32_t ring = pixel(8, 20);
    EXPECT_LT(ring >> 16 & 0xFF, 0xC0U) << "bluer";
    EXPECT_GT(ring & 0xFF, 0xF0U);
    EXPECT_EQ(pixel(20, 8), ring) << "on every side";
    if (scale == 1) {
        EXPECT_EQ(pixel(31, 20), ring);
        EXPECT_EQ(pixel(20, 31), ring);
    }
    EXPECT_EQ(pixel(20, 20), 0xFFFFFFFFU) << "not within";
    EXPECT_EQ(pixel(2, 20), 0xFFFFFFFFU) << "nor far away";
    ui.application().deactivate();
    EXPECT_EQ(pixel(8, 20), 0xFFFFFFFFU) << "the keys are elsewhere";
    ui.application().activate();
    EXPECT_EQ(pixel(8, 20), ring);
    field->removeFromSuperview();
    EXPECT_EQ(pixel(8, 20), 0xFFFFFFFFU);
}

INSTANTIATE_TEST_SUITE_P(AtScale, NSViewDrawingTest, testing::Values(1, 2));

TEST(NSViewPrintingTest, APageShowsThePartAskedFor) {
    const testkit::HeadlessApplication ui;
    for (const bool flipped : {false, true}) {
        const auto view = flipped ? makeObject<testkit::FlippedView>(CGRectMake(50, 60, 20, 20))
                                  : makeObject<NSView>(CGRectMake(50, 60, 20, 20));
        const auto mark = makeObject<NSView>(CGRectMake(4, 12, 2, 2));
        mark->layer()->setBackgroundColor(CGColor::rgb(1, 0, 0));
        view->addSubview(mark);
        const auto page = view->PDFImageRepInsideRect(CGRectMake(3, 10, 6, 5));
        ASSERT_TRUE(page);
        const auto context = CGContext::bitmap(6, 5);
        page->draw(*context, CGRectMake(0, 0, 6, 5));
        // The mark is one point from the left, and two from the edge where y begins.
        for (int y = 0; y < 5; ++y) {
            const int row = flipped ? y : 4 - y;
            for (int x = 0; x < 6; ++x) {
                const bool red = x >= 1 && x < 3 && y >= 2 && y < 4;
                EXPECT_EQ(context->makeImage()->colorAt(x, row), red ? CGColor::rgb(1, 0, 0) : CGColor{})
                    << flipped << x << y;
            }
        }
        EXPECT_TRUE(view->dataWithPDFInsideRect(view->bounds()).view().starts_with("%PDF-"));
        EXPECT_TRUE(view->dataWithPDFInsideRect({}).empty());
    }
}

}  // namespace
}  // namespace zqcore
