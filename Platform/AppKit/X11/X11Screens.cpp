#include "Platform/AppKit/X11/X11Screens.h"

#include <xcb/randr.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

namespace {

constexpr double kPlainResolution = 96;

std::optional<double> numberIn(std::string_view text) {
    double value = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
    return read.ec == std::errc() && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

// The line "Xft.dpi: 144" of the server's resources.
std::optional<double> resolutionIn(std::string_view resources) {
    constexpr std::string_view kName = "Xft.dpi:";
    while (!resources.empty()) {
        std::string_view line = resources.substr(0, resources.find('\n'));
        resources.remove_prefix(std::min(line.size() + 1, resources.size()));
        if (!line.starts_with(kName)) continue;
        line.remove_prefix(kName.size());
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        return numberIn(line);
    }
    return std::nullopt;
}

int nearest(double value) {
    // Positions and sizes are of 16 bits.
    return static_cast<int>(std::clamp(std::round(value), -32'768.0, 32'767.0));
}

}  // namespace

X11Screens::X11Screens(X11Connection& connection) : connection_(connection) { update(); }

CGFloat X11Screens::findScale() const {
    if (const char* set = std::getenv("GDK_SCALE")) {
        if (const auto value = numberIn(set)) return std::clamp(std::floor(*value), 1.0, 4.0);
    }
    const auto resolution =
        resolutionIn(connection_.text(connection_.root(), connection_.atoms().resourceManager));
    if (!resolution) return 1;
    return std::clamp(std::round(*resolution / kPlainResolution * 4) / 4, 1.0, 4.0);
}

// The primary one first, the others in the server's order.
std::vector<X11Rect> X11Screens::monitors() const {
    xcb_connection_t* c = connection_.get();
    std::vector<X11Rect> found;
    const X11Reply<xcb_randr_get_monitors_reply_t> reply{
        xcb_randr_get_monitors_reply(c, xcb_randr_get_monitors(c, connection_.root(), 1), nullptr)};
    if (reply) {
        for (auto one = xcb_randr_get_monitors_monitors_iterator(reply.get()); one.rem;
             xcb_randr_monitor_info_next(&one)) {
            const X11Rect place{one.data->x, one.data->y, one.data->width, one.data->height};
            if (place.width <= 0 || place.height <= 0) continue;
            found.insert(one.data->primary ? found.begin() : found.end(), place);
        }
    }
    if (!found.empty()) return found;
    const X11Reply<xcb_get_geometry_reply_t> root{
        xcb_get_geometry_reply(c, xcb_get_geometry(c, connection_.root()), nullptr)};
    if (root) return {{0, 0, root->width, root->height}};
    return {{0, 0, connection_.screen().width_in_pixels, connection_.screen().height_in_pixels}};
}

// One rectangle for each desktop; empty where nobody keeps it.
X11Rect X11Screens::workArea() const {
    const auto& atoms = connection_.atoms();
    const auto areas = connection_.numbers(connection_.root(), atoms.workArea, XCB_ATOM_CARDINAL);
    if (areas.size() < 4) return {};
    const auto desktop = connection_.numbers(connection_.root(), atoms.currentDesktop, XCB_ATOM_CARDINAL);
    std::size_t first = desktop.empty() ? 0 : std::size_t{desktop.front()} * 4;
    if (first + 4 > areas.size()) first = 0;
    const auto at = [&](std::size_t index) { return static_cast<int>(areas[first + index]); };
    return {at(0), at(1), at(2), at(3)};
}

bool X11Screens::update() {
    const auto found = monitors();
    const X11Rect area = workArea();
    const CGFloat oldScale = std::exchange(scale_, findScale());
    const X11Rect oldPrimary = std::exchange(primary_, found.front());
    std::vector<DisplayScreen> screens;
    for (const X11Rect& monitor : found) {
        DisplayScreen& screen = screens.emplace_back();
        screen.frame = rect(monitor);
        screen.scale = scale_;
        // The area spans all monitors, so each one has its own part of it; none of it means that the
        // monitor has no panels.
        const CGRect common = CGRectIntersection(screen.frame, rect(area));
        screen.visibleFrame = area.width > 0 && !CGRectIsEmpty(common) ? common : screen.frame;
    }
    const bool changed = screens != screens_ || scale_ != oldScale || !(primary_ == oldPrimary);
    screens_ = std::move(screens);
    return changed;
}

CGPoint X11Screens::point(int x, int y) const noexcept {
    return {(x - primary_.x) / scale_, (primary_.y + primary_.height - y) / scale_};
}

CGRect X11Screens::rect(const X11Rect& pixels) const noexcept {
    return {point(pixels.x, pixels.y + pixels.height), {pixels.width / scale_, pixels.height / scale_}};
}

X11Rect X11Screens::pixels(const CGRect& rect) const noexcept {
    const CGRect place = CGRectStandardize(rect);
    const int left = nearest(primary_.x + CGRectGetMinX(place) * scale_);
    const int right = nearest(primary_.x + CGRectGetMaxX(place) * scale_);
    const int top = nearest(primary_.y + primary_.height - CGRectGetMaxY(place) * scale_);
    const int bottom = nearest(primary_.y + primary_.height - CGRectGetMinY(place) * scale_);
    return {left, top, std::clamp(right - left, 1, 32'767), std::clamp(bottom - top, 1, 32'767)};
}

void X11Screens::pixel(CGPoint point, int& x, int& y) const noexcept {
    // A pixel holds its left and its upper edge, whatever the scale's rounding.
    constexpr double kRounding = 1e-6;
    x = nearest(std::floor(primary_.x + point.x * scale_ + kRounding));
    y = nearest(std::floor(primary_.y + primary_.height - point.y * scale_ + kRounding));
}

}  // namespace zqcore::platform
