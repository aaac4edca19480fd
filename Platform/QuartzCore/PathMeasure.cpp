#include "Platform/QuartzCore/PathMeasure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "Platform/Graphics/CGPath.h"
#include "Platform/QuartzCore/AnimatedValue.h"

namespace zqcore::platform {
namespace {

constexpr int kSteps = 32;  // lines a curve is measured by

/// A line or curve; of a line only the ends count. `lengths[i]` is the length up to parameter i / kSteps.
struct Segment {
    std::array<CGPoint, 4> points;
    bool curved = false;
    std::array<CGFloat, kSteps + 1> lengths{};

    [[nodiscard]] CGFloat length() const { return lengths[kSteps]; }
};

using Points = std::array<CGPoint, 4>;

CGFloat distance(CGPoint a, CGPoint b) { return std::hypot(b.x - a.x, b.y - a.y); }

// The curve cut at `t`: first half and second half (de Casteljau).
std::pair<Points, Points> split(const Points& p, CGFloat t) {
    const CGPoint a = between(p[0], p[1], t);
    const CGPoint b = between(p[1], p[2], t);
    const CGPoint c = between(p[2], p[3], t);
    const CGPoint d = between(a, b, t);
    const CGPoint e = between(b, c, t);
    const CGPoint middle = between(d, e, t);
    return {{p[0], a, d, middle}, {middle, e, c, p[3]}};
}

Segment measured(const Points& points, bool curved) {
    Segment segment{points, curved};
    CGPoint last = points[0];
    for (int step = 1; step <= kSteps; ++step) {
        const CGFloat t = static_cast<CGFloat>(step) / kSteps;
        const CGPoint next = curved ? split(points, t).first[3] : between(points[0], points[3], t);
        const auto place = static_cast<std::size_t>(step);
        segment.lengths[place] = segment.lengths[place - 1] + distance(last, next);
        last = next;
    }
    return segment;
}

std::vector<Segment> segmentsOf(const CGPath& path) {
    std::vector<Segment> segments;
    CGPoint current{};
    CGPoint start{};
    const auto line = [&](CGPoint to) {
        segments.push_back(measured({current, current, to, to}, false));
        current = to;
    };
    for (const CGPath::Element& element : path.elements()) {
        switch (element.kind) {
            case CGPath::ElementKind::moveTo:
                start = current = element.points[0];
                break;
            case CGPath::ElementKind::lineTo:
                line(element.points[0]);
                break;
            case CGPath::ElementKind::curveTo:
                segments.push_back(
                    measured({current, element.points[0], element.points[1], element.points[2]}, true));
                current = element.points[2];
                break;
            case CGPath::ElementKind::closeSubpath:
                line(start);
                break;
        }
    }
    return segments;
}

// The parameter at which a segment has run `length`.
CGFloat parameterAt(const Segment& segment, CGFloat length) {
    const auto above = std::lower_bound(segment.lengths.begin(), segment.lengths.end(), length);
    if (above == segment.lengths.begin()) return 0;
    if (above == segment.lengths.end()) return 1;
    const auto step = static_cast<CGFloat>(above - segment.lengths.begin());
    const CGFloat below = *(above - 1);
    return (step - 1 + (length - below) / (*above - below)) / kSteps;
}

}  // namespace

std::shared_ptr<CGPath> partOfPath(const CGPath& path, CGFloat start, CGFloat end) {
    const auto part = CGPath::make();
    const std::vector<Segment> segments = segmentsOf(path);
    CGFloat whole = 0;
    for (const Segment& segment : segments) whole += segment.length();
    const CGFloat from = start * whole;
    const CGFloat to = end * whole;
    CGFloat passed = 0;
    for (const Segment& segment : segments) {
        const CGFloat begins = passed;
        passed += segment.length();
        if (passed <= from || begins >= to || segment.length() == 0) continue;
        const CGFloat first = begins < from ? parameterAt(segment, from - begins) : 0;
        const CGFloat last = passed > to ? parameterAt(segment, to - begins) : 1;
        Points points = segment.points;
        if (!segment.curved) {
            points = {between(segment.points[0], segment.points[3], first),
                      {},
                      {},
                      between(segment.points[0], segment.points[3], last)};
        } else {
            if (last < 1) points = split(points, last).first;
            if (first > 0) points = split(points, first / last).second;
        }
        if (part->isEmpty() || distance(part->currentPoint(), points[0]) > 1e-9) part->moveTo(points[0]);
        if (segment.curved) {
            part->curveTo(points[1], points[2], points[3]);
        } else {
            part->lineTo(points[3]);
        }
    }
    return part;
}

}  // namespace zqcore::platform
