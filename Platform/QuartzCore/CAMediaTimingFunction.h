#pragma once

#include <memory>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

inline constexpr std::string_view kCAMediaTimingFunctionLinear = "linear";
inline constexpr std::string_view kCAMediaTimingFunctionEaseIn = "easeIn";
inline constexpr std::string_view kCAMediaTimingFunctionEaseOut = "easeOut";
inline constexpr std::string_view kCAMediaTimingFunctionEaseInEaseOut = "easeInEaseOut";
inline constexpr std::string_view kCAMediaTimingFunctionDefault = "default";

/// The pace of an animation: a cubic Bezier curve from (0, 0) to (1, 1), time along x, progress along y.
/// Threads: any; it never changes. Failure: none; control times outside 0...1 are brought into it.
class ZQ_EXPORT CAMediaTimingFunction final {
  public:
    /// The curve with these control points. Progress may overshoot: y isn't limited.
    [[nodiscard]] static std::shared_ptr<CAMediaTimingFunction> functionWithControlPoints(double x1,
                                                                                          double y1,
                                                                                          double x2,
                                                                                          double y2);
    /// One of the five named curves; an unknown name gives the default curve.
    [[nodiscard]] static std::shared_ptr<CAMediaTimingFunction> functionWithName(std::string_view name);

    /// The progress at `time`, which is brought into 0...1 first.
    [[nodiscard]] double progressAt(double time) const noexcept;

  private:
    CAMediaTimingFunction(double x1, double y1, double x2, double y2) noexcept;
    double x1_;
    double y1_;
    double x2_;
    double y2_;
};

}  // namespace zqcore::platform
