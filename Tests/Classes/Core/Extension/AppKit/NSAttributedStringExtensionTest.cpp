#include "Classes/Core/Extension/AppKit/NSAttributedStringExtension.h"

#include <gtest/gtest.h>

#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

using namespace platform;

class NSAttributedStringExtensionTest : public ::testing::Test {
  protected:
    std::shared_ptr<NSFont> font_ = NSFont::systemFontOfSize(20);
    std::shared_ptr<NSColor> red_ = NSColor::colorWithRGBA(1, 0, 0);
};

TEST_F(NSAttributedStringExtensionTest, CreatesWithWhatIsGiven) {
    EXPECT_EQ(zq_create("ab", font_, nullptr)->attributesAtIndex(1), (NSTextAttributes{font_, nullptr}));
    const std::shared_ptr<NSMutableAttributedString> text =
        zq_create<NSMutableAttributedString>("", nullptr, red_);
    EXPECT_EQ(text->length(), 0U);
}

TEST_F(NSAttributedStringExtensionTest, UpdatesByRange) {
    const auto text = zq_create<NSMutableAttributedString>("a😀b", nullptr, nullptr);
    zq_update(*text, nullptr, nullptr);
    EXPECT_TRUE(text->attributesAtIndex(0).isEmpty());
    zq_update(*text, font_, nullptr, NSRange{1, 2});
    zq_update(*text, nullptr, red_);
    EXPECT_EQ(text->attributesAtIndex(0), (NSTextAttributes{nullptr, red_}));
    EXPECT_EQ(text->attributesAtIndex(2), (NSTextAttributes{font_, red_}));
    EXPECT_EQ(text->attributesAtIndex(3), (NSTextAttributes{nullptr, red_}));
}

TEST_F(NSAttributedStringExtensionTest, UpdatesEveryMatchInUTF16) {
    const auto text = zq_create<NSMutableAttributedString>("😀ABC 译 abc", nullptr, nullptr);
    zq_update(*text, nullptr, red_, "(?<=^.)abc|c$");
    const auto& runs = text->runs();
    ASSERT_EQ(runs.size(), 4U);
    EXPECT_EQ(runs[1].range, (NSRange{2, 3}));
    EXPECT_EQ(runs[3].range, (NSRange{10, 1}));
    zq_update(*text, font_, nullptr, "x*");
    EXPECT_EQ(text->runs().size(), 4U) << "empty matches cover nothing";
}

TEST_F(NSAttributedStringExtensionTest, AnInvalidPatternIsLoggedAndChangesNothing) {
    const auto text = zq_create<NSMutableAttributedString>("abc", nullptr, nullptr);
    testkit::LogCapture log;
    zq_update(*text, nullptr, red_, "(a");
    EXPECT_TRUE(text->attributesAtIndex(0).isEmpty());
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(log.messages(testkit::LogCapture::error)[0].starts_with(
        "正则匹配初始化错误: pattern=(a; error=Error Domain="))
        << log;
}

}  // namespace
}  // namespace zqcore
