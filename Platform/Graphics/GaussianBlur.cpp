#include "Platform/Graphics/GaussianBlur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace zqcore::platform {

namespace {

constexpr double kExactUpTo = 2;
constexpr double kLargestSigma = 1000;

/// One line of the plane: bytes `stride` apart.
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

void convolve(const Line& line, const std::vector<std::uint32_t>& kernel, std::vector<std::uint8_t>& padded) {
    const std::size_t reach = kernel.size() - 1;
    const auto count = static_cast<std::size_t>(line.count);
    padded.assign(count + 2 * reach, 0);
    for (std::size_t i = 0; i < count; ++i) padded[i + reach] = line.start[i * line.stride];
    std::size_t alike = 0;  // how many bytes up to the last one that counts are the same
    for (std::size_t i = 0; i < 2 * reach; ++i) alike = i > 0 && padded[i] == padded[i - 1] ? alike + 1 : 1;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* middle = padded.data() + i + reach;
        // Inside of a shape and far outside the mean is the byte itself.
        alike = middle[reach] == middle[reach - 1] ? alike + 1 : 1;
        if (alike > 2 * reach) continue;
        std::uint32_t sum = 0x8000 + kernel[0] * *middle;
        for (std::size_t k = 1; k <= reach; ++k)
            sum += kernel[k] * (std::uint32_t{middle[k]} + *(middle - k));
        line.start[i * line.stride] = static_cast<std::uint8_t>(std::min<std::uint32_t>(sum >> 16, 255));
    }
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

void runningMean(const Line& line, int width, std::vector<std::uint8_t>& copy) {
    const int half = width / 2;
    const auto count = static_cast<std::size_t>(line.count);
    copy.resize(count);
    for (std::size_t i = 0; i < count; ++i) copy[i] = line.start[i * line.stride];
    std::uint32_t sum = 0;
    for (int i = 0; i < std::min(half, line.count); ++i) sum += copy[static_cast<std::size_t>(i)];
    const auto divisor = static_cast<std::uint32_t>(width);
    for (int i = 0; i < line.count; ++i) {
        if (i + half < line.count) sum += copy[static_cast<std::size_t>(i + half)];
        if (i - half - 1 >= 0) sum -= copy[static_cast<std::size_t>(i - half - 1)];
        line.start[static_cast<std::size_t>(i) * line.stride] =
            static_cast<std::uint8_t>((sum + divisor / 2) / divisor);
    }
}

template <class Filter>
void eachLine(std::uint8_t* bytes, int width, int height, std::size_t bytesPerRow, const Filter& filter) {
    for (int y = 0; y < height; ++y)
        filter(Line{bytes + static_cast<std::size_t>(y) * bytesPerRow, 1, width});
    for (int x = 0; x < width; ++x) filter(Line{bytes + x, bytesPerRow, height});
}

}  // namespace

int gaussianReach(double sigma) noexcept {
    return sigma > 0 ? static_cast<int>(std::ceil(3 * std::min(sigma, kLargestSigma))) : 0;
}

void gaussianBlur(std::uint8_t* bytes, int width, int height, std::size_t bytesPerRow, double sigma) {
    if (!(sigma > 0) || width <= 0 || height <= 0) return;
    std::vector<std::uint8_t> room;
    if (sigma <= kExactUpTo) {
        const auto kernel = kernelOf(sigma);
        eachLine(bytes, width, height, bytesPerRow, [&](const Line& line) { convolve(line, kernel, room); });
        return;
    }
    for (const int mean : meanWidths(std::min(sigma, kLargestSigma))) {
        eachLine(bytes, width, height, bytesPerRow, [&](const Line& line) { runningMean(line, mean, room); });
    }
}

}  // namespace zqcore::platform
