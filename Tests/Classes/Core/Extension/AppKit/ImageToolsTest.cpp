#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "Classes/Core/Extension/AppKit/NSColorExtension.h"
#include "Classes/Core/Extension/AppKit/NSFontExtension.h"
#include "Classes/Core/Extension/AppKit/NSImageExtension.h"
#include "Classes/Core/Extension/AppKit/StringMeasuring.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/NSBitmapImageRep.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "TestKit/LogCapture.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

using namespace platform;

constexpr CGColor kRed = CGColor::rgb(1, 0, 0);

/// Its left half is red, the right one transparent.
std::shared_ptr<NSImage> halfRed(CGFloat width, CGFloat height) {
    return zq_image(CGSize{width, height}, [&](CGContext& context) {
        context.setFillColor(kRed);
        context.fill({{0, 0}, {width / 2, height}});
    });
}

TEST(NSColorExtensionTest, ReadsHexadecimalText) {
    struct Case {
        const char* text;
        CGColor color;
    };
    const CGColor white = CGColor::white(1), black = CGColor::white(0);
    for (const Case& c :
         {Case{"#007AFF", CGColor::rgb(0, 122 / 255.0, 1)}, Case{"007aff", CGColor::rgb(0, 122 / 255.0, 1)},
          Case{"#GGGGGG", black}, Case{"#FFF", white}, Case{"0xFFFFFF", white}, Case{" 007AFF", white},
          Case{"1007AFF", white}, Case{"", white}, Case{"#12G456", CGColor::rgb(0, 0, 0x12 / 255.0)},
          Case{"0x1234", CGColor::rgb(0, 0x12 / 255.0, 0x34 / 255.0)},
          Case{"  1234", CGColor::rgb(0, 0x12 / 255.0, 0x34 / 255.0)}, Case{"#-12345", black},
          Case{"#红红红红红红", black}, Case{"红红", white}}) {
        EXPECT_EQ(hexColor(c.text)->cgColor(), c.color) << c.text;
    }
    EXPECT_EQ(hexColor("#101010", 0.31)->cgColor(), CGColor::white(0x10 / 255.0, 0.31));
}

TEST(NSColorExtensionTest, ChanceGivesLightColours) {
    bool differs = false;
    const CGColor first = zqcore::random()->cgColor();
    for (int i = 0; i < 500; ++i) {
        const CGColor color = zqcore::random()->cgColor();
        for (const CGFloat channel : {color.red, color.green, color.blue}) {
            EXPECT_GE(channel, 0.6);
            EXPECT_LE(channel, 0.99);
            EXPECT_NEAR(channel * 100, std::round(channel * 100), 1e-9);
        }
        EXPECT_EQ(color.alpha, 1);
        differs = differs || color != first;
    }
    EXPECT_TRUE(differs);
}

TEST(NSFontExtensionTest, TextIsMeasuredInWholeLinesAndPoints) {
    const auto font = NSFont::systemFontOfSize(13);
    const CGFloat line = zq_lineHeight(*font);
    EXPECT_EQ(line, std::ceil(font->ascender() + std::abs(font->descender()) + font->leading()));
    const CGFloat whole = zq_width("two words", 1, font);
    EXPECT_EQ(whole, std::ceil(whole));
    EXPECT_EQ(zq_height("two words", whole, font), line);
    EXPECT_EQ(zq_height("two words", whole * 0.7, font), 2 * line);
    EXPECT_EQ(zq_width("two words\nof", 1, font), whole);
    EXPECT_EQ(zq_width("", 1, font), 0);
    EXPECT_EQ(zq_height("", 10, font), line);
}

TEST(NSImageExtensionTest, DrawsIntoABitmapOfItsOwn) {
    const auto outside = CGContext::bitmap(1, 1);
    const GraphicsContextScope scope(outside);
    const auto image = zq_image(CGSize{7.9, 3.2}, [&](CGContext& context) {
        EXPECT_EQ(NSGraphicsContext::currentContext()->cgContext().get(), &context);
        EXPECT_EQ(context.width(), 7);
    });
    EXPECT_EQ(NSGraphicsContext::currentContext()->cgContext(), outside);
    EXPECT_EQ(image->size(), (CGSize{7.9, 3.2}));
    EXPECT_EQ(zq_pixelSize(*image), (CGSize{7, 3}));
    EXPECT_EQ(zq_cgImage(*image)->bytesPerRow(), 28U);
    for (const CGSize none : {CGSize{0.9, 5}, CGSize{-3, 5}, CGSize{NAN, 5}, CGSize{1e300, 5}}) {
        const auto empty = zq_image(none, [](CGContext&) { FAIL() << "there is nothing to draw on"; });
        EXPECT_TRUE(empty->representations().empty());
        EXPECT_EQ(zq_pixelSize(*empty), CGSize{});
        EXPECT_FALSE(zq_PNGData(*empty));
        EXPECT_FALSE(zq_JPEGData(*empty));
        EXPECT_EQ(zq_base64String(*empty), "");
        EXPECT_EQ(zq_resizeImage(*empty, CGSize{1, 1}), nullptr);
    }
}

TEST(NSImageExtensionTest, GoesThroughBase64) {
    const auto image = halfRed(8, 4);
    std::string text = zq_base64String(*image);
    EXPECT_TRUE(text.starts_with("iVBORw0KGgo"));
    text.insert(20, " \n*");
    const auto back = zq_image(text);
    ASSERT_TRUE(back);
    EXPECT_EQ(zq_cgImage(*back)->colorAt(0, 0), kRed);
    EXPECT_EQ(zq_cgImage(*back)->colorAt(7, 3), CGColor::clear());
    EXPECT_EQ(zq_image(std::string_view("aGVsbG8=")), nullptr) << "no image";
    EXPECT_EQ(zq_image(std::string_view("abc")), nullptr) << "no base64";
    EXPECT_EQ(zq_image(zq_cgImage(*image))->size(), (CGSize{8, 4}));
    EXPECT_EQ(zq_image(std::shared_ptr<const CGImage>()), nullptr);
}

TEST(NSImageExtensionTest, WritesFilesAndTheFoldersAbove) {
    const testkit::ScratchFolder folder;
    const auto image = halfRed(8, 4);
    const std::string png = folder.path() + "/a/b/name.png";
    const std::string jpeg = folder.path() + "/a/c/name.jpg";
    EXPECT_TRUE(zq_writeToFileAsPNG(*image, png));
    EXPECT_TRUE(zq_writeToFileAsJPEG(*image, jpeg));
    EXPECT_EQ(zq_cgImage(*NSImage::makeWithContentsOfFile(png))->colorAt(1, 1), kRed);
    EXPECT_NEAR(zq_cgImage(*NSImage::makeWithContentsOfFile(jpeg))->colorAt(7, 1).red, 1, 0.02);
    EXPECT_FALSE(zq_writeToFileAsPNG(*image, ""));
    EXPECT_FALSE(zq_writeToFileAsPNG(*image, "name.png"));
    EXPECT_FALSE(std::filesystem::exists("name.png"));
    EXPECT_FALSE(zq_writeToFileAsPNG(*NSImage::make(), folder.path() + "/d/name.png"));
    EXPECT_TRUE(std::filesystem::exists(folder.path() + "/d"))
        << "the folder is made before the bytes are asked for";
    testkit::LogCapture log;
    EXPECT_FALSE(zq_writeToFileAsPNG(*image, png + "/under/a.png")) << "a file is in the way";
    std::filesystem::create_directory(folder.path() + "/taken.png");
    log.clear();
    EXPECT_FALSE(zq_writeToFileAsPNG(*image, folder.path() + "/taken.png"));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_TRUE(log.messages(testkit::LogCapture::error)[0].starts_with("写入文件失败：Error Domain="))
        << log;
}

TEST(NSImageExtensionTest, TintPaintsTheOpaqueParts) {
    const auto image = halfRed(8, 4);
    const auto tinted = zq_tint(*image, *NSColor::colorWithRGBA(0, 0, 1));
    EXPECT_EQ(zq_cgImage(*tinted)->colorAt(1, 1), CGColor::rgb(0, 0, 1));
    EXPECT_EQ(zq_cgImage(*tinted)->colorAt(6, 1), CGColor::clear());
    EXPECT_EQ(zq_cgImage(*image)->colorAt(1, 1), kRed) << "the image itself stays";
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
}

TEST(NSImageExtensionTest, ResizesToASizeNoWiderThanItself) {
    const auto image = halfRed(64, 32);
    const auto smaller = zq_resizeImage(*image, CGSize{16.7, 8});
    ASSERT_TRUE(smaller);
    EXPECT_EQ(smaller->size(), (CGSize{16.7, 8}));
    EXPECT_EQ(zq_pixelSize(*smaller), (CGSize{16, 8}));
    EXPECT_EQ(zq_cgImage(*smaller)->bytesPerRow(), 256U) << "rows stay as long as they were";
    EXPECT_EQ(zq_cgImage(*smaller)->colorAt(2, 4), kRed);
    EXPECT_EQ(zq_cgImage(*smaller)->colorAt(13, 4), CGColor::clear());
    EXPECT_TRUE(zq_resizeImage(*image, CGSize{64, 200})) << "taller is no matter";
    EXPECT_FALSE(zq_resizeImage(*image, CGSize{65, 8}));
    EXPECT_FALSE(zq_resizeImage(*image, CGSize{0.5, 8}));
    EXPECT_FALSE(zq_resizeImage(*image, CGSize{INFINITY, 8}));
}

TEST(NSImageExtensionTest, FitsABoxInItsOwnShape) {
    const auto image = halfRed(200, 100);
    struct Case {
        BoxSize box;
        CGSize size;
    };
    for (const Case& c : {Case{{100, 100}, {100, 50}}, Case{{400, 100}, {200, 100}}, Case{{50, 25}, {50, 25}},
                          Case{{30, 200}, {30, 15}}}) {
        const auto fitted = zq_resizeImage(*image, c.box);
        ASSERT_TRUE(fitted) << c.box.width;
        EXPECT_EQ(fitted->size(), c.size);
    }
    EXPECT_FALSE(zq_resizeImage(*image, BoxSize{0, 10}));
    EXPECT_FALSE(zq_resizeImage(*image, BoxSize{10, -1}));
    EXPECT_FALSE(zq_resizeImage(*NSImage::make(), BoxSize{10, 10}));
    EXPECT_FALSE(zq_resizeImage(*image, BoxSize{600, 600})) << "wider than it is";
}

}  // namespace
}  // namespace zqcore
