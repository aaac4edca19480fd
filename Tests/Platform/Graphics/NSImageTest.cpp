#include "Platform/Foundation/NSImage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "Platform/Foundation/Text/Base64.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CIFilter.h"
#include "Platform/Graphics/GaussianBlur.h"
#include "Platform/Graphics/ImageCoding.h"
#include "Platform/Graphics/ImageScaler.h"
#include "Platform/Graphics/NSBitmapImageRep.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/Graphics/NSPDFImageRep.h"
#include "Platform/Graphics/ScreenScale.h"

namespace zqcore::platform {
namespace {

constexpr CGColor kRed = CGColor::rgb(1, 0, 0);

/// A picture with every alpha and many colours.
std::shared_ptr<NSBitmapImageRep> colourful(int width = 37, int height = 21) {
    auto pixels = PixelBuffer::make(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const auto alpha = static_cast<std::uint32_t>(255 * y / height);
            const std::uint32_t red =
                alpha * static_cast<std::uint32_t>(x) / static_cast<std::uint32_t>(width);
            pixels->row(y)[x] = alpha << 24 | red << 16 | (alpha - red) << 8 | alpha / 3;
        }
    }
    return NSBitmapImageRep::make(CGImage::make(std::move(pixels)));
}

/// A 37 by 21 picture, opaque, as file bytes.
Data opaqueFile(NSBitmapImageFileType type) {
    const auto context = CGContext::bitmap(37, 21);
    context->setFillColor(CGColor::rgb(0.2, 0.4, 0.6));
    context->fill({{0, 0}, {37, 21}});
    return *NSBitmapImageRep::make(context->makeImage())->representationUsingType(type, 1.0);
}

/// A plain BMP of 24 bits.
std::string bmpFile(std::uint32_t width, std::uint32_t height) {
    const std::size_t row = (width * 3 + 3) / 4 * 4;
    std::string file(54 + row * height, '\x40');
    const auto put = [&](std::size_t at, std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file[at + static_cast<std::size_t>(i)] = static_cast<char>(value >> (8 * i));
    };
    file[0] = 'B';
    file[1] = 'M';
    put(2, static_cast<std::uint32_t>(file.size()), 4);
    put(6, 0, 4);
    put(10, 54, 4);
    put(14, 40, 4);
    put(18, width, 4);
    put(22, height, 4);
    put(26, 1, 2);
    put(28, 24, 2);
    for (std::size_t at = 30; at < 54; at += 4) put(at, 0, 4);
    return file;
}

std::string gifFile() {
    return *decodeBase64("R0lGODlhAQABAIAAAP8AAAAAACH5BAAAAAAALAAAAAABAAEAAAICRAEAOw==");
}

TEST(NSBitmapImageRepTest, FilesBringBackPixelsAndSize) {
    const auto before = colourful();
    before->setSize({18.5, 10.5});
    for (const auto type : {NSBitmapImageFileType::png, NSBitmapImageFileType::tiff}) {
        const auto data = before->representationUsingType(type);
        ASSERT_TRUE(data);
        const auto after = NSBitmapImageRep::imageRepWithData(*data);
        ASSERT_TRUE(after);
        EXPECT_EQ(after->size(), (CGSize{18.5, 10.5})) << static_cast<int>(type);
        ASSERT_EQ(after->pixelsWide(), 37);
        int worst = 0;
        for (int y = 0; y < 21; ++y) {
            for (int x = 0; x < 37; ++x) {
                const std::uint32_t a = before->cgImage()->pixels()->row(y)[x];
                const std::uint32_t b = after->cgImage()->pixels()->row(y)[x];
                for (const int shift : {0, 8, 16, 24}) {
                    worst = std::max(worst, std::abs(int(a >> shift & 0xff) - int(b >> shift & 0xff)));
                }
            }
        }
        EXPECT_LE(worst, type == NSBitmapImageFileType::tiff ? 0 : 1) << static_cast<int>(type);
    }
}

TEST(NSBitmapImageRepTest, JPEGShowsWhiteUnderWhatIsTransparent) {
    const auto context = CGContext::bitmap(16, 16);
    context->setFillColor(kRed);
    context->fill({{0, 0}, {8, 16}});
    const auto data = NSBitmapImageRep::make(context->makeImage())
                          ->representationUsingType(NSBitmapImageFileType::jpeg, 1.0);
    const auto read = NSBitmapImageRep::imageRepWithData(*data);
    ASSERT_TRUE(read);
    EXPECT_NEAR(read->colorAt(3, 8).red, 1, 0.02);
    EXPECT_NEAR(read->colorAt(3, 8).green, 0, 0.02);
    EXPECT_NEAR(read->colorAt(12, 8).blue, 1, 0.02);
    const auto coarse =
        colourful(200, 200)->representationUsingType(NSBitmapImageFileType::jpeg, 0.1)->size();
    EXPECT_LT(coarse * 2,
              colourful(200, 200)->representationUsingType(NSBitmapImageFileType::jpeg, 1.0)->size());
    EXPECT_FALSE(colourful()->representationUsingType(NSBitmapImageFileType::gif));
}

TEST(NSBitmapImageRepTest, AFileThatEndsTooEarlyIsNoImage) {
    const std::string files[] = {std::string(opaqueFile(NSBitmapImageFileType::png).view()),
                                 std::string(opaqueFile(NSBitmapImageFileType::jpeg).view()),
                                 std::string(opaqueFile(NSBitmapImageFileType::tiff).view()), bmpFile(37, 21),
                                 gifFile()};
    for (const std::string& file : files) {
        EXPECT_TRUE(NSImage::make(Data(file))) << file.substr(0, 3);
        const std::size_t step = std::max<std::size_t>(file.size() / 40, 1);
        // The last byte of a GIF only tells that no picture follows.
        const std::size_t longest = file.size() - (file.starts_with("GIF") ? 3 : 1);
        for (std::size_t count = 0; count < longest; count += step) {
            EXPECT_FALSE(NSImage::make(Data(file.substr(0, count)))) << file.substr(0, 3) << " of " << count;
        }
        EXPECT_FALSE(NSImage::make(Data(file.substr(0, longest)))) << file.substr(0, 3);
    }
    EXPECT_FALSE(NSImage::make(Data(std::string(5000, 'x'))));
}

TEST(NSBitmapImageRepTest, HugeClaimsAreRefused) {
    std::string png(opaqueFile(NSBitmapImageFileType::png).view());
    png[16] = png[20] = 0;
    png[17] = png[21] = 1;  // 65573 by 65557
    EXPECT_EQ(outlineOf(png).width, 65536 + 37);
    EXPECT_FALSE(NSImage::make(Data(png)));
    std::string gif = gifFile();
    gif[6] = gif[7] = gif[8] = gif[9] = '\x7f';
    EXPECT_FALSE(NSImage::make(Data(gif)));
    EXPECT_FALSE(NSImage::make(Data(bmpFile(37, 21).replace(18, 4, "\xff\xff\xff\x7f", 4))));
    // A header of 4 GB: the loader would ask for the memory at once.
    EXPECT_FALSE(outlineOf(bmpFile(37, 21).replace(14, 4, "\xff\xff\xff\xf6", 4)).complete);
    EXPECT_FALSE(outlineOf(bmpFile(37, 21).replace(46, 4, "\xff\xff\xff\xf6", 4)).complete);
}

TEST(NSBitmapImageRepTest, MakesOnlyItsOwnFormat) {
    using Format = NSBitmapImageRep::Format;
    EXPECT_TRUE(NSBitmapImageRep::make(Format{.pixelsWide = 3, .pixelsHigh = 2, .bytesPerRow = 12}));
    for (const Format& wrong : {Format{}, Format{.pixelsWide = 3, .pixelsHigh = -2},
                                Format{.pixelsWide = 3, .pixelsHigh = 2, .bitsPerSample = 16},
                                Format{.pixelsWide = 3, .pixelsHigh = 2, .samplesPerPixel = 3},
                                Format{.pixelsWide = 3, .pixelsHigh = 2, .isPlanar = true},
                                Format{.pixelsWide = 3, .pixelsHigh = 2, .bytesPerRow = 16},
                                Format{.pixelsWide = 1LL << 40, .pixelsHigh = 2}}) {
        EXPECT_FALSE(NSBitmapImageRep::make(wrong));
    }
}

TEST(NSBitmapImageRepTest, ImagesOnceTakenDontChange) {
    const auto bitmap = NSBitmapImageRep::make({.pixelsWide = 1, .pixelsHigh = 1});
    auto context = bitmap->makeContext();
    const auto empty = bitmap->cgImage();
    context->setFillColor(kRed);
    context->fill({{0, 0}, {1, 1}});
    EXPECT_EQ(empty->colorAt(0, 0), CGColor::clear());
    context.reset();
    const auto red = bitmap->cgImage();
    EXPECT_EQ(red->pixels(), bitmap->cgImage()->pixels()) << "nothing is copied while nobody draws";
    context = bitmap->makeContext();
    context->clear({{0, 0}, {1, 1}});
    EXPECT_EQ(red->colorAt(0, 0), kRed);
    EXPECT_EQ(bitmap->colorAt(0, 0), CGColor::clear());
}

TEST(NSImageTest, TheFormThatServesTheScaleIsShown) {
    const auto image = NSImage::make(CGSize{10, 10});
    EXPECT_FALSE(image->TIFFRepresentation()) << "without forms";
    EXPECT_EQ(image->cgImageForProposedRect(), nullptr);
    for (const int scale : {1, 2, 3}) {
        const auto form = NSBitmapImageRep::make({.pixelsWide = 10 * scale, .pixelsHigh = 10 * scale});
        form->setSize({10, 10});
        image->addRepresentation(form);
    }
    for (const auto& [scale, pixels] : {std::pair{1.0, 10}, {1.5, 20}, {2.0, 20}, {9.0, 30}}) {
        EXPECT_EQ(image->bestRepresentation(scale)->pixelsWide(), pixels) << scale;
    }
    EXPECT_EQ(image->cgImageForProposedRect()->width(), 10);
    setMainScreenScale(2);
    EXPECT_EQ(image->cgImageForProposedRect()->width(), 20);
    EXPECT_EQ(NSImage::make(*image->TIFFRepresentation())->size(), (CGSize{10, 10}));
    setMainScreenScale(1);
}

TEST(NSImageTest, AHandlerDrawsAnewEachTimeAndAsFlippedAsItWants) {
    for (const bool flipped : {false, true}) {
        int calls = 0;
        const auto image = NSImage::imageWithSize({4, 4}, flipped, [&](const CGRect& rect) {
            ++calls;
            EXPECT_EQ(rect, CGRect({{0, 0}, {4, 4}}));
            EXPECT_EQ(NSGraphicsContext::currentContext()->isFlipped(), flipped);
            NSColor::colorWithCGColor(kRed)->set();
            NSRectFill({{0, 0}, {4, 1}});
            return true;
        });
        EXPECT_EQ(calls, 0);
        for (const bool target : {false, true}) {
            const auto context = CGContext::bitmap(8, 8);
            if (target) context->flip(8);
            image->draw(*context, {{0, 0}, {8, 8}});
            EXPECT_EQ(context->makeImage()->colorAt(4, flipped ? 1 : 6), kRed) << flipped << target;
            EXPECT_EQ(context->makeImage()->colorAt(4, flipped ? 6 : 1), CGColor::clear())
                << flipped << target;
        }
        EXPECT_EQ(calls, 2);
        setMainScreenScale(2);
        EXPECT_EQ(image->cgImageForProposedRect()->width(), 8) << "size times the main scale";
        setMainScreenScale(1);
    }
}

TEST(NSImageTest, FocusDrawsOnTheImageAloneAndLeavesTheCopyBehind) {
    const auto outside = CGContext::bitmap(4, 4);
    const GraphicsContextScope scope(outside);
    const auto image = NSImage::make(CGContext::bitmap(4, 4)->makeImage());
    const auto copy = image->copy();
    copy->lockFocus();
    NSColor::colorWithCGColor(kRed)->set();
    NSRectFill({{0, 0}, {4, 4}});
    copy->unlockFocus();
    EXPECT_EQ(copy->cgImageForProposedRect()->colorAt(0, 0), kRed);
    EXPECT_EQ(image->cgImageForProposedRect()->colorAt(0, 0), CGColor::clear());

    const auto none = NSImage::make();
    none->lockFocus();
    NSColor::whiteColor()->set();
    NSRectFill({{0, 0}, {4, 4}});
    none->unlockFocus();
    EXPECT_TRUE(none->representations().empty());
    EXPECT_EQ(outside->makeImage()->colorAt(0, 0), CGColor::clear())
        << "what is drawn for it goes nowhere else";
    EXPECT_EQ(NSGraphicsContext::currentContext()->cgContext(), outside);
}

TEST(NSImageTest, TemplatesShowTheirAlphaInTheTint) {
    const auto source = CGContext::bitmap(4, 4);
    source->setFillColor(kRed);
    source->fill({{0, 0}, {2, 4}});
    const auto image = NSImage::make(source->makeImage());
    const auto shown = [&](const std::shared_ptr<NSColor>& tint) {
        const auto context = CGContext::bitmap(4, 4);
        context->setFillColor(CGColor::white(1));
        context->fill({{0, 0}, {4, 4}});
        image->drawTinted(*context, {{0, 0}, {4, 4}}, tint);
        EXPECT_EQ(context->makeImage()->colorAt(3, 1), CGColor::white(1)) << "the ground stays";
        return context->makeImage()->colorAt(1, 1);
    };
    const auto blue = NSColor::colorWithRGBA(0, 0, 1);
    EXPECT_EQ(shown(blue), kRed) << "no template";
    image->setTemplate(true);
    EXPECT_EQ(shown(blue), blue->cgColor());
    EXPECT_NEAR(shown(nullptr).red, 0.15, 0.01) << "the label colour";
    EXPECT_TRUE(image->copy()->isTemplate());
}

TEST(NSPDFImageRepTest, IsAFileAndARecordingThatDrawsBackUpright) {
    const auto picture = NSPDFImageRep::make({10, 10}, [](CGContext& context) {
        context.setFillColor(kRed);
        context.fill({{0, 0}, {5, 2}});
        context.fill({{-5, 9}, {3, 3}});  // outside
    });
    const std::string file(picture->PDFRepresentation().view());
    EXPECT_TRUE(file.starts_with("%PDF-1."));
    EXPECT_NE(file.find("%%EOF"), std::string::npos);
    EXPECT_EQ(picture->PDFRepresentation().view(), file);
    for (const bool flipped : {false, true}) {
        const auto context = CGContext::bitmap(30, 30);
        if (flipped) context->flip(30);
        picture->draw(*context, {{5, 5}, {20, 20}});
        const auto image = context->makeImage();
        EXPECT_EQ(image->colorAt(6, 23), kRed) << flipped;
        EXPECT_EQ(image->colorAt(16, 23), CGColor::clear()) << flipped;
        EXPECT_EQ(image->colorAt(6, 6), CGColor::clear()) << flipped;
        EXPECT_EQ(image->colorAt(1, 6), CGColor::clear()) << flipped;
    }
    const auto image = NSImage::make();
    image->addRepresentation(picture);
    EXPECT_EQ(image->size(), (CGSize{10, 10}));
    EXPECT_EQ(image->cgImageForProposedRect()->colorAt(1, 9), kRed);
    EXPECT_EQ(NSPDFImageRep::make({0, 10}, nullptr), nullptr);
}

TEST(ImageScalerTest, KeepsFlatPartsAndEdgesWhereTheyWere) {
    const auto source = CGContext::bitmap(64, 64);
    source->setFillColor(CGColor::rgb(0.2, 0.4, 0.6));
    source->fill({{0, 0}, {32, 64}});
    for (const auto& [width, height] : {std::pair{16, 16}, {100, 7}, {64, 200}, {1, 1}, {63, 64}}) {
        const auto scaled = CGImage::make(scaledPixels(*source->pixels(), width, height));
        ASSERT_TRUE(scaled);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                const std::uint32_t pixel = scaled->pixels()->row(y)[x];
                ASSERT_LE(pixel & 0xff, pixel >> 24) << "channels stay below alpha";
            }
        }
        if (width < 16 || width % 2 != 0) continue;
        EXPECT_EQ(scaled->pixels()->row(height / 2)[width / 8], 0xFF336699U) << width;
        EXPECT_EQ(scaled->pixels()->row(height / 2)[width * 7 / 8], 0U) << width;
        EXPECT_NEAR(scaled->colorAt(width / 2 - 1, 0).alpha + scaled->colorAt(width / 2, 0).alpha, 1, 0.35)
            << width;
    }
    EXPECT_EQ(scaledPixels(*source->pixels(), 0, 5), nullptr);
}

TEST(CIFilterTest, BrightnessIsAddedUpToTheAlpha) {
    auto pixels = PixelBuffer::make(3, 1);
    pixels->row(0)[0] = 0x80402000;
    pixels->row(0)[1] = 0xFF000000;
    const auto image = CGImage::make(pixels);
    const auto filter = CIFilter::filterWithName("CIColorControls");
    filter->setDefaults();
    EXPECT_EQ(filter->apply(image), image);
    filter->setValueForKey(1, "inputBrightness");
    const auto white = filter->apply(image);
    EXPECT_EQ(white->pixels()->row(0)[0], 0x80808080U);
    EXPECT_EQ(white->pixels()->row(0)[1], 0xFFFFFFFFU);
    EXPECT_EQ(white->pixels()->row(0)[2], 0U);
    filter->setValueForKey(-0.25, "inputBrightness");
    EXPECT_EQ(filter->apply(image)->pixels()->row(0)[0], 0x80200000U);
    EXPECT_EQ(CIFilter::filterWithName("CIOther"), nullptr);
}

TEST(GaussianBlurTest, KeepsWhatThereIsAndItsMiddle) {
    for (const double sigma : {0.5, 1.7, 2.5, 6.0, 15.0}) {
        constexpr int side = 161;
        std::string plane(side * side, '\0');
        for (int y = 60; y <= 100; ++y) std::fill_n(plane.begin() + y * side + 60, 41, '\xff');
        gaussianBlur(reinterpret_cast<std::uint8_t*>(plane.data()), side, side, side, sigma);
        const auto value = [&](int x, int y) {
            return static_cast<unsigned char>(plane[std::size_t(y * side + x)]);
        };
        double sum = 0;
        for (const char c : plane) sum += static_cast<unsigned char>(c);
        EXPECT_NEAR(sum / (41 * 41 * 255), 1, 0.02) << sigma;
        for (int i = 0; i < 80; ++i) {
            ASSERT_EQ(value(80 - i, 80), value(80 + i, 80)) << sigma;
            ASSERT_NEAR(value(80 - i, 80), value(80, 80 - i), 1) << sigma;
        }
        // The edge of a side that is long against sigma: the normal distribution half a pixel inside.
        if (sigma > 7) continue;
        EXPECT_NEAR(value(60, 80) / 255.0, 0.5 + 0.2 / sigma, sigma < 1 ? 0.1 : 0.03) << sigma;
    }
}

// A short edge is blurred whole, of a long one only as much as differs.
TEST(GaussianBlurTest, BlursLongEdgesAsShortOnes) {
    for (const double sigma : {0.7, 2.0, 4.0, 11.0}) {
        const int reach = gaussianReach(sigma);
        const int side = 12 * reach;
        const auto blurred = [&](int length) {
            std::vector<std::uint8_t> plane(std::size_t(side * side));
            for (int y = 0; y < length; ++y)
                for (int x = 0; x < length; ++x) plane[std::size_t((y + reach) * side + x + reach)] = 255;
            plane[std::size_t(reach * side + reach)] = 90;
            gaussianBlur(plane.data(), side, side, std::size_t(side), sigma);
            return plane;
        };
        const auto brief = blurred(2 * reach - 1);
        const auto extended = blurred(9 * reach);
        for (int y = 0; y < 2 * reach - 1; ++y)
            for (int x = 0; x < 2 * reach - 1; ++x)
                ASSERT_EQ(brief[std::size_t(y * side + x)], extended[std::size_t(y * side + x)])
                    << sigma << " at " << x << ", " << y;
        EXPECT_EQ(extended[std::size_t(5 * reach * side + 5 * reach)], 255) << sigma;
        EXPECT_LT(extended[std::size_t(reach * side + 5 * reach)], 255) << sigma;
    }
}

}  // namespace
}  // namespace zqcore::platform
