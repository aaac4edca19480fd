#include "Platform/QuartzCore/CAMediaTimingFunction.h"

#include <algorithm>
#include <cmath>

namespace zqcore::platform {
namespace {

// One coordinate of the curve at parameter `s`; both ends are fixed at 0 and 1.
double bezier(double c1, double c2, double s) {
    const double r = 1 - s;
    return ((3 * r * c1) + (3 * s * c2)) * r * s + s * s * s;
}

double inUnit(double value) {
    return value > 0 ? std::min(value, 1.0) : 0;  // what is no number is 0
}

}  // namespace

CAMediaTimingFunction::CAMediaTimingFunction(double x1, double y1, double x2, double y2) noexcept
    : x1_(inUnit(x1)), y1_(y1), x2_(inUnit(x2)), y2_(y2) {}

std::shared_ptr<CAMediaTimingFunction> CAMediaTimingFunction::functionWithControlPoints(double x1, double y1,
                                                                                        double x2,
                                                                                        double y2) {
    return std::shared_ptr<CAMediaTimingFunction>(new CAMediaTimingFunction(x1, y1, x2, y2));
}

std::shared_ptr<CAMediaTimingFunction> CAMediaTimingFunction::functionWithName(std::string_view name) {
    if (name == kCAMediaTimingFunctionLinear) return functionWithControlPoints(0, 0, 1, 1);
    if (name == kCAMediaTimingFunctionEaseIn) return functionWithControlPoints(0.42, 0, 1, 1);
    if (name == kCAMediaTimingFunctionEaseOut) return functionWithControlPoints(0, 0, 0.58, 1);
    if (name == kCAMediaTimingFunctionEaseInEaseOut) return functionWithControlPoints(0.42, 0, 0.58, 1);
    return functionWithControlPoints(0.25, 0.1, 0.25, 1);
}

double CAMediaTimingFunction::progressAt(double time) const noexcept {
    const double target = inUnit(time);
    if (target == 0 || target == 1) return target;
    // x grows steadily in the parameter, so halving always ends at it; Newton would stall where it is flat.
    double low = 0;
    double high = 1;
    for (int step = 0; step < 52; ++step) {
        const double middle = (low + high) / 2;
        (bezier(x1_, x2_, middle) < target ? low : high) = middle;
    }
    return bezier(y1_, y2_, (low + high) / 2);
}

}  // namespace zqcore::platform
