#include <gtest/gtest.h>

#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/NSBitmapImageRep.h"
#include "Platform/Graphics/ScreenScale.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace {

using namespace zqcore::platform;
using zqcore::testkit::HeadlessApplication;

constexpr CGColor kCoarse = CGColor::rgb(1, 0, 0);
constexpr CGColor kFine = CGColor::rgb(0, 1, 0);

/// 10 by 10 points, red where it is shown by one pixel a point, green by its finer form.
std::shared_ptr<NSImage> twoForms() {
    const auto image = NSImage::make(CGSize{10, 10});
    for (const int scale : {1, 2}) {
        const auto context = CGContext::bitmap(10 * scale, 10 * scale);
        context->setFillColor(scale == 1 ? kCoarse : kFine);
        context->fill({{0, 0}, {10.0 * scale, 10.0 * scale}});
        const auto form = NSBitmapImageRep::make(context->makeImage());
        form->setSize({10, 10});
        image->addRepresentation(form);
    }
    return image;
}

constexpr CGRect kFirst{{0, 0}, {400, 300}};
constexpr CGRect kSecond{{400, 0}, {400, 300}};

TEST(ScreenScaleTest, ImagesChooseTheirFormForTheScreenThatTheWindowIsOn) {
    HeadlessApplication application({{kFirst, kFirst, 1}, {kSecond, kSecond, 2}});
    const auto view = makeObject<NSImageView>(CGRect{{0, 0}, {10, 10}});
    view->setImage(twoForms());
    const auto window = makeObject<NSWindow>(CGRect{{20, 20}, {10, 10}});
    window->setContentView(view);
    window->orderFrontRegardless();
    const auto shown = [&] {
        application.turn();
        const auto picture = application.display().windowPicture(window->windowNumber());
        return picture ? picture->pixel(picture->width / 2, picture->height / 2) : 0;
    };
    EXPECT_EQ(shown(), 0xFFFF0000U);
    window->setFrameOrigin({420, 20});
    EXPECT_EQ(shown(), 0xFF00FF00U) << "moved to the finer screen";
}

TEST(ScreenScaleTest, DrawnImagesFollowTheScaleOfTheMainScreen) {
    HeadlessApplication application({{kFirst, kFirst, 2}});
    EXPECT_EQ(mainScreenScale(), 2);
    application.display().setScreens({{kFirst, kFirst, 1}, {kSecond, kSecond, 3}});
    EXPECT_EQ(mainScreenScale(), 1) << "the first, without a key window";
    const auto window = makeObject<NSWindow>(CGRect{{450, 20}, {10, 10}}, NSWindowStyleMaskTitled);
    window->makeKeyAndOrderFront();
    EXPECT_EQ(mainScreenScale(), 3) << "the one of the window with the keys";
    window->setFrameOrigin({20, 20});
    EXPECT_EQ(mainScreenScale(), 1) << "which may move";
    application.display().dragWindow(window->windowNumber(), {{450, 20}, {10, 10}});
    EXPECT_EQ(mainScreenScale(), 3);
}

}  // namespace
