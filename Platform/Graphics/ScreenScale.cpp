#include "Platform/Graphics/ScreenScale.h"

#include <atomic>
#include <cmath>

namespace zqcore::platform {

namespace {

std::atomic<double> mainScale{1};

}  // namespace

double mainScreenScale() noexcept { return mainScale.load(std::memory_order_relaxed); }

void setMainScreenScale(double scale) noexcept {
    if (std::isfinite(scale) && scale > 0) mainScale.store(scale, std::memory_order_relaxed);
}

}  // namespace zqcore::platform
