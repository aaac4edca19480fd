#include "Platform/Foundation/NSSearchPath.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "TestKit/FakeBundle.h"
#include "TestKit/TemporaryHome.h"

namespace zqcore {
namespace {

using enum NSSearchPathDirectory;

std::string first(NSSearchPathDirectory directory) {
    const auto found = NSSearchPathForDirectoriesInDomains(directory, NSUserDomainMask, true);
    return found.empty() ? "none" : found.front();
}

TEST(NSSearchPathTest, AnswersByTheXDGBaseDirectories) {
    const testkit::TemporaryHome home;
    const auto bundle = testkit::FakeBundle::named("com.example.app");
    EXPECT_EQ(NSHomeDirectory(), home.path());
    EXPECT_EQ(first(library), home.path() + "/.config");
    EXPECT_EQ(first(caches), home.path() + "/.cache");
    EXPECT_EQ(first(applicationSupport), home.path() + "/.local/share");
    EXPECT_EQ(first(applicationScripts), home.path() + "/.local/share/Application Scripts/com.example.app");
    EXPECT_EQ(first(documents), home.path() + "/Documents");
    EXPECT_TRUE(NSSearchPathForDirectoriesInDomains(library, 2, true).empty()) << "only the user's domain";

    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("XDG_CACHE_HOME", "/elsewhere//cache/", 1);
    ::setenv("HOME", "/home/ann/", 1);
    EXPECT_EQ(first(library), "/home/ann/.config") << "a relative path is to be ignored";
    EXPECT_EQ(first(caches), "/elsewhere/cache");
    EXPECT_EQ(NSHomeDirectory(), "/home/ann");

    ::setenv("TMPDIR", "/var/tmp", 1);
    EXPECT_EQ(NSTemporaryDirectory(), "/var/tmp/");
    ::unsetenv("TMPDIR");
    EXPECT_EQ(NSTemporaryDirectory(), "/tmp/");
}

TEST(NSSearchPathTest, ReadsTheUserDirectories) {
    const testkit::TemporaryHome home;
    std::ofstream(home.path() + "/.config/user-dirs.dirs") << "# XDG_DESKTOP_DIR=\"$HOME/comment\"\n"
                                                              "XDG_DESKTOP_DIR=\"$HOME/Schreib\\\"tisch\"\n"
                                                              "  XDG_DOCUMENTS_DIR=\"/data/docs/\"\n"
                                                              "XDG_DOWNLOAD_DIR=relative\n";
    EXPECT_EQ(first(desktop), home.path() + "/Schreib\"tisch");
    EXPECT_EQ(first(documents), "/data/docs");
    EXPECT_EQ(first(downloads), home.path() + "/Downloads") << "an entry of another form is none";
}

TEST(NSSearchPathTest, HasNoScriptFolderWithoutAnIdentifier) {
    const testkit::FakeBundle bundle(Value::Dictionary{});
    EXPECT_EQ(first(applicationScripts), "none");
}

}  // namespace
}  // namespace zqcore
