#include "Classes/Bundle/ZQCoreBundle.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSImage.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/LogCapture.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

using testkit::LogCapture;

TEST(ZQCoreBundleTest, FindsEveryImageInSilence) {
    const LogCapture log;
    for (const char* name : {"hud_info", "hud_success", "hud_error", "mini_hud_success", "mini_hud_fail",
                             "tip_left_mouse", "tip_right_mouse"}) {
        const auto image = ZQCoreBundle::image(name);
        ASSERT_TRUE(image) << name;
        ASSERT_EQ(image->files().size(), 2U) << name;
        for (const auto& representation : image->files()) {
            const auto bytes = NSImage::encodedBytes(representation);
            ASSERT_TRUE(bytes);
            EXPECT_TRUE(bytes->view().starts_with("\x89PNG")) << representation.path;
            EXPECT_TRUE(bytes->view().ends_with(std::string_view("IEND\xAE\x42\x60\x82")))
                << representation.path;
        }
        EXPECT_EQ(image->bestFile(1.5).scale, 2);
        EXPECT_EQ(image->bestFile(3).scale, 2);
        EXPECT_EQ(image->bestFile(1).scale, 1);
    }
    EXPECT_TRUE(log.silent());
}

TEST(ZQCoreBundleTest, AnImageOfTheApplicationIsToldButNotGiven) {
    const testkit::ScratchFolder folder;
    folder.write("stray.png", "x");
    const testkit::FakeBundle bundle(Value::Dictionary{}, folder.path());
    const LogCapture log;
    EXPECT_FALSE(ZQCoreBundle::image("stray"));
    EXPECT_EQ(log.messages(),
              (std::vector<std::string>{"获取图片失败: stray", "获取图片默认方案可行：stray"}));
    EXPECT_TRUE(log.has(LogCapture::error, "获取图片失败: stray"));
    EXPECT_TRUE(log.has(LogCapture::info, "获取图片默认方案可行：stray"));
    EXPECT_FALSE(ZQCoreBundle::image("nowhere"));
    EXPECT_EQ(log.messages().size(), 3U);
}

TEST(ZQCoreBundleTest, FallsBackOnTheFrameworksOwnFolder) {
    const std::string file = ZQCoreBundle::frameworkBunble()->resourcePath() + "/only_here_for_a_test.png";
    std::filesystem::copy_file(NSImage::imageNamed("ZQCore.bundle/hud_info")->files()[0].path, file,
                               std::filesystem::copy_options::overwrite_existing);
    const LogCapture log;
    EXPECT_TRUE(ZQCoreBundle::image("only_here_for_a_test"));
    std::filesystem::remove(file);
    EXPECT_EQ(log.messages(LogCapture::info),
              (std::vector<std::string>{"获取图片成功（候补方案）: only_here_for_a_test"}));
    EXPECT_TRUE(log.messages(LogCapture::error).empty());
}

}  // namespace
}  // namespace zqcore
