#include "Platform/Graphics/GaussianBlur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

namespace zqcore::platform {

namespace {

constexpr double kExactUpTo = 2;
constexpr double kLargestSigma = 1000;

/// One line of a plane: bytes `stride` apart.
struct Line {
    std::uint8_t* start;
    std::size_t stride;
    int count;
};

/// The kernel in 16.16 fixed point, from the middle outwards; the whole sums to exactly one.
std::vector<std::uint32_t> kernelOf(double sigma) {
    const int reach = gaussianReach(sigma);
    std::vector<double> weights(static_cast<std::size_t>(reach) + 1);
    double sum = 0;
    for (int i = 0; i <= reach; ++i) {
        weights[static_cast<std::size_t>(i)] = std::exp(-i * i / (2 * sigma * sigma));
        sum += (i == 0 ? 1 : 2) * weights[static_cast<std::size_t>(i)];
    }
    std::vector<std::uint32_t> kernel(weights.size());
    std::uint32_t sides = 0;
    for (std::size_t i = 1; i < weights.size(); ++i) {
        kernel[i] = static_cast<std::uint32_t>(std::lround(weights[i] / sum * 65536));
        sides += 2 * kernel[i];
    }
    kernel[0] = 65536 - sides;
    return kernel;
}

/// Reused from line to line.
struct Room {
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint32_t> sums;
};

// Weight by weight over the whole line, which the compiler does several bytes at a time.
void convolve(const Line& line, const std::vector<std::uint32_t>& kernel, Room& room) {
    const std::size_t reach = kernel.size() - 1;
    const auto count = static_cast<std::size_t>(line.count);
    room.bytes.assign(count + 2 * reach, 0);
    room.sums.resize(count);
    for (std::size_t i = 0; i < count; ++i) room.bytes[i + reach] = line.start[i * line.stride];
    const std::uint8_t* const middle = room.bytes.data() + reach;
    std::uint32_t* const sums = room.sums.data();
    for (std::size_t i = 0; i < count; ++i) sums[i] = 0x8000 + kernel[0] * middle[i];
    for (std::size_t k = 1; k <= reach; ++k) {
        const std::uint32_t weight = kernel[k];
        const std::uint8_t* const before = middle - k;
        const std::uint8_t* const after = middle + k;
        for (std::size_t i = 0; i < count; ++i)
            sums[i] += weight * (std::uint32_t{before[i]} + std::uint32_t{after[i]});
    }
    for (std::size_t i = 0; i < count; ++i)
        line.start[i * line.stride] = static_cast<std::uint8_t>(std::min<std::uint32_t>(sums[i] >> 16, 255));
}

/// Odd widths of three running means whose variances add up to sigma squared as nearly as they can
/// (P. Kovesi, "Fast Almost-Gaussian Filtering", 2010).
std::array<int, 3> meanWidths(double sigma) {
    constexpr int passes = 3;
    const double ideal = std::sqrt(12 * sigma * sigma / passes + 1);
    int lower = static_cast<int>(ideal);
    if (lower % 2 == 0) --lower;
    const double smaller = (12 * sigma * sigma - passes * lower * lower - 4.0 * passes * lower - 3 * passes) /
                           (-4.0 * lower - 4);
    const auto wide = static_cast<int>(std::lround(smaller));
    std::array<int, 3> widths{};
    for (int i = 0; i < passes; ++i) widths[static_cast<std::size_t>(i)] = i < wide ? lower : lower + 2;
    return widths;
}

void runningMean(const Line& line, int width, Room& room) {
    std::vector<std::uint8_t>& copy = room.bytes;
    const int half = width / 2;
    const auto count = static_cast<std::size_t>(line.count);
    copy.resize(count);
    for (std::size_t i = 0; i < count; ++i) copy[i] = line.start[i * line.stride];
    std::uint32_t sum = 0;
    for (int i = 0; i < std::min(half, line.count); ++i) sum += copy[static_cast<std::size_t>(i)];
    // Instead of a division; the same for all sums of bytes up to a width of 4095.
    const auto share =
        static_cast<std::uint64_t>((std::uint64_t{1} << 32) / static_cast<std::uint64_t>(width) + 1);
    for (int i = 0; i < line.count; ++i) {
        if (i + half < line.count) sum += copy[static_cast<std::size_t>(i) + static_cast<std::size_t>(half)];
        if (i - half - 1 >= 0) sum -= copy[static_cast<std::size_t>(i - half - 1)];
        line.start[static_cast<std::size_t>(i) * line.stride] =
            static_cast<std::uint8_t>(((sum + static_cast<std::uint32_t>(half)) * share) >> 32);
    }
}

template <class Filter>
void eachLine(std::uint8_t* bytes, int width, int height, std::size_t bytesPerRow, const Filter& filter) {
    for (int y = 0; y < height; ++y)
        filter(Line{bytes + static_cast<std::size_t>(y) * bytesPerRow, 1, width});
    for (int x = 0; x < width; ++x) filter(Line{bytes + x, bytesPerRow, height});
}

/// What is done to each line, and how far it carries a byte.
class Blur {
  public:
    explicit Blur(double sigma) {
        if (sigma <= kExactUpTo) {
            kernel_ = kernelOf(sigma);
            reach_ = static_cast<int>(kernel_.size()) - 1;
            return;
        }
        means_ = meanWidths(std::min(sigma, kLargestSigma));
        for (const int mean : means_) reach_ += mean / 2;
    }

    [[nodiscard]] int reach() const noexcept { return reach_; }

    void apply(std::uint8_t* bytes, int width, int height, std::size_t bytesPerRow) const {
        Room room;
        if (!kernel_.empty()) {
            eachLine(bytes, width, height, bytesPerRow,
                     [&](const Line& line) { convolve(line, kernel_, room); });
            return;
        }
        for (const int mean : means_)
            eachLine(bytes, width, height, bytesPerRow,
                     [&](const Line& line) { runningMean(line, mean, room); });
    }

  private:
    std::vector<std::uint32_t> kernel_;  // empty: the means
    std::array<int, 3> means_{};
    int reach_ = 0;
};

/// Lines of a plane of which a long run of equal ones keeps only what differs after the blur: those that see
/// beyond the run's ends, and one for all between.
struct Fold {
    std::vector<std::size_t> places;  ///< by line of the whole plane: its line among the kept
    std::vector<std::size_t> kept;    ///< by kept line: one of its lines in the whole plane

    /// `alike` says of each line whether it equals the one before.
    Fold(const std::vector<std::uint8_t>& alike, int reach) {
        const auto sees = static_cast<std::size_t>(reach);
        for (std::size_t begin = 0; begin < alike.size();) {
            std::size_t end = begin + 1;
            while (end < alike.size() && alike[end] != 0) ++end;
            const std::size_t length = end - begin;
            const std::size_t leftOut = length > 2 * sees + 1 ? length - (2 * sees + 1) : 0;
            const std::size_t first = kept.size();
            for (std::size_t i = 0; i < length; ++i) {
                const std::size_t place = i < sees + leftOut ? std::min(i, sees) : i - leftOut;
                places.push_back(first + place);
                if (first + place == kept.size()) kept.push_back(begin + i);
            }
            begin = end;
        }
    }
    [[nodiscard]] bool leavesOut() const noexcept { return kept.size() < places.size(); }
};

std::vector<std::uint8_t> alikeRows(const std::uint8_t* bytes, std::size_t width, std::size_t height,
                                    std::size_t bytesPerRow) {
    std::vector<std::uint8_t> alike(height);
    for (std::size_t y = 1; y < height; ++y) {
        const std::uint8_t* row = bytes + y * bytesPerRow;
        alike[y] = std::memcmp(row, row - bytesPerRow, width) == 0;
    }
    return alike;
}

std::vector<std::uint8_t> alikeColumns(const std::uint8_t* bytes, std::size_t width,
                                       const std::vector<std::size_t>& rows, std::size_t bytesPerRow) {
    std::vector<std::uint8_t> differs(width);
    for (const std::size_t y : rows) {
        const std::uint8_t* row = bytes + y * bytesPerRow;
        for (std::size_t x = 1; x < width; ++x) differs[x] |= row[x] ^ row[x - 1];
    }
    for (std::uint8_t& one : differs) one = one == 0;
    return differs;
}

}  // namespace

int gaussianReach(double sigma) noexcept {
    return sigma > 0 ? static_cast<int>(std::ceil(3 * std::min(sigma, kLargestSigma))) : 0;
}

// Of a box, however large, only its corners and a piece of each edge are work.
void gaussianBlur(std::uint8_t* bytes, int width, int height, std::size_t bytesPerRow, double sigma) {
    if (!(sigma > 0) || width <= 0 || height <= 0) return;
    const Blur blur(sigma);
    const auto wide = static_cast<std::size_t>(width);
    const auto high = static_cast<std::size_t>(height);
    const Fold rows(alikeRows(bytes, wide, high, bytesPerRow), blur.reach());
    const Fold columns(alikeColumns(bytes, wide, rows.kept, bytesPerRow), blur.reach());
    if (!rows.leavesOut() && !columns.leavesOut()) return blur.apply(bytes, width, height, bytesPerRow);

    const std::size_t side = columns.kept.size();
    std::vector<std::uint8_t> folded(side * rows.kept.size());
    for (std::size_t y = 0; y < rows.kept.size(); ++y) {
        const std::uint8_t* row = bytes + rows.kept[y] * bytesPerRow;
        for (std::size_t x = 0; x < side; ++x) folded[y * side + x] = row[columns.kept[x]];
    }
    blur.apply(folded.data(), static_cast<int>(side), static_cast<int>(rows.kept.size()), side);
    for (std::size_t y = 0; y < high; ++y) {
        std::uint8_t* row = bytes + y * bytesPerRow;
        if (y > 0 && rows.places[y] == rows.places[y - 1]) {
            std::memcpy(row, row - bytesPerRow, wide);
            continue;
        }
        const std::uint8_t* from = folded.data() + rows.places[y] * side;
        for (std::size_t x = 0; x < wide; ++x) row[x] = from[columns.places[x]];
    }
}

}  // namespace zqcore::platform
