#include "Platform/Foundation/NSBundle.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "Platform/Foundation/NSImage.h"
#include "TestKit/PlatformReports.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

const char kAnchor = 0;

std::string plist(const std::string& identifier) {
    return "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" + identifier +
           "</string></dict></plist>";
}

TEST(NSBundleTest, ReadsItsDictionaryAgainWhenTheFileChanged) {
    const testkit::ScratchFolder folder;
    const auto bundle = NSBundle::bundleWithURL(folder.path() + "/");
    ASSERT_TRUE(bundle);
    EXPECT_TRUE(bundle->infoDictionary()->empty());
    folder.write("Info.plist", plist("a.b"));
    EXPECT_EQ(bundle->bundleIdentifier(), "a.b");
    const auto before = bundle->infoDictionary();
    EXPECT_EQ(before, bundle->infoDictionary()) << "not read twice";
    folder.write("Info.plist", plist("a.bc"));
    EXPECT_EQ(bundle->bundleIdentifier(), "a.bc");
    EXPECT_EQ(*before->find("CFBundleIdentifier"), Value("a.b")) << "what was given stays";
    testkit::PlatformReports reports;
    folder.write("Info.plist", "rubbish");
    EXPECT_EQ(bundle->bundleIdentifier(), "");
    const auto lines = reports.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_NE(lines[0].find("Info.plist"), std::string::npos) << lines[0];
}

TEST(NSBundleTest, KnowsBothShapes) {
    const testkit::ScratchFolder folder;
    folder.write("App/Contents/Info.plist", plist("full"));
    folder.write("App/Contents/Resources/sub/a.txt", "");
    folder.write("App/Contents/Resources/pic@2x.png", "");
    const auto full = NSBundle::bundleWithURL(folder / "App");
    EXPECT_EQ(full->bundleIdentifier(), "full");
    EXPECT_EQ(full->bundlePath(), folder / "App");
    EXPECT_EQ(full->resourcePath(), folder / "App/Contents/Resources");
    EXPECT_EQ(full->pathForResource("sub/a", "txt"), folder / "App/Contents/Resources/sub/a.txt");
    EXPECT_EQ(full->pathForResource("sub/a.txt", ""), folder / "App/Contents/Resources/sub/a.txt");
    EXPECT_FALSE(full->pathForResource("", ""));
    EXPECT_FALSE(full->pathForResource("b", "txt"));
    ASSERT_TRUE(full->imageForResource("pic")) << "only the double-sized file is there";
    EXPECT_EQ(full->imageForResource("pic")->bestFile(1).scale, 2);
    EXPECT_TRUE(full->imageForResource("pic.png"));
    EXPECT_FALSE(full->imageForResource("pic.jpg"));

    const auto main = NSBundle::mainBundle();
    EXPECT_EQ(main->bundlePath(), main->resourcePath()) << "a bare program is in its own bundle";
    EXPECT_EQ(NSBundle::bundleForClass(&kAnchor)->bundlePath(), main->bundlePath());
    EXPECT_FALSE(NSBundle::bundleWithURL(folder / "missing"));
    EXPECT_FALSE(NSBundle::bundleWithURL(folder / "App/Contents/Info.plist"));
}

TEST(NSBundleTest, AProgramCarriesItsDictionaryUnlessAFileLiesBesideIt) {
    const testkit::ScratchFolder folder;
    const std::string program = folder / "Identity";
    std::filesystem::copy_file(std::string(ZQ_TEST_PROGRAMS) + "/Identity", program);
    const auto output = [&] {
        std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(program.c_str(), "r"), ::pclose);
        char line[256] = "";
        return std::string(pipe && std::fgets(line, sizeof line, pipe.get()) ? line : "nothing");
    };
    EXPECT_EQ(output(), "com.example.identity 1.2.3[456]\n");
    folder.write("Info.plist", plist("beside"));
    EXPECT_EQ(output(), "beside []\n");
}

}  // namespace
}  // namespace zqcore
