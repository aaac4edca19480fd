#include "Platform/AppKit/X11/X11WindowList.h"

#include <xcb/composite.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <ranges>
#include <string>
#include <utility>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

namespace {

// What is known of a foreign window, asked for all windows before the first answer is read.
struct Asked {
    xcb_window_t window;
    xcb_get_window_attributes_cookie_t attributes;
    xcb_get_geometry_cookie_t geometry;
    xcb_translate_coordinates_cookie_t origin;
    xcb_get_property_cookie_t wmClass, pid, name, oldName;
};

std::string textIn(const xcb_get_property_reply_t* reply) {
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply)),
            static_cast<std::size_t>(xcb_get_property_value_length(reply))};
}

// The second of the two names of WM_CLASS, which is the application's.
std::string classIn(const std::string& names) {
    const auto first = names.find('\0');
    if (first == std::string::npos) return names;
    return names.substr(first + 1, names.find('\0', first + 1) - first - 1);
}

// Source over destination, both multiplied by their alpha; `alpha` goes over the source.
std::uint32_t over(std::uint32_t destination, std::uint32_t source, std::uint32_t alpha) {
    std::uint32_t out = 0;
    const std::uint32_t opaque = ((source >> 24) * alpha + 127) / 255;
    for (const int shift : {24, 16, 8, 0}) {
        const std::uint32_t above = (((source >> shift) & 0xFF) * alpha + 127) / 255;
        const std::uint32_t below = (((destination >> shift) & 0xFF) * (255 - opaque) + 127) / 255;
        out |= std::min(255U, above + below) << shift;
    }
    return out;
}

}  // namespace

const X11Window* X11WindowList::ownWindow(xcb_window_t id) const {
    const auto found = std::ranges::find_if(own_, [&](const auto& one) { return one->id() == id; });
    return found == own_.end() ? nullptr : found->get();
}

// Unmanaged windows lie in no manager's list, and over all that do.
std::vector<xcb_window_t> X11WindowList::frontToBack() const {
    std::vector<xcb_window_t> found;
    if (connection_.supports(connection_.atoms().clientListStacking)) {
        for (const auto& window : own_ | std::views::reverse)
            if (!window->isManaged() && window->isMapped()) found.push_back(window->id());
        const auto clients =
            connection_.numbers(connection_.root(), connection_.atoms().clientListStacking, XCB_ATOM_WINDOW);
        found.insert(found.end(), clients.rbegin(), clients.rend());
        return found;
    }
    const X11Reply<xcb_query_tree_reply_t> tree{xcb_query_tree_reply(
        connection_.get(), xcb_query_tree(connection_.get(), connection_.root()), nullptr)};
    if (!tree) return found;
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    found.assign(children, children + xcb_query_tree_children_length(tree.get()));
    std::ranges::reverse(found);
    return found;
}

DisplayWindowInfo X11WindowList::describe(const X11Window& window) const {
    DisplayWindowInfo info;
    info.number = window.number();
    info.ownerName = NSProcessInfo::processInfo().processName();
    info.ownerProcess = NSProcessInfo::processInfo().processIdentifier();
    if (!window.state().title.empty()) info.name = window.state().title;
    info.frame = window.state().frame;
    info.level = window.state().level;
    info.onScreen = window.isMapped();
    return info;
}

std::vector<DisplayWindowInfo> X11WindowList::describe(const std::vector<xcb_window_t>& windows) const {
    xcb_connection_t* c = connection_.get();
    const auto& atoms = connection_.atoms();
    const auto property = [&](xcb_window_t window, xcb_atom_t atom) {
        return xcb_get_property(c, 0, window, atom, XCB_ATOM_ANY, 0, 1024);
    };
    std::vector<Asked> asked;
    asked.reserve(windows.size());
    for (const xcb_window_t window : windows) {
        asked.push_back({window, xcb_get_window_attributes(c, window), xcb_get_geometry(c, window),
                         xcb_translate_coordinates(c, window, connection_.root(), 0, 0),
                         property(window, atoms.wmClass), property(window, atoms.pid),
                         property(window, atoms.name), property(window, XCB_ATOM_WM_NAME)});
    }
    std::vector<DisplayWindowInfo> list;
    for (const Asked& one : asked) {
        const X11Reply<xcb_get_window_attributes_reply_t> attributes{
            xcb_get_window_attributes_reply(c, one.attributes, nullptr)};
        const X11Reply<xcb_get_geometry_reply_t> geometry{xcb_get_geometry_reply(c, one.geometry, nullptr)};
        const X11Reply<xcb_translate_coordinates_reply_t> origin{
            xcb_translate_coordinates_reply(c, one.origin, nullptr)};
        const X11Reply<xcb_get_property_reply_t> wmClass{xcb_get_property_reply(c, one.wmClass, nullptr)};
        const X11Reply<xcb_get_property_reply_t> pid{xcb_get_property_reply(c, one.pid, nullptr)};
        const X11Reply<xcb_get_property_reply_t> name{xcb_get_property_reply(c, one.name, nullptr)};
        const X11Reply<xcb_get_property_reply_t> oldName{xcb_get_property_reply(c, one.oldName, nullptr)};
        if (!attributes || !geometry || !origin || attributes->_class == XCB_WINDOW_CLASS_INPUT_ONLY)
            continue;
        DisplayWindowInfo& info = list.emplace_back();
        info.number = static_cast<DisplayWindowNumber>(one.window);
        info.ownerName = classIn(textIn(wmClass.get()));
        if (pid && pid->format == 32 && xcb_get_property_value_length(pid.get()) >= 4)
            std::memcpy(&info.ownerProcess, xcb_get_property_value(pid.get()), 4);
        std::string title = textIn(name.get());
        if (title.empty()) title = textIn(oldName.get());
        if (!title.empty()) info.name = std::move(title);
        info.frame = screens_.rect({origin->dst_x, origin->dst_y, geometry->width, geometry->height});
        info.level = attributes->override_redirect != 0 ? NSPopUpMenuWindowLevel : NSNormalWindowLevel;
        info.onScreen = attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }
    return list;
}

std::vector<DisplayWindowInfo> X11WindowList::list(bool onScreenOnly) const {
    std::vector<DisplayWindowInfo> found = describe(frontToBack());
    for (DisplayWindowInfo& info : found)
        if (const X11Window* own = ownWindow(static_cast<xcb_window_t>(info.number))) info = describe(*own);
    for (const auto& window : own_ | std::views::reverse) {
        if (std::ranges::find(found, window->number(), &DisplayWindowInfo::number) == found.end())
            found.push_back(describe(*window));
    }
    std::vector<DisplayWindowInfo> hidden;
    const auto isHidden = [](const DisplayWindowInfo& info) { return !info.onScreen; };
    if (!onScreenOnly) std::ranges::copy_if(found, std::back_inserter(hidden), isHidden);
    std::erase_if(found, isHidden);
    found.insert(found.end(), hidden.begin(), hidden.end());
    return found;
}

xcb_window_t X11WindowList::topOf(xcb_window_t window) const {
    for (int depth = 0; depth < 8; ++depth) {
        const X11Reply<xcb_query_tree_reply_t> tree{
            xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), window), nullptr)};
        if (!tree || tree->parent == connection_.root() || tree->parent == XCB_NONE) return window;
        window = tree->parent;
    }
    return window;
}

// Part of a drawable, told to lie at `place`.
std::optional<X11WindowList::Image> X11WindowList::read(xcb_drawable_t drawable, const X11Rect& part,
                                                        const X11Rect& place) const {
    const X11Reply<xcb_get_image_reply_t> reply{xcb_get_image_reply(
        connection_.get(),
        xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, drawable,
                      static_cast<std::int16_t>(part.x), static_cast<std::int16_t>(part.y),
                      static_cast<std::uint16_t>(part.width), static_cast<std::uint16_t>(part.height), ~0U),
        nullptr)};
    const auto count = static_cast<std::size_t>(part.width) * static_cast<std::size_t>(part.height);
    if (!reply || static_cast<std::size_t>(xcb_get_image_data_length(reply.get())) < count * 4)
        return std::nullopt;
    Image image{place, std::vector<std::uint32_t>(count)};
    std::memcpy(image.pixels.data(), xcb_get_image_data(reply.get()), count * 4);
    if (reply->depth != 32)
        for (std::uint32_t& pixel : image.pixels) pixel |= 0xFF000000;
    return image;
}

std::optional<X11WindowList::Image> X11WindowList::imageOf(xcb_window_t window) const {
    const X11Window* own = ownWindow(window);
    if (!own) return foreignImage(window);
    if (!own->state().sharesPixels || own->pixmap() == 0) return std::nullopt;
    const X11Rect place = own->place();
    auto image = read(own->pixmap(), {0, 0, place.width, place.height}, place);
    if (image) image->alpha = std::clamp(own->state().alpha, 0.0, 1.0);
    return image;
}

// Only children of the root window are redirected, so a framed window is cut out of its frame's pixels.
std::optional<X11WindowList::Image> X11WindowList::foreignImage(xcb_window_t window) const {
    xcb_connection_t* c = connection_.get();
    const xcb_window_t top = topOf(window);
    const auto geometryCookie = xcb_get_geometry(c, window);
    const auto placeCookie = xcb_translate_coordinates(c, window, connection_.root(), 0, 0);
    const auto insideCookie = xcb_translate_coordinates(c, window, top, 0, 0);
    const X11Reply<xcb_get_geometry_reply_t> geometry{xcb_get_geometry_reply(c, geometryCookie, nullptr)};
    const X11Reply<xcb_translate_coordinates_reply_t> at{
        xcb_translate_coordinates_reply(c, placeCookie, nullptr)};
    const X11Reply<xcb_translate_coordinates_reply_t> inside{
        xcb_translate_coordinates_reply(c, insideCookie, nullptr)};
    if (!geometry || !at || !inside) return std::nullopt;
    const X11Rect place{at->dst_x, at->dst_y, geometry->width, geometry->height};
    if (!connection_.hasComposite()) return read(window, {0, 0, place.width, place.height}, place);
    const X11Reply<xcb_get_geometry_reply_t> frame{
        xcb_get_geometry_reply(c, xcb_get_geometry(c, top), nullptr)};
    const int border = frame ? frame->border_width : 0;
    xcb_composite_redirect_window(c, top, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    const xcb_pixmap_t pixmap = xcb_generate_id(c);
    xcb_composite_name_window_pixmap(c, top, pixmap);
    auto image =
        read(pixmap, {inside->dst_x + border, inside->dst_y + border, place.width, place.height}, place);
    xcb_free_pixmap(c, pixmap);
    xcb_composite_unredirect_window(c, top, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    return image;
}

std::optional<DisplayPicture> X11WindowList::capture(const CGRect& rect,
                                                     const std::vector<DisplayWindowNumber>& windows) const {
    if (CGRectIsNull(rect)) return std::nullopt;
    const CGRect place = CGRectStandardize(rect);
    const CGFloat scale = screens_.scale();
    const auto side = [&](CGFloat length) {
        return static_cast<int>(std::clamp(std::ceil(length * scale), 0.0, 32'767.0));
    };
    DisplayPicture picture{side(place.size.width), side(place.size.height), scale, {}};
    picture.pixels.assign(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height),
                          0);
    const X11Rect ground = screens_.pixels(place);
    for (const DisplayWindowInfo& info : list(true) | std::views::reverse) {
        if (std::ranges::find(windows, info.number) == windows.end()) continue;
        const auto image = imageOf(static_cast<xcb_window_t>(info.number));
        if (!image) continue;
        const auto alpha = static_cast<std::uint32_t>(std::lround(image->alpha * 255));
        const int dx = image->place.x - ground.x;
        const int dy = image->place.y - ground.y;
        const int right = std::min(picture.width, dx + image->place.width);
        const int bottom = std::min(picture.height, dy + image->place.height);
        for (int y = std::max(0, dy); y < bottom; ++y) {
            for (int x = std::max(0, dx); x < right; ++x) {
                const auto source =
                    static_cast<std::size_t>(y - dy) * static_cast<std::size_t>(image->place.width) +
                    static_cast<std::size_t>(x - dx);
                auto& pixel =
                    picture.pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(picture.width) +
                                   static_cast<std::size_t>(x)];
                pixel = over(pixel, image->pixels[source], alpha);
            }
        }
    }
    return picture;
}

}  // namespace zqcore::platform
