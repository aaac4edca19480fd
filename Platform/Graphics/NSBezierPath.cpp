#include "Platform/Graphics/NSBezierPath.h"

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

std::shared_ptr<NSBezierPath> NSBezierPath::bezierPath() { return makeObject<NSBezierPath>(CGPath::make()); }

std::shared_ptr<NSBezierPath> NSBezierPath::bezierPathWithRect(const CGRect& rect) {
    return makeObject<NSBezierPath>(CGPath::rect(rect));
}

std::shared_ptr<NSBezierPath> NSBezierPath::bezierPathWithRoundedRect(const CGRect& rect, CGFloat xRadius,
                                                                      CGFloat yRadius) {
    return makeObject<NSBezierPath>(CGPath::roundedRect(rect, xRadius, yRadius));
}

std::shared_ptr<NSBezierPath> NSBezierPath::bezierPathWithOvalInRect(const CGRect& rect) {
    return makeObject<NSBezierPath>(CGPath::ellipse(rect));
}

void NSBezierPath::fill() const {
    if (const auto current = NSGraphicsContext::currentContext()) current->cgContext()->fill(*path_);
}

void NSBezierPath::stroke() const {
    const auto current = NSGraphicsContext::currentContext();
    if (!current) return;
    CGContext& context = *current->cgContext();
    context.saveGState();
    context.setLineWidth(lineWidth_);
    context.stroke(*path_);
    context.restoreGState();
}

void NSBezierPath::addClip() const {
    if (const auto current = NSGraphicsContext::currentContext()) current->cgContext()->clipTo(*path_);
}

}  // namespace zqcore::platform
