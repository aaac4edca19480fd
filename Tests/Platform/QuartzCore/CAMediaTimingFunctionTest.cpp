#include "Platform/QuartzCore/CAMediaTimingFunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace zqcore::platform {
namespace {

TEST(CAMediaTimingFunctionTest, RunsThroughItsKnownPoints) {
    struct Case {
        std::shared_ptr<CAMediaTimingFunction> curve;
        double time, progress;
    };
    const auto named = CAMediaTimingFunction::functionWithName;
    const auto overshooting = CAMediaTimingFunction::functionWithControlPoints(0.25, 1.5, 0.5, 1.0);
    const Case cases[] = {
        {named(kCAMediaTimingFunctionLinear), 0.3, 0.3},
        {named(kCAMediaTimingFunctionEaseIn), 0.5, 0.315357},
        {named(kCAMediaTimingFunctionEaseOut), 0.5, 0.684643},
        {named(kCAMediaTimingFunctionEaseInEaseOut), 0.5, 0.5},
        {named(kCAMediaTimingFunctionDefault), 0.5, 0.802403},
        {named("no such curve"), 0.5, 0.802403},
        {overshooting, 0.5, 1.079977},
        {overshooting, 0, 0},
        {overshooting, 1, 1},
        {overshooting, -3, 0},
        {overshooting, 7, 1},
        {overshooting, std::numeric_limits<double>::quiet_NaN(), 0},
        // Control times are brought into 0...1, progress isn't.
        {CAMediaTimingFunction::functionWithControlPoints(-5, 0, 9, 1), 0.5, 0.5},
        // Flat in the middle, where a tangent leads nowhere.
        {CAMediaTimingFunction::functionWithControlPoints(1, 0, 0, 1), 0.5, 0.5},
    };
    for (const auto& [curve, time, progress] : cases) {
        EXPECT_NEAR(curve->progressAt(time), progress, 5e-6) << "case " << (&time - &cases[0].time);
    }
    double peak = 0;
    for (int step = 0; step <= 1000; ++step) peak = std::max(peak, overshooting->progressAt(step / 1000.0));
    EXPECT_NEAR(peak, 1.08, 0.0005);
}

}  // namespace
}  // namespace zqcore::platform
