#include <algorithm>
#include <cstdlib>
#include <optional>

#include "Platform/Graphics/ImageCoding.h"

namespace zqcore::platform {

namespace {

/// Bytes by place; what lies outside reads as absent or 0.
class Bytes {
  public:
    explicit Bytes(std::string_view bytes) noexcept : bytes_(bytes) {}

    [[nodiscard]] std::size_t size() const noexcept { return bytes_.size(); }
    [[nodiscard]] bool has(std::size_t at, std::size_t count) const noexcept {
        return at <= size() && count <= size() - at;
    }
    [[nodiscard]] std::uint32_t byte(std::size_t at) const noexcept {
        return at < size() ? static_cast<unsigned char>(bytes_[at]) : 0;
    }
    [[nodiscard]] std::uint32_t big16(std::size_t at) const noexcept { return byte(at) << 8 | byte(at + 1); }
    [[nodiscard]] std::uint32_t big32(std::size_t at) const noexcept {
        return big16(at) << 16 | big16(at + 2);
    }
    [[nodiscard]] std::uint32_t little16(std::size_t at) const noexcept {
        return byte(at) | byte(at + 1) << 8;
    }
    [[nodiscard]] std::uint32_t little32(std::size_t at) const noexcept {
        return little16(at) | little16(at + 2) << 16;
    }

  private:
    std::string_view bytes_;
};

/// Chunks up to IEND (W3C PNG, section 5).
void readPNG(const Bytes& bytes, ImageOutline& outline) {
    outline.width = bytes.big32(16);
    outline.height = bytes.big32(20);
    constexpr std::size_t around = 12;  // length, type and check sum
    std::size_t at = 8;
    while (bytes.has(at, around)) {
        const std::size_t length = bytes.big32(at);
        if (!bytes.has(at + around, length)) return;
        if (bytes.big32(at + 4) == 0x49454E44) {
            outline.complete = true;
            return;
        }
        at += around + length;
    }
}

bool isFrameHeader(std::uint32_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Segments up to the end mark (ITU T.81, annex B).
void readJPEG(const Bytes& bytes, ImageOutline& outline) {
    std::size_t at = 2;
    while (bytes.has(at, 2)) {
        if (bytes.byte(at) != 0xFF) {
            // Between segments only fill may lie; within a scan these are its bytes.
            ++at;
            continue;
        }
        const std::uint32_t marker = bytes.byte(at + 1);
        if (marker == 0xD9) {
            outline.complete = true;
            return;
        }
        if (marker == 0xFF) {
            ++at;
        } else if (marker == 0 || marker == 1 || (marker >= 0xD0 && marker <= 0xD8)) {
            at += 2;
        } else {
            if (isFrameHeader(marker) && outline.width == 0) {
                outline.height = bytes.big16(at + 5);
                outline.width = bytes.big16(at + 7);
            }
            at += 2 + std::max<std::size_t>(bytes.big16(at + 2), 2);
        }
    }
}

/// Where the sub-blocks that begin at `at` end, absent if the data ends first.
std::optional<std::size_t> afterSubBlocks(const Bytes& bytes, std::size_t at) {
    while (bytes.has(at, 1)) {
        const std::size_t length = bytes.byte(at);
        at += 1 + length;
        if (length == 0) return at;
    }
    return std::nullopt;
}

std::size_t colorTableBytes(std::uint32_t flags) {
    return (flags & 0x80) != 0 ? std::size_t{3} << ((flags & 7) + 1) : 0;
}

/// Blocks up to the end of the first picture, which is all that is shown (GIF89a).
void readGIF(const Bytes& bytes, ImageOutline& outline) {
    outline.width = bytes.little16(6);
    outline.height = bytes.little16(8);
    std::size_t at = 13 + colorTableBytes(bytes.byte(10));
    while (bytes.has(at, 1)) {
        const std::uint32_t block = bytes.byte(at);
        const bool picture = block == 0x2C;
        if (!picture && block != 0x21) return;
        const std::size_t data = picture ? at + 11 + colorTableBytes(bytes.byte(at + 9)) : at + 2;
        const auto end = afterSubBlocks(bytes, data);
        if (!end) return;
        if (picture) {
            outline.complete = true;
            return;
        }
        at = *end;
    }
}

void readBMP(const Bytes& bytes, ImageOutline& outline) {
    // Loaders take memory for as long a header and as many colours as the file claims.
    constexpr std::uint32_t longestHeader = 124;
    constexpr std::uint32_t mostColors = 256;
    const std::uint32_t header = bytes.little32(14);
    if (header > longestHeader || (header >= 40 && bytes.little32(46) > mostColors)) return;
    const bool old = header == 12;
    const auto width =
        old ? std::int64_t{bytes.little16(18)} : std::int64_t{std::int32_t(bytes.little32(18))};
    const auto height =
        old ? std::int64_t{bytes.little16(20)} : std::int64_t{std::int32_t(bytes.little32(22))};
    const std::int64_t bits = old ? bytes.little16(24) : bytes.little16(28);
    const std::uint32_t compression = old ? 0 : bytes.little32(30);
    outline.width = width;
    outline.height = std::abs(height);
    const bool plain = compression == 0 || compression == 3;
    const std::int64_t rowBytes = (outline.width * bits + 31) / 32 * 4;
    const std::int64_t there = static_cast<std::int64_t>(bytes.size()) - bytes.little32(10);
    if (there < 0) return;
    // Divided, since the product of what a file claims may be too large for any number.
    outline.complete =
        plain ? rowBytes <= 0 || outline.height <= there / rowBytes : there >= bytes.little32(34);
}

}  // namespace

ImageOutline outlineOf(std::string_view data) noexcept {
    const Bytes bytes(data);
    ImageOutline outline;
    if (data.starts_with("\x89PNG\r\n\x1a\n")) {
        outline.kind = ImageFileKind::png;
        readPNG(bytes, outline);
    } else if (data.starts_with("\xFF\xD8\xFF")) {
        outline.kind = ImageFileKind::jpeg;
        readJPEG(bytes, outline);
    } else if (data.starts_with("GIF87a") || data.starts_with("GIF89a")) {
        outline.kind = ImageFileKind::gif;
        readGIF(bytes, outline);
    } else if (data.starts_with("BM")) {
        outline.kind = ImageFileKind::bmp;
        readBMP(bytes, outline);
    } else if (data.starts_with(std::string_view("II*\0", 4)) ||
               data.starts_with(std::string_view("MM\0*", 4))) {
        outline.kind = ImageFileKind::tiff;
        outline.complete = true;
    } else {
        outline.complete = true;
    }
    return outline;
}

}  // namespace zqcore::platform
