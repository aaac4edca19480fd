#include "Platform/Graphics/ImageScaler.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace zqcore::platform {

namespace {

constexpr double kLobes = 3;
constexpr std::size_t kChannels = 4;

double lanczos(double x) {
    if (x == 0) return 1;
    if (std::abs(x) >= kLobes) return 0;
    const double angle = std::numbers::pi * x;
    return kLobes * std::sin(angle) * std::sin(angle / kLobes) / (angle * angle);
}

/// What a pixel of the result takes of a run of pixels of the source, along one side.
struct Taps {
    int first;
    std::vector<float> weights;
};

std::vector<Taps> tapsFor(int from, int to) {
    const double ratio = double(from) / to;
    const double widening = std::max(ratio, 1.0);
    std::vector<Taps> all(static_cast<std::size_t>(to));
    for (int i = 0; i < to; ++i) {
        const double center = (i + 0.5) * ratio;
        const int first = std::max(0, static_cast<int>(std::floor(center - kLobes * widening)));
        const int last = std::min(from, static_cast<int>(std::ceil(center + kLobes * widening)));
        Taps& taps = all[static_cast<std::size_t>(i)];
        taps.first = first;
        double sum = 0;
        for (int at = first; at < last; ++at) {
            const double weight = lanczos((at + 0.5 - center) / widening);
            taps.weights.push_back(static_cast<float>(weight));
            sum += weight;
        }
        for (float& weight : taps.weights) weight = static_cast<float>(weight / sum);
    }
    return all;
}

/// A row of the source, shrunk or stretched across, as floats.
void scaleRow(const std::uint32_t* source, const std::vector<Taps>& across, std::vector<float>& unpacked,
              int sourceWidth, float* to) {
    for (int x = 0; x < sourceWidth; ++x) {
        float* pixel = unpacked.data() + static_cast<std::size_t>(x) * kChannels;
        for (std::size_t c = 0; c < kChannels; ++c)
            pixel[c] = static_cast<float>(source[x] >> (8 * c) & 0xff);
    }
    for (const Taps& taps : across) {
        float sum[kChannels] = {};
        const float* from = unpacked.data() + static_cast<std::size_t>(taps.first) * kChannels;
        for (const float weight : taps.weights) {
            for (std::size_t c = 0; c < kChannels; ++c) sum[c] += weight * from[c];
            from += kChannels;
        }
        std::copy_n(sum, kChannels, to);
        to += kChannels;
    }
}

std::uint32_t packed(const float* channels) {
    const auto whole = [](float value, float most) {
        return static_cast<std::uint32_t>(std::clamp(value + 0.5F, 0.0F, most));
    };
    const std::uint32_t alpha = whole(channels[3], 255);
    const auto most = static_cast<float>(alpha);
    return alpha << 24 | whole(channels[2], most) << 16 | whole(channels[1], most) << 8 |
           whole(channels[0], most);
}

}  // namespace

std::shared_ptr<PixelBuffer> scaledPixels(const PixelBuffer& source, int width, int height) {
    auto result = PixelBuffer::make(width, height);
    if (!result) return nullptr;
    const auto across = tapsFor(source.width(), width);
    const auto down = tapsFor(source.height(), height);
    const std::size_t rowFloats = static_cast<std::size_t>(width) * kChannels;
    std::size_t mostRows = 1;
    for (const Taps& taps : down) mostRows = std::max(mostRows, taps.weights.size());
    // Only the rows that one row of the result needs are kept, in a ring.
    std::vector<float> ring(rowFloats * mostRows);
    std::vector<float> unpacked(static_cast<std::size_t>(source.width()) * kChannels);
    std::vector<float> sum(rowFloats);
    const auto ringRow = [&](int y) {
        return ring.data() + static_cast<std::size_t>(y) % mostRows * rowFloats;
    };
    int scaled = 0;
    for (int y = 0; y < height; ++y) {
        const Taps& taps = down[static_cast<std::size_t>(y)];
        const int end = taps.first + static_cast<int>(taps.weights.size());
        for (scaled = std::max(scaled, taps.first); scaled < end; ++scaled) {
            scaleRow(source.row(scaled), across, unpacked, source.width(), ringRow(scaled));
        }
        std::ranges::fill(sum, 0.0F);
        for (std::size_t i = 0; i < taps.weights.size(); ++i) {
            const float* row = ringRow(taps.first + static_cast<int>(i));
            const float weight = taps.weights[i];
            for (std::size_t at = 0; at < rowFloats; ++at) sum[at] += weight * row[at];
        }
        for (int x = 0; x < width; ++x) {
            result->row(y)[x] = packed(sum.data() + static_cast<std::size_t>(x) * kChannels);
        }
    }
    return result;
}

}  // namespace zqcore::platform
