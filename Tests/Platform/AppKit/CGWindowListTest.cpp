#include "Platform/AppKit/CGWindowList.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/AXIsProcessTrusted.h"
#include "Platform/Foundation/CGScreenCaptureAccess.h"
#include "Platform/Foundation/NSOperationQueue.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Scripting/NSRunningApplication.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

TEST(CGWindowListTest, ListsAndShowsWindowsInSpaceThatGrowsDownwards) {
    const CGRect low{{0, 0}, {100, 80}}, high{{0, 80}, {100, 50}};
    testkit::HeadlessApplication ui({{low, low, 2}, {high, high, 2}});
    HeadlessDisplay::ForeignWindow other;
    other.frame = CGRectMake(10, 90, 20, 10);
    other.name = "notes";
    other.color = 0xFFFF0000;
    const auto foreign = ui.display().addForeignWindow(other);
    const auto window = makeObject<NSWindow>(CGRectMake(0, 70, 10, 10));
    window->setBackgroundColor(NSColor::colorWithRGBA(0, 0, 1));
    window->setLevel(NSFloatingWindowLevel);
    window->orderFrontRegardless();
    ui.turn();

    const auto list = CGWindowListCopyWindowInfo(kCGWindowListOptionOnScreenOnly, kCGNullWindowID);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].ownerPID, ::getpid());
    EXPECT_EQ(list[0].bounds, CGRectMake(0, 0, 10, 10)) << "at the primary screen's upper left";
    EXPECT_EQ(list[0].layer, NSFloatingWindowLevel);
    EXPECT_EQ(list[1].number, foreign);
    EXPECT_EQ(list[1].name, "notes");
    EXPECT_EQ(list[1].bounds, CGRectMake(10, -20, 20, 10)) << "a screen above has places below 0";
    EXPECT_EQ(CGWindowListCreate(kCGWindowListOptionOnScreenOnly, kCGNullWindowID),
              (std::vector{window->windowNumber(), foreign}));
    const auto described = CGWindowListCreateDescriptionFromArray({foreign, 999});
    ASSERT_EQ(described.size(), 1U);
    EXPECT_EQ(described[0].ownerName, "Other");

    const auto picture = [&](const std::vector<CGWindowID>& windows) {
        return CGWindowListCreateImageFromArray(CGRectMake(0, -20, 30, 30), windows, kCGWindowImageDefault);
    };
    const auto both = picture({window->windowNumber(), foreign});
    ASSERT_TRUE(both);
    EXPECT_EQ(both->width(), 60);
    EXPECT_EQ(both->height(), 60);
    EXPECT_EQ(both->colorAt(30, 10), CGColor::rgb(1, 0, 0));
    EXPECT_EQ(both->colorAt(10, 50), CGColor::rgb(0, 0, 1));
    EXPECT_EQ(picture({foreign})->colorAt(10, 50), CGColor{});
    window->setSharingType(NSWindowSharingType::none);
    EXPECT_EQ(picture({window->windowNumber()})->colorAt(10, 50), CGColor{}) << "listed, but not shown";
    EXPECT_EQ(picture({})->width(), 60) << "transparent";
    EXPECT_FALSE(CGWindowListCreateImageFromArray({}, {foreign}, kCGWindowImageDefault));
}

TEST(NSRunningApplicationTest, ProcessesAreKnownByTheirNumber) {
    const auto self = NSRunningApplication::currentApplication();
    ASSERT_TRUE(self);
    EXPECT_EQ(self->processIdentifier(), ::getpid());
    ASSERT_TRUE(self->executableURL());
    EXPECT_TRUE(self->executableURL()->path().ends_with("/zqcore_ui_tests"));
    for (const int nobody : {0, -1, 0x7FFFFFFF})
        EXPECT_FALSE(NSRunningApplication::runningApplicationWithProcessIdentifier(nobody)) << nobody;
}

TEST(CGScreenCaptureAccessTest, TheUserIsAskedForWhatIsNotGiven) {
    const int before = permissionPromptsForTesting();
    EXPECT_TRUE(CGPreflightScreenCaptureAccess() && CGRequestScreenCaptureAccess());
    EXPECT_TRUE(AXIsProcessTrustedWithOptions(true));
    EXPECT_EQ(permissionPromptsForTesting(), before);
    setScreenCaptureAccess(false);
    setProcessTrusted(false);
    EXPECT_FALSE(CGPreflightScreenCaptureAccess() || AXIsProcessTrustedWithOptions(false));
    EXPECT_EQ(permissionPromptsForTesting(), before);
    EXPECT_FALSE(CGRequestScreenCaptureAccess() || AXIsProcessTrustedWithOptions(true));
    EXPECT_EQ(permissionPromptsForTesting(), before + 2);
    setScreenCaptureAccess(true);
    setProcessTrusted(true);
}

TEST(NSOperationQueueTest, BlocksWaitForALaterTurn) {
    testkit::HeadlessApplication ui;
    std::string heard;
    NSOperationQueue::mainQueue().addOperationWithBlock([&] { heard += "a"; });
    NSOperationQueue::mainQueue().addOperationWithBlock([&] { heard += "b"; });
    EXPECT_EQ(heard, "") << "also from the main thread";
    ui.turn();
    EXPECT_EQ(heard, "ab");
}

}  // namespace
}  // namespace zqcore
