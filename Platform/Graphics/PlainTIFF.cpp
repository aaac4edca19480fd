#include <cmath>
#include <cstring>
#include <string>

#include "Platform/Graphics/ImageCoding.h"

// TIFF 6.0 in the one form that we write: little-endian, one strip, 8-bit RGBA with multiplied alpha.
namespace zqcore::platform {

namespace {

enum Tag : std::uint16_t {
    kWidth = 256,
    kHeight = 257,
    kBitsPerSample = 258,
    kCompression = 259,
    kPhotometric = 262,
    kStripOffset = 273,
    kSamplesPerPixel = 277,
    kRowsPerStrip = 278,
    kStripBytes = 279,
    kXResolution = 282,
    kYResolution = 283,
    kResolutionUnit = 296,
    kExtraSamples = 338,
};

enum FieldType : std::uint16_t { kShort = 3, kLong = 4, kRational = 5 };

struct Field {
    Tag tag;
    FieldType type;
    std::uint32_t count;
    std::uint32_t value;  ///< or where the values lie
};

constexpr std::uint32_t kHeaderBytes = 8;
constexpr std::uint32_t kFieldCount = 13;
constexpr std::uint32_t kDirectoryBytes = 2 + kFieldCount * 12 + 4;
constexpr std::uint32_t kBitsAt = kHeaderBytes + kDirectoryBytes;
constexpr std::uint32_t kXResolutionAt = kBitsAt + 8;
constexpr std::uint32_t kYResolutionAt = kXResolutionAt + 8;
constexpr std::uint32_t kPixelsAt = kYResolutionAt + 8;
constexpr std::uint32_t kResolutionParts = 10000;

void put(std::string& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out += static_cast<char>(value >> (8 * i));
}

std::uint32_t get(std::string_view bytes, std::size_t at, int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        value |= std::uint32_t{static_cast<unsigned char>(bytes[at + static_cast<std::size_t>(i)])}
                 << (8 * i);
    }
    return value;
}

std::uint32_t resolutionParts(int pixels, CGFloat points) {
    return static_cast<std::uint32_t>(std::lround(resolutionOf(pixels, points) * kResolutionParts));
}

/// Everything before the pixels, which depends on nothing but the four numbers in it.
std::string headOf(std::uint32_t width, std::uint32_t height, std::uint32_t xResolution,
                   std::uint32_t yResolution) {
    const Field fields[kFieldCount] = {
        {kWidth, kLong, 1, width},
        {kHeight, kLong, 1, height},
        {kBitsPerSample, kShort, 4, kBitsAt},
        {kCompression, kShort, 1, 1},
        {kPhotometric, kShort, 1, 2},
        {kStripOffset, kLong, 1, kPixelsAt},
        {kSamplesPerPixel, kShort, 1, 4},
        {kRowsPerStrip, kLong, 1, height},
        {kStripBytes, kLong, 1, width * height * 4},
        {kXResolution, kRational, 1, kXResolutionAt},
        {kYResolution, kRational, 1, kYResolutionAt},
        {kResolutionUnit, kShort, 1, 2},
        {kExtraSamples, kShort, 1, 1},
    };
    std::string head("II*\0", 4);
    put(head, kHeaderBytes, 4);
    put(head, kFieldCount, 2);
    for (const Field& field : fields) {
        put(head, field.tag, 2);
        put(head, field.type, 2);
        put(head, field.count, 4);
        put(head, field.value, 4);
    }
    put(head, 0, 4);
    for (int i = 0; i < 4; ++i) put(head, 8, 2);
    put(head, xResolution, 4);
    put(head, kResolutionParts, 4);
    put(head, yResolution, 4);
    put(head, kResolutionParts, 4);
    return head;
}

}  // namespace

double resolutionOf(int pixels, CGFloat points) noexcept {
    constexpr double pointsAnInch = 72;
    if (!(std::isfinite(points) && points > 0)) return pointsAnInch;
    const double resolution = pixels / points * pointsAnInch;
    return resolution >= 1 && resolution <= 20000 ? resolution : pointsAnInch;
}

std::optional<Data> encodeTIFF(const PixelBuffer& pixels, CGSize size) {
    const auto width = static_cast<std::uint32_t>(pixels.width());
    const auto height = static_cast<std::uint32_t>(pixels.height());
    std::string out = headOf(width, height, resolutionParts(pixels.width(), size.width),
                             resolutionParts(pixels.height(), size.height));
    out.resize(out.size() + std::size_t{width} * height * 4);
    char* to = out.data() + kPixelsAt;
    for (int y = 0; y < pixels.height(); ++y) {
        const std::uint32_t* row = pixels.row(y);
        for (std::uint32_t x = 0; x < width; ++x, to += 4) {
            const std::uint32_t pixel = row[x];
            to[0] = static_cast<char>(pixel >> 16);
            to[1] = static_cast<char>(pixel >> 8);
            to[2] = static_cast<char>(pixel);
            to[3] = static_cast<char>(pixel >> 24);
        }
    }
    return Data(std::move(out));
}

DecodedImage decodePlainTIFF(std::string_view bytes) {
    if (bytes.size() <= kPixelsAt) return {};
    constexpr std::uint32_t firstValue = kHeaderBytes + 2 + 8;
    const std::uint32_t width = get(bytes, firstValue, 4);
    const std::uint32_t height = get(bytes, firstValue + 12, 4);
    if (width == 0 || height == 0 || std::int64_t{width} * height > kMostImagePixels) return {};
    const std::uint32_t xResolution = get(bytes, kXResolutionAt, 4);
    const std::uint32_t yResolution = get(bytes, kYResolutionAt, 4);
    if (xResolution == 0 || yResolution == 0) return {};
    // Ours, and only ours, has this very head.
    if (!bytes.starts_with(headOf(width, height, xResolution, yResolution))) return {};
    if (bytes.size() - kPixelsAt < std::size_t{width} * height * 4) return {};
    auto pixels = PixelBuffer::make(width, height);
    if (!pixels) return {};
    const auto* from = reinterpret_cast<const unsigned char*>(bytes.data()) + kPixelsAt;
    for (int y = 0; y < pixels->height(); ++y) {
        std::uint32_t* row = pixels->row(y);
        for (std::uint32_t x = 0; x < width; ++x, from += 4) {
            const std::uint32_t alpha = from[3];
            // A channel above its alpha isn't multiplied alpha, and drawing would overflow.
            const auto channel = [&](int i) { return std::min<std::uint32_t>(from[i], alpha); };
            row[x] = alpha << 24 | channel(0) << 16 | channel(1) << 8 | channel(2);
        }
    }
    constexpr double parts = 72.0 * kResolutionParts;
    return {std::move(pixels), {width * parts / xResolution, height * parts / yResolution}};
}

}  // namespace zqcore::platform
