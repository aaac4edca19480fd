#include "Platform/AppKit/X11/X11Window.h"

#include <unistd.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/X11/X11Pixels.h"
#include "Platform/Foundation/NSProcessInfo.h"

namespace zqcore::platform {

namespace {

constexpr std::uint32_t kAllDesktops = 0xFFFFFFFF;
// No Expose: the server paints the background by itself.
constexpr std::uint32_t kEvents = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                  XCB_EVENT_MASK_POINTER_MOTION | XCB_EVENT_MASK_LEAVE_WINDOW |
                                  XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                                  XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_FOCUS_CHANGE;

constexpr unsigned kPanelKind = NSWindowStyleMaskTitled | NSWindowStyleMaskNonactivatingPanel;

/// The part that lies within a picture of that size.
DisplaySurface::Part cut(const DisplaySurface::Part& part, int width, int height) {
    const int x = std::clamp(part.x, 0, width);
    const int y = std::clamp(part.y, 0, height);
    return {x, y, std::clamp(part.x + part.width, x, width) - x,
            std::clamp(part.y + part.height, y, height) - y};
}

bool isManagedBy(const DisplayWindowState& state) {
    return state.level <= NSNormalWindowLevel &&
           (state.styleMask & kPanelKind) != NSWindowStyleMaskNonactivatingPanel;
}

}  // namespace

X11Window::X11Window(X11Connection& connection, const X11Screens& screens, const DisplayWindowState& state)
    : connection_(connection),
      screens_(screens),
      state_(state),
      place_(screens.pixels(state.frame)),
      managed_(isManagedBy(state)) {
    xcb_connection_t* c = connection_.get();
    id_ = xcb_generate_id(c);
    top = id_;
    // Background and border of a depth other than the root's must be given, or the server refuses. Bits keep
    // their place at the upper left while the window grows.
    const std::uint32_t values[] = {
        0, 0, XCB_GRAVITY_NORTH_WEST, managed_ ? 0U : 1U, kEvents, connection_.colormap()};
    xcb_create_window(c, connection_.depth(), id_, connection_.root(), static_cast<std::int16_t>(place_.x),
                      static_cast<std::int16_t>(place_.y), static_cast<std::uint16_t>(place_.width),
                      static_cast<std::uint16_t>(place_.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      connection_.visual(),
                      XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_BIT_GRAVITY |
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP,
                      values);
    describe();
}

X11Window::~X11Window() {
    if (gc_ != 0) xcb_free_gc(connection_.get(), gc_);
    if (pixmap_ != 0) xcb_free_pixmap(connection_.get(), pixmap_);
    xcb_destroy_window(connection_.get(), id_);
}

bool X11Window::joinsAllSpaces() const noexcept {
    return (state_.collectionBehavior & NSWindowCollectionBehaviorCanJoinAllSpaces) != 0;
}

void X11Window::describe() {
    const auto& atoms = connection_.atoms();
    const auto& process = NSProcessInfo::processInfo();
    connection_.setNumbers(id_, atoms.pid, XCB_ATOM_CARDINAL,
                           {static_cast<std::uint32_t>(process.processIdentifier())});
    // Instance and class, each with its end.
    const std::string name = process.processName();
    connection_.setText(id_, atoms.wmClass, XCB_ATOM_STRING, name + '\0' + name + '\0');
    std::string host(256, '\0');
    if (gethostname(host.data(), host.size() - 1) == 0)
        connection_.setText(id_, XCB_ATOM_WM_CLIENT_MACHINE, XCB_ATOM_STRING, host.c_str());
    const bool titled = (state_.styleMask & NSWindowStyleMaskTitled) != 0;
    const bool utility = (state_.styleMask & NSWindowStyleMaskUtilityWindow) != 0;
    connection_.setNumbers(id_, atoms.type, XCB_ATOM_ATOM,
                           {!managed_                             ? atoms.typeTooltip
                            : utility                             ? atoms.typeUtility
                            : state_.level == NSNormalWindowLevel ? atoms.typeNormal
                                                                  : atoms.typeUtility});
    setTitle();
    setOpacity();
    setMouse();
    setShadow();
    if (!managed_) return;
    connection_.setNumbers(id_, atoms.wmProtocols, XCB_ATOM_ATOM, {atoms.wmDeleteWindow, atoms.ping});
    // WM_HINTS: the input field alone, in its place of nine. It takes the keys when told to.
    connection_.setNumbers(
        id_, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS,
        {1, (state_.styleMask & kPanelKind) == NSWindowStyleMaskTitled ? 1U : 0U, 1, 0, 0, 0, 0, 0, 0});
    // Showing is not focusing: a window with time 0 isn't focused when it appears.
    connection_.setNumbers(id_, atoms.userTime, XCB_ATOM_CARDINAL, {0});
    // Flags 2: the field of decorations counts.
    if (!titled) connection_.setNumbers(id_, atoms.motifHints, atoms.motifHints, {2, 0, 0, 0, 0});
    setSpaces();
    setPlaceHint();
    setLevelState();
}

void X11Window::setTitle() const {
    connection_.setText(id_, connection_.atoms().name, connection_.atoms().utf8String, state_.title);
    connection_.setText(id_, XCB_ATOM_WM_NAME, connection_.atoms().utf8String, state_.title);
}

void X11Window::setOpacity() const {
    const double alpha = std::clamp(state_.alpha, 0.0, 1.0);
    if (alpha >= 1) {
        xcb_delete_property(connection_.get(), id_, connection_.atoms().opacity);
    } else {
        connection_.setNumbers(id_, connection_.atoms().opacity, XCB_ATOM_CARDINAL,
                               {static_cast<std::uint32_t>(alpha * 0xFFFFFFFF)});
    }
}

// Window and compositing managers leave out the shadow of a window that tells of having one in its own
// pixels, be it of no width.
void X11Window::setShadow() const {
    const xcb_atom_t extents = connection_.atoms().frameExtents;
    if (state_.hasShadow) {
        xcb_delete_property(connection_.get(), id_, extents);
    } else {
        connection_.setNumbers(id_, extents, XCB_ATOM_CARDINAL, {0, 0, 0, 0});
    }
}

// The state of a window that isn't shown yet is ours to write; afterwards the manager keeps it.
void X11Window::setLevelState() const {
    if (!managed_) return;
    const auto& atoms = connection_.atoms();
    const bool above = state_.level > NSNormalWindowLevel;
    const bool below = state_.level < NSNormalWindowLevel;
    if (shown) {
        constexpr std::uint32_t kApplication = 1;
        connection_.askManager(id_, atoms.state, {above ? 1U : 0U, atoms.stateAbove, 0, kApplication, 0});
        connection_.askManager(id_, atoms.state, {below ? 1U : 0U, atoms.stateBelow, 0, kApplication, 0});
    } else if (above || below) {
        connection_.setNumbers(id_, atoms.state, XCB_ATOM_ATOM,
                               {above ? atoms.stateAbove : atoms.stateBelow});
    } else {
        xcb_delete_property(connection_.get(), id_, atoms.state);
    }
}

void X11Window::setSpaces() const {
    if (!managed_) return;
    const auto& atoms = connection_.atoms();
    if (shown) {
        const std::uint32_t desktop = joinsAllSpaces() ? kAllDesktops : space;
        connection_.askManager(id_, atoms.desktop, {desktop, 1, 0, 0, 0});
    } else if (joinsAllSpaces()) {
        connection_.setNumbers(id_, atoms.desktop, XCB_ATOM_CARDINAL, {kAllDesktops});
    } else {
        xcb_delete_property(connection_.get(), id_, atoms.desktop);
    }
}

// Clicks pass through an empty input shape.
void X11Window::setMouse() const {
    xcb_connection_t* c = connection_.get();
    xcb_xfixes_region_t region = XCB_XFIXES_REGION_NONE;
    if (state_.ignoresMouse) {
        region = xcb_generate_id(c);
        xcb_xfixes_create_region(c, region, 0, nullptr);
    }
    xcb_xfixes_set_window_shape_region(c, id_, XCB_SHAPE_SK_INPUT, 0, 0, region);
    if (region != XCB_XFIXES_REGION_NONE) xcb_xfixes_destroy_region(c, region);
}

// WM_NORMAL_HINTS (ICCCM 4.1.2.3): place and size as the program wants them, the place being the window's own
// whatever frame it gets; one that can't be resized has its size as least and greatest.
void X11Window::setPlaceHint() const {
    if (!managed_) return;
    constexpr std::uint32_t kUserPlace = 1, kUserSize = 2, kLeast = 16, kGreatest = 32, kGravity = 512;
    const bool fixed = (state_.styleMask & NSWindowStyleMaskResizable) == 0;
    const auto width = static_cast<std::uint32_t>(place_.width);
    const auto height = static_cast<std::uint32_t>(place_.height);
    const auto x = static_cast<std::uint32_t>(place_.x);
    const auto y = static_cast<std::uint32_t>(place_.y);
    connection_.setNumbers(
        id_, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
        {kUserPlace | kUserSize | kGravity | (fixed ? kLeast | kGreatest : 0U), x, y, width, height,
         fixed ? width : 1, fixed ? height : 1, width, height, 0, 0, 0, 0, 0, 0, 0, 0, XCB_GRAVITY_STATIC});
}

void X11Window::update(const DisplayWindowState& state) {
    const DisplayWindowState old = std::exchange(state_, state);
    if (old.title != state.title) setTitle();
    if (old.ignoresMouse != state.ignoresMouse) setMouse();
    if (old.hasShadow != state.hasShadow) setShadow();
    if (old.level != state.level) setLevelState();
    if (old.alpha != state.alpha) {
        setOpacity();
        // Without blending only the step from and to nothing shows.
        if ((old.alpha > 0) != (state.alpha > 0)) applyShape();
    }
    if ((old.collectionBehavior ^ state.collectionBehavior) & NSWindowCollectionBehaviorCanJoinAllSpaces)
        setSpaces();
    if (old.frame != state.frame) placeAnew();
}

void X11Window::placeAnew() {
    const X11Rect place = screens_.pixels(state_.frame);
    if (place == place_) return;
    xcb_connection_t* c = connection_.get();
    if (place.width != place_.width || place.height != place_.height) {
        // The old pixels would be repeated as tiles; what is drawn stays until the new ones come.
        const std::uint32_t none = XCB_BACK_PIXMAP_NONE;
        xcb_change_window_attributes(c, id_, XCB_CW_BACK_PIXMAP, &none);
    }
    place_ = place;
    setPlaceHint();
    const std::uint32_t values[] = {static_cast<std::uint32_t>(place.x), static_cast<std::uint32_t>(place.y),
                                    static_cast<std::uint32_t>(place.width),
                                    static_cast<std::uint32_t>(place.height)};
    placedBy_ = xcb_configure_window(c, id_,
                                     XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                                         XCB_CONFIG_WINDOW_HEIGHT,
                                     values)
                    .sequence;
}

bool X11Window::moved(const X11Rect& place) {
    if (place == place_) return false;
    if (place.width != place_.width || place.height != place_.height) {
        const std::uint32_t none = XCB_BACK_PIXMAP_NONE;
        xcb_change_window_attributes(connection_.get(), id_, XCB_CW_BACK_PIXMAP, &none);
    }
    place_ = place;
    state_.frame = screens_.rect(place);
    return true;
}

bool X11Window::placedElsewhere() {
    if (screens_.pixels(state_.frame) == place_) return false;
    state_.frame = screens_.rect(place_);
    return true;
}

void X11Window::map() {
    if (std::exchange(mapped_, true)) return;
    setSpaces();
    xcb_map_window(connection_.get(), id_);
}

void X11Window::unmap() {
    if (!std::exchange(mapped_, false)) return;
    viewable = false;
    wantsFocus = false;
    xcb_unmap_window(connection_.get(), id_);
    if (!managed_) return;
    // The synthetic notice that tells a manager of the withdrawal (ICCCM 4.1.4).
    xcb_unmap_notify_event_t notice{};
    notice.response_type = XCB_UNMAP_NOTIFY;
    notice.event = connection_.root();
    notice.window = id_;
    xcb_send_event(connection_.get(), 0, connection_.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&notice));
}

// A pixmap of the window's size; false if it has that one already.
bool X11Window::makePixmap() {
    if (pixmap_ != 0 && pixmapWidth_ == place_.width && pixmapHeight_ == place_.height) return false;
    xcb_connection_t* c = connection_.get();
    if (pixmap_ != 0) xcb_free_pixmap(c, pixmap_);
    pixmapWidth_ = place_.width;
    pixmapHeight_ = place_.height;
    pixmap_ = xcb_generate_id(c);
    xcb_create_pixmap(c, connection_.depth(), pixmap_, id_, static_cast<std::uint16_t>(pixmapWidth_),
                      static_cast<std::uint16_t>(pixmapHeight_));
    if (gc_ == 0) {
        gc_ = xcb_generate_id(c);
        const std::uint32_t black = 0;
        xcb_create_gc(c, gc_, pixmap_, XCB_GC_FOREGROUND, &black);
    }
    return true;
}

void X11Window::present(const DisplaySurface& surface) {
    if (!surface.pixels || surface.width <= 0 || surface.height <= 0) return;
    xcb_connection_t* c = connection_.get();
    const bool whole = makePixmap() || !surface.changed;
    const DisplaySurface::Part part =
        cut(whole ? DisplaySurface::Part{0, 0, surface.width, surface.height} : *surface.changed,
            std::min(surface.width, pixmapWidth_), std::min(surface.height, pixmapHeight_));
    if (whole && (surface.width < pixmapWidth_ || surface.height < pixmapHeight_)) {
        const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(pixmapWidth_),
                                  static_cast<std::uint16_t>(pixmapHeight_)};
        xcb_poly_fill_rectangle(c, pixmap_, gc_, 1, &all);
    }
    upload(surface, part);
    shape_.clear();
    if (!state_.opaque && !connection_.blends()) shape_ = x11ShapeOf(surface, pixmapWidth_, pixmapHeight_);
    applyShape();
    xcb_change_window_attributes(c, id_, XCB_CW_BACK_PIXMAP, &pixmap_);
    // A side of 0 would mean all that is left of the window.
    if (part.width > 0 && part.height > 0)
        xcb_clear_area(c, 0, id_, static_cast<std::int16_t>(part.x), static_cast<std::int16_t>(part.y),
                       whole ? 0 : static_cast<std::uint16_t>(part.width),
                       whole ? 0 : static_cast<std::uint16_t>(part.height));
}

// In bands of rows, as a request has a greatest length.
void X11Window::upload(const DisplaySurface& surface, const DisplaySurface::Part& part) const {
    if (part.width <= 0) return;
    xcb_connection_t* c = connection_.get();
    const auto width = static_cast<std::size_t>(part.width);
    const std::size_t rowBytes = width * 4;
    const std::size_t most =
        std::min<std::size_t>(std::size_t{xcb_get_maximum_request_length(c)} * 4, 1 << 22);
    const int rows = std::max(1, static_cast<int>((most - 64) / rowBytes));
    const bool blends = connection_.blends();
    std::vector<std::uint32_t> band;
    for (int first = part.y; first < part.y + part.height; first += rows) {
        const int count = std::min(rows, part.y + part.height - first);
        band.clear();
        for (int y = first; y < first + count; ++y) {
            const auto* row = surface.pixels + static_cast<std::size_t>(y) * (surface.bytesPerRow / 4);
            appendX11Row(band, {row + part.x, width},
                         state_.opaque ? X11Alpha::opaque
                         : blends      ? X11Alpha::blended
                                       : X11Alpha::cut);
        }
        xcb_put_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap_, gc_, static_cast<std::uint16_t>(width),
                      static_cast<std::uint16_t>(count), static_cast<std::int16_t>(part.x),
                      static_cast<std::int16_t>(first), 0, connection_.depth(),
                      static_cast<std::uint32_t>(band.size() * 4),
                      reinterpret_cast<const std::uint8_t*>(band.data()));
    }
}

// The bounding shape stands in for the blending that nobody does.
void X11Window::applyShape() {
    xcb_connection_t* c = connection_.get();
    const bool cut = !connection_.blends() && (state_.alpha <= 0 || (!state_.opaque && pixmap_ != 0));
    if (cut) {
        const std::span<const xcb_rectangle_t> shape(shape_.data(), state_.alpha > 0 ? shape_.size() : 0);
        shaped_ = true;
        xcb_shape_rectangles(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_YX_BANDED, id_, 0,
                             0, static_cast<std::uint32_t>(shape.size()), shape.data());
    } else if (std::exchange(shaped_, false)) {
        xcb_shape_mask(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, id_, 0, 0, XCB_NONE);
    }
}

bool X11Window::isOutdated(std::uint32_t sequence) const noexcept {
    return static_cast<std::int32_t>(sequence - placedBy_) < 0;
}

}  // namespace zqcore::platform
