#include <gtest/gtest.h>

#include <chrono>

#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/NSOpenPanel.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/PrivateBus.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::platform {
namespace {

/// Shows a folder panel through the portal and waits for its end.
class PortalOpenPanelTest : public testing::Test {
  protected:
    NSModalResponse begin() {
        panel_->setCanChooseDirectories(true);
        panel_->setCanChooseFiles(false);
        panel_->setDirectoryURL(NSURL::fileURLWithPath(folder_.path()));
        panel_->setMessage("Choose \u4E2D");
        panel_->setPrompt("Install");
        std::optional<NSModalResponse> response;
        panel_->beginWithCompletionHandler([&](NSModalResponse ended) { response = ended; });
        EXPECT_FALSE(response) << "never inside the call";
        EXPECT_TRUE(RunLoop::main().runUntil([&] { return response.has_value(); }, std::chrono::seconds(60)));
        return response.value_or(NSModalResponseCancel);
    }

    testkit::ScratchFolder folder_;
    std::shared_ptr<NSOpenPanel> panel_ = NSOpenPanel::openPanel();
};

const std::string kPortal = ZQ_TEST_PROGRAMS "/FakePortal";

TEST_F(PortalOpenPanelTest, AsksForTheFolderAndTakesTheChoice) {
    const testkit::PrivateBus bus;
    testkit::ChildProcess portal({kPortal, "choose", "file:///some%20where/"});
    ASSERT_EQ(portal.readLine(), "ready");
    EXPECT_EQ(begin(), NSModalResponseOK);
    EXPECT_EQ(panel_->URL()->path(), "/some where");
    std::vector<std::string> asked;
    while (auto line = portal.readLine()) {
        if (*line == "end") break;
        asked.push_back(std::move(*line));
    }
    const auto folder =
        "current_folder=" + folder_.path() + " (" + std::to_string(folder_.path().size() + 1) + ")";
    EXPECT_EQ(asked, (std::vector<std::string>{"title=Choose \u4E2D", "handle_token=zqcore",
                                               "accept_label=Install", "directory=1", "multiple=0", folder}));
}

TEST_F(PortalOpenPanelTest, WhatCanNotBeShownIsCancelled) {
    {
        const testkit::NoBus none;
        EXPECT_EQ(begin(), NSModalResponseCancel) << "no bus";
    }
    const testkit::PrivateBus bus;
    EXPECT_EQ(begin(), NSModalResponseCancel) << "no portal";
    for (const auto* mode : {"cancel", "leave"}) {
        testkit::ChildProcess portal({kPortal, mode});
        ASSERT_EQ(portal.readLine(), "ready");
        EXPECT_EQ(begin(), NSModalResponseCancel) << mode;
        EXPECT_FALSE(panel_->URL());
    }
}

}  // namespace
}  // namespace zqcore::platform
