#include "Platform/Graphics/TextLayout.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/Linux/FontMap.h"
#include "Platform/Graphics/NSAttributedString.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::platform {
namespace {

std::shared_ptr<NSFont> font(CGFloat size) { return NSFont::systemFontOfSize(size); }

/// The least rectangle of pixels that aren't clear, y from the top.
CGRect inkOf(const CGImage& image) {
    int left = image.width(), top = image.height(), right = 0, bottom = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixels()->row(y)[x] >> 24 == 0) continue;
            left = std::min(left, x);
            right = std::max(right, x + 1);
            top = std::min(top, y);
            bottom = std::max(bottom, y + 1);
        }
    }
    return {{CGFloat(left), CGFloat(top)}, {CGFloat(right - left), CGFloat(bottom - top)}};
}

TEST(TextLayoutTest, LineHeightIsThatOfTheFontWhateverTheScript) {
    struct Case {
        CGFloat size, height;
    };
    for (const Case& c : {Case{12, 14}, Case{13, 16}, Case{14, 17}, Case{15, 18}}) {
        EXPECT_EQ(lineHeightOf(*font(c.size)), c.height) << c.size;
        for (const char* text : {"Ag", "翻译", "", "A 译 ⌘"}) {
            EXPECT_EQ(TextLayout(text, font(c.size)).size().height, c.height) << c.size << text;
        }
    }
    EXPECT_EQ(TextLayout("", font(12)).size().width, 0);
    EXPECT_EQ(TextLayout("a\nb", font(12)).size().height, 28);
}

TEST(TextLayoutTest, ALimitBreaksBetweenWordsAndNotAtTheMeasuredWidth) {
    const std::string text = "The quick brown fox";
    const CGFloat whole = TextLayout(text, font(13)).size().width;
    EXPECT_EQ(TextLayout(text, font(13), {.width = whole}).lineCount(), 1U);
    const TextLayout broken(text, font(13), {.width = whole * 0.6});
    EXPECT_EQ(broken.lineCount(), 2U);
    EXPECT_LE(broken.size().width, whole * 0.6);
    const TextLayoutOptions clipped{.width = 20, .lineBreak = NSLineBreakMode::byClipping};
    EXPECT_EQ(TextLayout(text, font(13), clipped).size().width, whole);
    const TextLayoutOptions cut{.width = 60, .lineBreak = NSLineBreakMode::byTruncatingTail};
    EXPECT_EQ(TextLayout(text, font(13), cut).lineCount(), 1U);
    EXPECT_LE(TextLayout(text, font(13), cut).size().width, 60);
    EXPECT_EQ(TextLayout(text, font(13), {.width = 0}).lineCount(), 1U) << "0 is no limit";
}

TEST(TextLayoutTest, WidthsAddUpAndGrowWithTheSize) {
    const CGFloat one = TextLayout("m", font(13)).size().width;
    EXPECT_NEAR(TextLayout("mmmm", font(13)).size().width, 4 * one, 0.01) << "nothing is rounded to pixels";
    EXPECT_NEAR(TextLayout("m", font(26)).size().width, 2 * one, 0.01);
}

TEST(TextLayoutTest, DrawsInsideItsSizeAtEveryScaleAndInBothSpaces) {
    const TextLayout layout("Hxp 译", font(14));
    for (const int scale : {1, 2}) {
        for (const bool flipped : {false, true}) {
            const auto context = CGContext::bitmap(100 * scale, 40 * scale);
            context->scaleBy(scale, scale);
            if (flipped) context->flip(40);
            layout.draw(*context, {{10, flipped ? 10.0 : 40 - 10 - layout.size().height}, layout.size()});
            const CGRect ink = inkOf(*context->makeImage());
            EXPECT_GE(ink.origin.x, 9 * scale) << scale << flipped;
            EXPECT_GE(ink.origin.y, 10 * scale) << scale << flipped;
            EXPECT_LE(ink.origin.x + ink.size.width, (11 + layout.size().width) * scale);
            EXPECT_LE(ink.origin.y + ink.size.height, (10 + layout.size().height) * scale);
            EXPECT_GT(ink.size.height, 10 * scale);
        }
    }
}

TEST(TextLayoutTest, AlignsWithinTheRectangle) {
    struct Case {
        NSTextAlignment alignment;
        CGFloat left;
    };
    const CGFloat width = TextLayout("HH", font(14)).size().width;
    for (const Case& c :
         {Case{NSTextAlignment::left, 0}, Case{NSTextAlignment::natural, 0},
          Case{NSTextAlignment::right, 100 - width}, Case{NSTextAlignment::center, 50 - width / 2}}) {
        const TextLayout layout("HH", font(14), {.alignment = c.alignment});
        const auto context = CGContext::bitmap(100, 20);
        layout.draw(*context, {{0, 0}, {100, 20}});
        EXPECT_NEAR(inkOf(*context->makeImage()).origin.x, c.left + 1, 1.5) << static_cast<int>(c.alignment);
    }
}

TEST(TextLayoutTest, RunsKeepTheirFontsAndColours) {
    const auto text = NSMutableAttributedString::make("😀a译b ");
    text->addAttributes({font(30), NSColor::colorWithRGBA(1, 0, 0)}, {4, 1});
    const TextLayout layout(*text, font(12));
    EXPECT_EQ(layout.size().height, lineHeightOf(*font(30))) << "the tallest run rules its line";
    const auto context = CGContext::bitmap(200, 40);
    layout.draw(*context, {{0, 0}, {200, 40}}, NSColor::colorWithRGBA(0, 0, 1));
    const auto image = context->makeImage();
    const auto before = static_cast<int>(layout.caretRect(4).origin.x);
    bool redBefore = false, redAfter = false, blueAfter = false;
    for (int y = 0; y < 40; ++y) {
        for (int x = before - 20; x < 200; ++x) {
            const CGColor color = image->colorAt(x, y);
            (x < before ? redBefore : redAfter) |= color.red > 0.9 && color.alpha > 0.5 && color.green < 0.1;
            blueAfter |= x > before + 1 && color.blue > 0.9 && color.alpha > 0.5 && color.red < 0.1;
        }
    }
    EXPECT_TRUE(redAfter) << "b";
    EXPECT_FALSE(redBefore) << "the range counts UTF-16 units";
    EXPECT_FALSE(blueAfter);
}

TEST(TextLayoutTest, NoTextIsTooOddToLayOut) {
    for (const std::string& text :
         {std::string("\xFF\xC3z", 3), std::string("a\0b", 3), std::string("\xED\xA0\x80"),
          std::string("\n\r\n\xE2\x80\xA8\xE2\x80\xA9"), std::string("שלום"),
          std::string("e\xCC\x81\xCC\x81\xCC\x81"), std::string(2000, 'w')}) {
        const TextLayout layout(text, font(12), {.width = 50});
        EXPECT_GT(layout.size().height, 0);
        EXPECT_GE(layout.caretRect(99999).origin.x, 0);
        const auto context = CGContext::bitmap(60, 60);
        layout.draw(*context, {{0, 0}, {60, 60}});
    }
    EXPECT_EQ(TextLayout("a", font(-3)).size().height, lineHeightOf(*font(13)));
}

TEST(TextLayoutTest, AWordOfManyThousandLettersIsBrokenLikeAShortOne) {
    for (const char* letter : {"w", "ж", "e\xCC\x81"}) {
        std::string word;
        for (int i = 0; i < 20000; ++i) word += letter;
        for (const CGFloat width : {50.0, 400.0}) {
            const CGFloat one = TextLayout(letter, font(13)).size().width;
            const auto lineLetters = static_cast<std::size_t>(width / one);
            const TextLayout layout("a " + word + "\nb c", font(13), {.width = width});
            EXPECT_LE(layout.size().width, width) << letter;
            const std::size_t lines = (20000 + lineLetters - 1) / lineLetters;
            EXPECT_GE(layout.lineCount(), lines + 1) << letter << width;
            EXPECT_LE(layout.lineCount(), lines + 3) << letter << width << ": \"b c\" stays whole";
        }
    }
}

/// For a process of its own: sets a text without the pinned fonts, the system's list being made of `folders`.
/// What went wrong, 0 nothing.
int faultsWithoutPinnedFonts(const std::string& folders, bool draws) {
    const testkit::ScratchFolder folder;
    const std::string list = folder.write(
        "fonts.conf",
        "<?xml version=\"1.0\"?><fontconfig>" + folders +
            "<cachedir>/var/cache/fontconfig</cachedir><selectfont><rejectfont>"
            "<glob>*/DejaVuSans*</glob><glob>*/wqy*</glob></rejectfont></selectfont></fontconfig>");
    ::setenv("FONTCONFIG_FILE", list.c_str(), 1);
    usePinnedFontsBelow(folder.path());
    const TextLayout layout("Hxp 译", font(14), {.width = 200});
    const auto context = CGContext::bitmap(100, 40);
    layout.draw(*context, {{0, 0}, {100, 40}});
    const CGSize size = layout.size();
    const bool measured = size.width > 10 && size.width <= 200 && size.height == lineHeightOf(*font(14));
    const bool drawn = inkOf(*context->makeImage()).size.width > 0;
    return (measured ? 0 : 1) + (drawn == draws ? 0 : 2);
}

TEST(TextLayoutDeathTest, WithoutThePinnedFontsOthersServeOrNoneAndALineTellsIt) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    constexpr const char* kLine = "Font missing, text will look different: DejaVu Sans Book";
    EXPECT_EXIT(std::_Exit(faultsWithoutPinnedFonts("<dir>/usr/share/fonts</dir>", true)),
                testing::ExitedWithCode(0), kLine);
    EXPECT_EXIT(std::_Exit(faultsWithoutPinnedFonts("", false)), testing::ExitedWithCode(0), kLine);
}

TEST(TextLayoutTest, EveryThreadMeasuresAlike) {
    const CGFloat here = TextLayout("Any thread 译", font(13)).size().width;
    CGFloat there = 0;
    std::thread([&] { there = TextLayout("Any thread 译", font(13)).size().width; }).join();
    EXPECT_EQ(there, here);
}

TEST(NSAttributedStringTest, RangesSplitAndJoin) {
    const auto small = font(10), large = font(20);
    const auto red = NSColor::colorWithRGBA(1, 0, 0);
    const auto text = NSMutableAttributedString::make("abcdef", {small, nullptr});
    text->addAttributes({nullptr, red}, {2, 2});
    ASSERT_EQ(text->runs().size(), 3U);
    NSRange range;
    EXPECT_EQ(text->attributesAtIndex(3, &range), (NSTextAttributes{small, red}));
    EXPECT_EQ(range, (NSRange{2, 2}));
    text->addAttributes({large, red}, {0, 99});
    EXPECT_EQ(text->runs().size(), 1U);
    text->addAttributes({small, nullptr}, {6, 1});
    text->addAttributes({}, {0, 6});
    EXPECT_EQ(text->runs().size(), 1U);
    text->appendAttributedString(*text);
    EXPECT_EQ(text->length(), 12U);
    EXPECT_EQ(text->runs().size(), 1U);
    EXPECT_EQ(text->attributesAtIndex(12), NSTextAttributes{});
    EXPECT_TRUE(NSMutableAttributedString::make(*text)->isEqualToAttributedString(*text));
}

}  // namespace
}  // namespace zqcore::platform
