#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Clock.h"
#include "Platform/Graphics/CGAffineTransform.h"
#include "Platform/Graphics/CGColor.h"
#include "Platform/QuartzCore/CAMediaTimingFunction.h"
#include "Platform/QuartzCore/CATransaction.h"

// Private to the layers: a value that is set at once and shown on its way. Nothing is stepped; what shows is
// a function of the clock.
namespace zqcore::platform {

// The value `progress` of the way from `a` to `b`; the progress may lie outside 0...1.
inline CGFloat between(CGFloat a, CGFloat b, double progress) noexcept { return a + (b - a) * progress; }
inline CGPoint between(CGPoint a, CGPoint b, double progress) noexcept {
    return {between(a.x, b.x, progress), between(a.y, b.y, progress)};
}
inline CGSize between(CGSize a, CGSize b, double progress) noexcept {
    return {between(a.width, b.width, progress), between(a.height, b.height, progress)};
}
inline CGRect between(const CGRect& a, const CGRect& b, double progress) noexcept {
    return {between(a.origin, b.origin, progress), between(a.size, b.size, progress)};
}
inline CGAffineTransform between(const CGAffineTransform& a, const CGAffineTransform& b, double p) noexcept {
    return {between(a.a, b.a, p), between(a.b, b.b, p),   between(a.c, b.c, p),
            between(a.d, b.d, p), between(a.tx, b.tx, p), between(a.ty, b.ty, p)};
}
// Channels go multiplied by alpha: on the way from clear a colour keeps its hue.
inline CGColor between(const CGColor& a, const CGColor& b, double progress) noexcept {
    const CGFloat alpha = std::clamp(between(a.alpha, b.alpha, progress), 0.0, 1.0);
    if (alpha == 0) return CGColor::clear();
    const auto channel = [&](CGFloat from, CGFloat to) {
        return std::clamp(between(from * a.alpha, to * b.alpha, progress) / alpha, 0.0, 1.0);
    };
    return {channel(a.red, b.red), channel(a.green, b.green), channel(a.blue, b.blue), alpha};
}

template <class T>
class AnimatedValue {
  public:
    explicit AnimatedValue(T value = {}) : value_(std::move(value)) {}

    [[nodiscard]] const T& value() const noexcept { return value_; }

    [[nodiscard]] T shownAt(Clock::Instant now) const {
        if (!run_ || now >= run_->end) return value_;
        const double whole = static_cast<double>((run_->end - run_->start).count());
        const double time = static_cast<double>((now - run_->start).count()) / whole;
        return between(run_->from, value_, run_->timing->progressAt(time));
    }

    /// Sets the value; with terms what shows runs to it from what shows now. Gives the end of the run, the
    /// beginning of time without one. A value that is set already changes nothing.
    Clock::Instant set(const T& value, const std::optional<CAAnimationTerms>& terms) {
        if (value == value_) return {};
        if (!terms || !(terms->duration > 0)) {
            value_ = value;
            run_.reset();
            return {};
        }
        const Clock::Instant now = Clock::current().now();
        const std::chrono::duration<double> duration(std::min(terms->duration, 1e9));
        auto run = std::make_unique<Run>(Run{
            shownAt(now), now, now + std::chrono::duration_cast<Clock::Duration>(duration),
            terms->timingFunction ? terms->timingFunction
                                  : CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionDefault)});
        value_ = value;
        run_ = std::move(run);
        return run_->end;
    }

    void stop() noexcept { run_.reset(); }
    [[nodiscard]] Clock::Instant end() const noexcept { return run_ ? run_->end : Clock::Instant{}; }

  private:
    struct Run {
        T from;
        Clock::Instant start;
        Clock::Instant end;
        std::shared_ptr<CAMediaTimingFunction> timing;
    };

    T value_;
    std::unique_ptr<Run> run_;
};

}  // namespace zqcore::platform
