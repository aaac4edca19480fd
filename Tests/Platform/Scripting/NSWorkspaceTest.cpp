#include "Platform/Scripting/NSWorkspace.h"

#include <gtest/gtest.h>

#include "TestKit/PrivateBus.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::platform {
namespace {

using testkit::ScratchFolder;

/// Data folders of the test's own, and a bus that knows what the test says.
class NSWorkspaceTest : public testing::Test {
  protected:
    NSWorkspaceTest() {
        ::setenv("XDG_DATA_HOME", (folder_ / "own").c_str(), 1);
        ::setenv("XDG_DATA_DIRS", ((folder_ / "first") + ":relative::" + (folder_ / "second")).c_str(), 1);
        NSWorkspace::shared().setBusNameLookupForTesting(
            [this](std::string_view name) { return name == busName_; });
    }
    ~NSWorkspaceTest() override { NSWorkspace::shared().setBusNameLookupForTesting(nullptr); }

    void entry(const std::string& path, std::string_view keys) const {
        folder_.write(path,
                      "[Other]\nHidden=true\n[Desktop Entry]\nType=Application\n" + std::string(keys) + "\n");
    }
    /// Below the test's folder; "-" for an application that isn't there.
    [[nodiscard]] std::string found(std::string_view identifier) const {
        const auto url = NSWorkspace::shared().URLForApplicationWithBundleIdentifier(identifier);
        if (!url) return "-";
        const auto path = url->path();
        return path.starts_with(folder_.path()) ? path.substr(folder_.path().size() + 1) : url->description();
    }

    ScratchFolder folder_;
    std::string busName_ = "com.example.bus";
};

TEST_F(NSWorkspaceTest, FindsDesktopEntriesInTheOrderOfTheDataFolders) {
    entry("second/applications/com.example.a.desktop", "Name=A");
    EXPECT_EQ(found("com.example.a"), "second/applications/com.example.a.desktop");
    entry("first/applications/com.example.a.desktop", "TryExec=sh");
    EXPECT_EQ(found("com.example.a"), "first/applications/com.example.a.desktop");
    entry("own/applications/com.example.a.desktop", "TryExec=/no/such/program");
    EXPECT_EQ(found("com.example.a"), "first/applications/com.example.a.desktop");
    entry("own/applications/com.example.a.desktop", "Hidden = true\n[Other]\nHidden=false");
    EXPECT_EQ(found("com.example.a"), "-") << "removed by the user";
}

TEST_F(NSWorkspaceTest, AHyphenMayStandForAFolder) {
    entry("first/applications/tools/a-b/c.desktop", "Name=C");
    EXPECT_EQ(found("tools-a-b-c"), "first/applications/tools/a-b/c.desktop");
    EXPECT_EQ(found("tools-a"), "-");
    EXPECT_EQ(found("tools/a-b/c"), "-");
}

TEST_F(NSWorkspaceTest, WhatTheBusKnowsIsInstalledToo) {
    EXPECT_EQ(found("com.example.bus"), "dbus:com.example.bus");
    for (const auto* unknown : {"", ".", "com.example.other", "../applications/x", "com example"}) {
        EXPECT_EQ(found(unknown), "-") << unknown;
    }
}

TEST(NSWorkspaceBusTest, AsksTheRealBus) {
    testkit::PrivateBus bus;
    ASSERT_TRUE(bus.running());
    bus.addService("com.example.Startable", "/bin/false");
    const auto& workspace = NSWorkspace::shared();
    EXPECT_TRUE(workspace.URLForApplicationWithBundleIdentifier("com.example.Startable"));
    EXPECT_FALSE(workspace.URLForApplicationWithBundleIdentifier("com.example.Unknown"));
    bus.addDesktopEntry("com.example.Entry", "/bin/false");
    EXPECT_TRUE(workspace.URLForApplicationWithBundleIdentifier("com.example.Entry")->isFileURL());
}

}  // namespace
}  // namespace zqcore::platform
