#include "Platform/Graphics/NSFont.h"

#include <algorithm>
#include <cmath>

#include "Platform/Graphics/Linux/FontMap.h"

namespace zqcore::platform {

namespace {

constexpr CGFloat kLargestSize = 10000;

/// The two faces that the family has.
const FontRatios& ratiosFor(CGFloat weight) {
    static const FontRatios regular = fontRatios(NSFontWeightRegular);
    static const FontRatios bold = fontRatios(NSFontWeightBold);
    return weight >= NSFontWeightSemibold ? bold : regular;
}

}  // namespace

NSFont::NSFont(CGFloat size, CGFloat weight) : size_(size), weight_(weight) {
    const FontRatios& ratios = ratiosFor(weight);
    ascender_ = ratios.ascender * size;
    descender_ = -ratios.descender * size;
    leading_ = ratios.leading * size;
}

std::shared_ptr<NSFont> NSFont::systemFontOfSize(CGFloat size, CGFloat weight) {
    const CGFloat used = std::isfinite(size) && size > 0 ? std::min(size, kLargestSize) : systemFontSize();
    return makeObject<NSFont>(used, weight);
}

std::string NSFont::fontName() const {
    return weight_ >= NSFontWeightSemibold ? "DejaVu Sans Bold" : "DejaVu Sans";
}

}  // namespace zqcore::platform
