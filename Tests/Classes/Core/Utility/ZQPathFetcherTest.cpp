#include "Classes/Core/Utility/ZQPathFetcher.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "Platform/Foundation/NSBundle.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/ScratchFolder.h"
#include "TestKit/TemporaryHome.h"

namespace zqcore {
namespace {

// Which tree is used is decided once in a process; CTest gives every test a process of its own, and each test
// below makes the first use of what it looks at.

TEST(ZQPathFetcherTest, AWildApplicationHasAPrivateTree) {
    const testkit::TemporaryHome home;
    const testkit::FakeSearchPaths paths(home.path(),
                                         testkit::FakeSearchPaths::platformFolders(home.path(), "a.b"));
    const auto bundle = testkit::FakeBundle::named("a.b");
    const std::string tree = home.path() + "/Library/Application Support/a.b/VirtualSandbox";
    EXPECT_EQ(ZQPathFetcher::zqcoreLogsDirectory(), tree + "/Documents/ZQCoreLogs");
    EXPECT_EQ(ZQPathFetcher::zqcoreDocumentsDirectory(), tree + "/Documents/ZQCore");
    EXPECT_EQ(ZQPathFetcher::zqcoreCachesDirectory(), tree + "/Library/Caches/ZQCore");
    EXPECT_EQ(ZQPathFetcher::sandboxDirectory(), tree);
    EXPECT_EQ(ZQPathFetcher::documentsDirectory(), tree + "/Documents");
    EXPECT_EQ(ZQPathFetcher::libraryDirectory(), tree + "/Library");
    EXPECT_EQ(ZQPathFetcher::cachesDirectory(), tree + "/Library/Caches");
    EXPECT_EQ(ZQPathFetcher::userDefaultsPlistFilePath(), home.path() + "/Library/Preferences/a.b.plist")
        << "the system's Library, outside the private tree";
    for (const auto& path : {ZQPathFetcher::zqcoreLogsDirectory(), ZQPathFetcher::zqcoreDocumentsDirectory(),
                             ZQPathFetcher::zqcoreCachesDirectory()}) {
        EXPECT_TRUE(std::filesystem::is_directory(path)) << path;
    }
    std::filesystem::remove_all(tree);
    EXPECT_EQ(ZQPathFetcher::cachesDirectory(), tree + "/Library/Caches");
    EXPECT_FALSE(std::filesystem::exists(tree)) << "made once, not again";
}

TEST(ZQPathFetcherTest, WithoutApplicationSupportThePrivateTreeIsNotBelowTheWorkingDirectory) {
    const testkit::TemporaryHome home;
    const testkit::FakeSearchPaths paths(home.path());
    const auto bundle = testkit::FakeBundle::named("dev/null");  // where nothing can be made
    EXPECT_EQ(ZQPathFetcher::sandboxDirectory(), "/dev/null/VirtualSandbox");
}

TEST(ZQPathFetcherTest, ASandboxedApplicationUsesTheSystemsFolders) {
    const testkit::FakeBundle bundle(
        Value::Dictionary{{"ZQCore_sandboxed", true}, {"CFBundleIdentifier", "x"}});
    {
        const std::string home = "/Users/ann/Library/Containers/x/Data";
        const testkit::FakeSearchPaths paths(home, testkit::FakeSearchPaths::platformFolders(home, "x"));
        EXPECT_EQ(ZQPathFetcher::sandboxDirectory(), home);
        EXPECT_EQ(ZQPathFetcher::cachesDirectory(), home + "/Library/Caches");
        EXPECT_EQ(ZQPathFetcher::documentsDirectory(), home + "/Documents");
        EXPECT_EQ(ZQPathFetcher::userName(), "ann");
    }
    const testkit::FakeSearchPaths paths("/Users/bo");
    EXPECT_EQ(ZQPathFetcher::sandboxDirectory(), "/Users/bo") << "asked at every call";
    EXPECT_EQ(ZQPathFetcher::documentsDirectory(), "");
    EXPECT_EQ(ZQPathFetcher::applicationSupportDirectory(), "");
    EXPECT_EQ(ZQPathFetcher::bundleDirectory(), NSBundle::mainBundle()->bundlePath());
    EXPECT_EQ(ZQPathFetcher::temporaryDirectory(), "/var/folders/t/");
}

TEST(ZQPathFetcherTest, CorrectsTheScriptDirectoryToTheUserOfTheHome) {
    struct Case {
        const char *home, *system, *identifier, *corrected;
    };
    constexpr const char* none = nullptr;
    constexpr Case cases[] = {
        {"/Users/ann/Data", "/Users/cara/Library/Application Scripts/a.b", "a.b",
         "/Users/ann/Library/Application Scripts/a.b"},
        {"/Users/ann", "/Users/ann/Library/Application Scripts/a.b", "a.b",
         "/Users/ann/Library/Application Scripts/a.b"},
        {"/Users/ann", "/var/x/Application Scripts/a.b", "a.b", "/var/x/Application Scripts/a.b"},
        {"/Users/ann", "/Users", "a.b", "/Users"},
        {"/home/ann", "/Users/cara/Scripts", "a.b", "/Users/cara/Scripts"},
        {"/home/ann", none, "a.b", none},
        {"/Users/ann", none, "", none},
        {"/Users/ann", none, "a.b", "/Users/ann/Library/Application Scripts/a.b"},
    };
    for (const auto& [home, system, identifier, corrected] : cases) {
        testkit::FakeSearchPaths::Folders folders;
        if (system) folders[NSSearchPathDirectory::applicationScripts] = system;
        const testkit::FakeSearchPaths paths(home, folders);
        const auto bundle = testkit::FakeBundle::named(identifier);
        const auto found = ZQPathFetcher::applicationScriptsDirectory();
        EXPECT_EQ(found.value_or("none"), corrected ? corrected : "none")
            << home << ", " << (system ? system : "none");
        EXPECT_EQ(ZQPathFetcher::originalApplicationScriptsDirectory().value_or("none"),
                  system ? system : "none");
    }
    const testkit::FakeSearchPaths paths("/Users/ann",
                                         testkit::FakeSearchPaths::platformFolders("/Users/cara", "a.b"));
    EXPECT_EQ(ZQPathFetcher::scriptsDirectoryUserName(), "cara");
}

TEST(ZQPathFetcherTest, ParsesTheUserName) {
    const std::pair<std::optional<std::string_view>, const char*> cases[] = {
        {"/Users/ann/Library", "ann"},  {"/Users/ann", "ann"},
        {"/Users/ann/", "ann"},         {"/Users//x", nullptr},
        {"/private/var/root", nullptr}, {"/Users", nullptr},
        {"/Users/", nullptr},           {"", nullptr},
        {"x/Users/ann", "ann"},         {"Users/ann/x", nullptr},
        {std::nullopt, nullptr},
    };
    for (const auto& [path, name] : cases) {
        EXPECT_EQ(ZQPathFetcher::parseUserName(path).value_or("none"), name ? name : "none")
            << path.value_or("none");
    }
}

TEST(ZQPathFetcherTest, AFileInTheWayCostsOneLineAndThePathStands) {
    const testkit::TemporaryHome home;
    const testkit::FakeBundle bundle(
        Value::Dictionary{{"ZQCore_sandboxed", true}, {"CFBundleIdentifier", "x"}});
    const testkit::ScratchFolder folder;
    folder.write("Documents/ZQCore", "a file");
    const testkit::FakeSearchPaths paths("/Users/ann",
                                         {{NSSearchPathDirectory::documents, folder / "Documents"},
                                          {NSSearchPathDirectory::caches, folder / "Documents/ZQCore"}});
    testing::internal::CaptureStdout();
    const std::string inTheWay = ZQPathFetcher::zqcoreDocumentsDirectory();
    const std::string belowAFile = ZQPathFetcher::zqcoreCachesDirectory();
    EXPECT_EQ(ZQPathFetcher::zqcoreDocumentsDirectory(), inTheWay);
    const std::string lines = testing::internal::GetCapturedStdout();
    EXPECT_EQ(inTheWay, folder / "Documents/ZQCore");
    EXPECT_EQ(belowAFile, folder / "Documents/ZQCore/ZQCore");
    const std::string expected = "指定路径存在文件 " + inTheWay + "\n创建文件夹失败 path:" + belowAFile +
                                 "; error: Error Domain=NSCocoaErrorDomain Code=";
    EXPECT_EQ(lines.substr(0, expected.size()), expected);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 2) << "each only once: " << lines;
}

TEST(ZQPathFetcherTest, ConcurrentFirstUsesAgree) {
    const testkit::TemporaryHome home;
    const auto bundle = testkit::FakeBundle::named("a.b");
    std::vector<std::string> seen(8);
    {
        std::vector<std::jthread> threads;
        for (auto& path : seen)
            threads.emplace_back([&path] { path = ZQPathFetcher::zqcoreLogsDirectory(); });
    }
    for (const auto& path : seen) EXPECT_EQ(path, seen.front());
    EXPECT_TRUE(std::filesystem::is_directory(seen.front()));
}

}  // namespace
}  // namespace zqcore
