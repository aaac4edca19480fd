#include "Platform/AppKit/NSAlert.h"

#include <gtest/gtest.h>

#include <optional>

#include "Classes/Core/Extension/AppKit/NSAlertExtension.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class NSAlertTest : public testing::Test {
  protected:
    ~NSAlertTest() override { NSAlert::setAnswerForTesting({}); }

    /// Begins a sheet and presses that key.
    std::optional<NSAlertResponse> answerToKey(const std::vector<std::string>& titles,
                                               const std::string& key) {
        const auto alert = makeObject<NSAlert>();
        for (const auto& title : titles) alert->addButtonWithTitle(title);
        std::optional<NSAlertResponse> response;
        alert->beginSheetModalForWindow(window, [&](NSAlertResponse answer) { response = answer; });
        ui.turn();
        const unsigned short code = key == "\r" ? 36 : 53;
        ui.display().pressKey(code, key);
        ui.display().releaseKey(code, key);
        ui.turn();
        const auto answered = response;
        if (alert->window()) alert->window()->close();
        EXPECT_EQ(response, answered ? answered : NSAlertAbortedResponse) << "closed without a button";
        return answered;
    }

    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRectMake(100, 200, 600, 400));
};

TEST_F(NSAlertTest, ReturnPressesTheFirstButtonAndEscapeCancel) {
    EXPECT_EQ(answerToKey({"Delete", "Cancel"}, "\r"), 1000);
    EXPECT_EQ(answerToKey({"Delete", "Keep", "Cancel"}, "\x1b"), 1002);
    EXPECT_EQ(answerToKey({"Delete", "Keep"}, "\x1b"), std::nullopt);
    EXPECT_EQ(answerToKey({}, "\r"), 1000) << "without buttons there is one";
}

TEST_F(NSAlertTest, SheetsStandOverTheirWindowUntilAButtonIsClicked) {
    std::optional<NSAlertResponse> response;
    const auto alert = makeObject<NSAlert>();
    alert->setMessageText("Delete?");
    alert->setInformativeText("It can't be brought back.");
    alert->addButtonWithTitle("Delete");
    const auto second = alert->addButtonWithTitle("Keep");
    alert->beginSheetModalForWindow(window, [&](NSAlertResponse answer) { response = answer; });
    ui.turn();
    const auto panel = alert->window();
    ASSERT_TRUE(panel && panel->isVisible());
    EXPECT_EQ(CGRectGetMidX(panel->frame()), CGRectGetMidX(window->frame()));
    EXPECT_EQ(CGRectGetMaxY(panel->frame()), CGRectGetMaxY(window->frame()));
    const CGRect place = panel->convertRectToScreen(second->convertRectToView(second->bounds(), nullptr));
    ui.display().click({CGRectGetMidX(place), CGRectGetMidY(place)});
    EXPECT_EQ(response, 1001);
    EXPECT_FALSE(panel->isVisible());
}

TEST_F(NSAlertTest, ADisplayThatGoesAwayEndsIt) {
    std::optional<NSAlertResponse> response;
    makeObject<NSAlert>()->beginSheetModalForWindow(window,
                                                    [&](NSAlertResponse answer) { response = answer; });
    ui.display().lose("gone");
    EXPECT_EQ(response, NSAlertAbortedResponse);

    // One that comes later has nobody to ask.
    response.reset();
    zq_show(window, "Title", std::nullopt, std::nullopt, [&](NSAlertResponse answer) { response = answer; });
    ui.turn();
    EXPECT_EQ(response, NSAlertAbortedResponse);
    EXPECT_EQ(makeObject<NSAlert>()->runModal(), NSAlertAbortedResponse);
}

TEST_F(NSAlertTest, ModalOnesRunTheLoopUntilTheyAreAnswered) {
    const auto alert = makeObject<NSAlert>();
    alert->addButtonWithTitle("Go on");
    const auto second = alert->addButtonWithTitle("Stop");
    DispatchQueue::main()->async([&] { second->performClick(); });
    EXPECT_EQ(alert->runModal(), 1001);
    EXPECT_FALSE(alert->window());
}

TEST_F(NSAlertTest, ShowAsksWithWhatItIsGiven) {
    std::string asked;
    NSAlert::setAnswerForTesting([&](const NSAlert& alert) {
        asked = alert.messageText() + "/" + alert.informativeText();
        for (const auto& button : alert.buttons()) asked += "/" + button->title();
        EXPECT_EQ(alert.alertStyle(), NSAlertStyle::warning);
        return NSAlertFirstButtonReturn;
    });
    std::optional<NSAlertResponse> response;
    zq_show(nullptr, "Title", std::nullopt, {{"A", "B"}}, [&](NSAlertResponse answer) { response = answer; });
    EXPECT_EQ(asked, "Title//A/B");
    EXPECT_EQ(response, 1000);
    response.reset();
    zq_show(window, std::nullopt, "Info", std::nullopt, [&](NSAlertResponse answer) { response = answer; });
    EXPECT_FALSE(response) << "over a window it waits for the user";
    ui.turn();
    ui.display().pressKey(36, "\r");
    EXPECT_EQ(response, 1000);
}

}  // namespace
}  // namespace zqcore
