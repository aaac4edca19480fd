#include <stdio.h>

#include <jpeglib.h>
#include <png.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <csetjmp>
#include <string>
#include <vector>

#include "Platform/Graphics/ImageCoding.h"

namespace zqcore::platform {

namespace {

bool isOpaque(const PixelBuffer& pixels) {
    for (int y = 0; y < pixels.height(); ++y) {
        const std::uint32_t* row = pixels.row(y);
        if (std::any_of(row, row + pixels.width(), [](std::uint32_t pixel) { return pixel >> 24 != 255; })) {
            return false;
        }
    }
    return true;
}

std::uint8_t divided(std::uint32_t channel, std::uint32_t alpha) {
    return static_cast<std::uint8_t>(std::min<std::uint32_t>((channel * 255 + alpha / 2) / alpha, 255));
}

void fillStraightRow(const std::uint32_t* row, int width, bool opaque, std::uint8_t* to) {
    for (int x = 0; x < width; ++x) {
        const std::uint32_t pixel = row[x];
        const std::uint32_t alpha = pixel >> 24;
        const std::uint32_t red = pixel >> 16 & 0xff, green = pixel >> 8 & 0xff, blue = pixel & 0xff;
        if (alpha == 255) {
            to[0] = static_cast<std::uint8_t>(red);
            to[1] = static_cast<std::uint8_t>(green);
            to[2] = static_cast<std::uint8_t>(blue);
        } else if (alpha == 0) {
            to[0] = to[1] = to[2] = 0;
        } else {
            to[0] = divided(red, alpha);
            to[1] = divided(green, alpha);
            to[2] = divided(blue, alpha);
        }
        if (!opaque) to[3] = static_cast<std::uint8_t>(alpha);
        to += opaque ? 3 : 4;
    }
}

/// What lives across libpng's jumps: a jump runs no destructors, so nothing that has one is made after it.
struct PNGWork {
    const PixelBuffer& pixels;
    CGSize size;
    bool opaque;
    std::vector<std::uint8_t> row;
    std::string out;
};

void appendPNG(png_structp png, png_bytep bytes, png_size_t count) {
    static_cast<PNGWork*>(png_get_io_ptr(png))->out.append(reinterpret_cast<const char*>(bytes), count);
}

void ignorePNGText(png_structp, png_const_charp) {}

void failPNG(png_structp png, png_const_charp) { png_longjmp(png, 1); }

bool writePNG(PNGWork& work) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &work, failPNG, ignorePNGText);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(png_jmpbuf(png)) != 0) {
        png_destroy_write_struct(&png, &info);
        return false;
    }
    const auto width = static_cast<png_uint_32>(work.pixels.width());
    const auto height = static_cast<png_uint_32>(work.pixels.height());
    png_set_write_fn(png, &work, appendPNG, nullptr);
    png_set_compression_level(png, 1);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    png_set_IHDR(png, info, width, height, 8, work.opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    constexpr double inchesAMetre = 1 / 0.0254;
    const double across = resolutionOf(work.pixels.width(), work.size.width);
    const double up = resolutionOf(work.pixels.height(), work.size.height);
    if (across != 72 || up != 72) {
        png_set_pHYs(png, info, static_cast<png_uint_32>(std::lround(across * inchesAMetre)),
                     static_cast<png_uint_32>(std::lround(up * inchesAMetre)), PNG_RESOLUTION_METER);
    }
    png_write_info(png, info);
    for (int y = 0; y < work.pixels.height(); ++y) {
        fillStraightRow(work.pixels.row(y), work.pixels.width(), work.opaque, work.row.data());
        png_write_row(png, work.row.data());
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return true;
}

struct JPEGErrors {
    jpeg_error_mgr manager;  // first, as libjpeg hands out a pointer to it
    std::jmp_buf jump;
};

void failJPEG(j_common_ptr common) { std::longjmp(reinterpret_cast<JPEGErrors*>(common->err)->jump, 1); }

void ignoreJPEGText(j_common_ptr) {}

struct JPEGWork {
    const PixelBuffer& pixels;
    CGSize size;
    int quality;
    std::vector<std::uint32_t> row;
    unsigned char* out = nullptr;  // libjpeg's own, by malloc
    unsigned long count = 0;
};

/// Adds white under what is transparent: with multiplied alpha that is a plain sum.
void fillOverWhite(const std::uint32_t* row, int width, std::uint32_t* to) {
    for (int x = 0; x < width; ++x) {
        const std::uint32_t rest = 255 - (row[x] >> 24);
        to[x] = (row[x] & 0xffffff) + (rest << 16 | rest << 8 | rest);
    }
}

bool writeJPEG(JPEGWork& work) {
    jpeg_compress_struct jpeg{};
    JPEGErrors errors{};
    jpeg.err = jpeg_std_error(&errors.manager);
    errors.manager.error_exit = failJPEG;
    errors.manager.output_message = ignoreJPEGText;
    if (setjmp(errors.jump) != 0) {
        jpeg_destroy_compress(&jpeg);
        return false;
    }
    jpeg_create_compress(&jpeg);
    jpeg_mem_dest(&jpeg, &work.out, &work.count);
    jpeg.image_width = static_cast<JDIMENSION>(work.pixels.width());
    jpeg.image_height = static_cast<JDIMENSION>(work.pixels.height());
    jpeg.input_components = 4;
    jpeg.in_color_space = std::endian::native == std::endian::little ? JCS_EXT_BGRX : JCS_EXT_XRGB;
    jpeg_set_defaults(&jpeg);
    jpeg_set_quality(&jpeg, work.quality, TRUE);
    if (work.quality >= 90) jpeg.comp_info[0].h_samp_factor = jpeg.comp_info[0].v_samp_factor = 1;
    jpeg.density_unit = 1;
    jpeg.X_density = static_cast<UINT16>(std::lround(resolutionOf(work.pixels.width(), work.size.width)));
    jpeg.Y_density = static_cast<UINT16>(std::lround(resolutionOf(work.pixels.height(), work.size.height)));
    jpeg_start_compress(&jpeg, TRUE);
    while (jpeg.next_scanline < jpeg.image_height) {
        fillOverWhite(work.pixels.row(static_cast<int>(jpeg.next_scanline)), work.pixels.width(),
                      work.row.data());
        auto* row = reinterpret_cast<JSAMPROW>(work.row.data());
        jpeg_write_scanlines(&jpeg, &row, 1);
    }
    jpeg_finish_compress(&jpeg);
    jpeg_destroy_compress(&jpeg);
    return true;
}

}  // namespace

std::optional<Data> encodePNG(const PixelBuffer& pixels, CGSize size) {
    PNGWork work{pixels, size, isOpaque(pixels), {}, {}};
    work.row.resize(static_cast<std::size_t>(pixels.width()) * 4);
    if (!writePNG(work)) return std::nullopt;
    return Data(std::move(work.out));
}

std::optional<Data> encodeJPEG(const PixelBuffer& pixels, CGSize size, double quality) {
    const double factor = quality >= 0 ? std::min(quality, 1.0) : 0;
    JPEGWork work{pixels, size, std::max(1, static_cast<int>(std::lround(factor * 100))), {}};
    work.row.resize(static_cast<std::size_t>(pixels.width()));
    const bool written = writeJPEG(work);
    std::optional<Data> data;
    if (written) data.emplace(std::string(reinterpret_cast<const char*>(work.out), work.count));
    std::free(work.out);
    return data;
}

}  // namespace zqcore::platform
