#include "Platform/AppKit/X11/X11Connection.h"

#include <xcb/composite.h>
#include <xcb/randr.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace zqcore::platform {

namespace {

struct NamedAtom {
    const char* name;
    xcb_atom_t X11Atoms::*place;
};

constexpr NamedAtom kAtoms[] = {
    {"UTF8_STRING", &X11Atoms::utf8String},
    {"RESOURCE_MANAGER", &X11Atoms::resourceManager},
    {"WM_PROTOCOLS", &X11Atoms::wmProtocols},
    {"WM_DELETE_WINDOW", &X11Atoms::wmDeleteWindow},
    {"WM_STATE", &X11Atoms::wmState},
    {"WM_CLASS", &X11Atoms::wmClass},
    {"_MOTIF_WM_HINTS", &X11Atoms::motifHints},
    {"_GTK_FRAME_EXTENTS", &X11Atoms::frameExtents},
    {"_NET_SUPPORTED", &X11Atoms::supported},
    {"_NET_SUPPORTING_WM_CHECK", &X11Atoms::supportingCheck},
    {"_NET_ACTIVE_WINDOW", &X11Atoms::activeWindow},
    {"_NET_CLIENT_LIST_STACKING", &X11Atoms::clientListStacking},
    {"_NET_CURRENT_DESKTOP", &X11Atoms::currentDesktop},
    {"_NET_WORKAREA", &X11Atoms::workArea},
    {"_NET_WM_NAME", &X11Atoms::name},
    {"_NET_WM_PID", &X11Atoms::pid},
    {"_NET_WM_DESKTOP", &X11Atoms::desktop},
    {"_NET_WM_WINDOW_OPACITY", &X11Atoms::opacity},
    {"_NET_WM_USER_TIME", &X11Atoms::userTime},
    {"_NET_WM_PING", &X11Atoms::ping},
    {"_NET_RESTACK_WINDOW", &X11Atoms::restackWindow},
    {"_NET_WM_STATE", &X11Atoms::state},
    {"_NET_WM_STATE_ABOVE", &X11Atoms::stateAbove},
    {"_NET_WM_STATE_BELOW", &X11Atoms::stateBelow},
    {"_NET_WM_STATE_SKIP_TASKBAR", &X11Atoms::stateSkipTaskbar},
    {"_NET_WM_STATE_SKIP_PAGER", &X11Atoms::stateSkipPager},
    {"_NET_WM_WINDOW_TYPE", &X11Atoms::type},
    {"_NET_WM_WINDOW_TYPE_NORMAL", &X11Atoms::typeNormal},
    {"_NET_WM_WINDOW_TYPE_UTILITY", &X11Atoms::typeUtility},
    {"_NET_WM_WINDOW_TYPE_DIALOG", &X11Atoms::typeDialog},
    {"_NET_WM_WINDOW_TYPE_TOOLTIP", &X11Atoms::typeTooltip},
    {"_NET_WM_WINDOW_TYPE_POPUP_MENU", &X11Atoms::typePopupMenu},
    {"_NET_WM_WINDOW_TYPE_NOTIFICATION", &X11Atoms::typeNotification},
    {"_NET_WM_WINDOW_TYPE_SPLASH", &X11Atoms::typeSplash},
};

// The layout of `DisplaySurface`: 8 bits each of red, green and blue in the low bytes.
bool hasOurPixels(const xcb_visualtype_t& visual) {
    return visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == 0xFF0000 &&
           visual.green_mask == 0xFF00 && visual.blue_mask == 0xFF;
}

const xcb_visualtype_t* findVisual(const xcb_screen_t& screen, std::uint8_t depth, xcb_visualid_t id) {
    for (auto depths = xcb_screen_allowed_depths_iterator(&screen); depths.rem; xcb_depth_next(&depths)) {
        if (depths.data->depth != depth) continue;
        for (auto visuals = xcb_depth_visuals_iterator(depths.data); visuals.rem;
             xcb_visualtype_next(&visuals)) {
            if (hasOurPixels(*visuals.data) && (id == 0 || visuals.data->visual_id == id))
                return visuals.data;
        }
    }
    return nullptr;
}

}  // namespace

X11Connection::Use::Use(X11Connection& connection) : connection_(connection) {
    if (connection_.uses_++ == 0) held_.emplace();
}

X11Connection::Use::~Use() {
    if (connection_.uses_ == 1) {
        xcb_flush(connection_.get());
        // What a wait for a reply read on the way doesn't make the descriptor readable again.
        while (X11Event event{xcb_poll_for_queued_event(connection_.get())})
            connection_.read_.push_back(std::move(event));
        held_.reset();
    }
    if (--connection_.uses_ == 0 && connection_.pending_ &&
        (!connection_.read_.empty() || connection_.isLost()))
        connection_.pending_();
}

std::unique_ptr<X11Connection> X11Connection::open(const std::string& name, std::string& reason) {
    int number = 0;
    std::unique_ptr<X11Connection> made(new X11Connection);
    made->connection_.reset(xcb_connect(name.empty() ? nullptr : name.c_str(), &number));
    if (made->isLost()) {
        reason = made->lossReason();
        return nullptr;
    }
    const Use use(*made);
    if (!made->findScreen(number, reason) || !made->findExtensions(reason)) return nullptr;
    made->findAtoms(number);
    made->updateCompositor();
    return made;
}

X11Connection::~X11Connection() = default;

std::string_view X11Connection::lossReason() const noexcept {
    switch (xcb_connection_has_error(get())) {
        case XCB_CONN_ERROR:
            return "the connection to the X server broke or could not be made";
        case XCB_CONN_CLOSED_EXT_NOTSUPPORTED:
            return "the X server lacks an extension";
        case XCB_CONN_CLOSED_MEM_INSUFFICIENT:
            return "no memory for the connection to the X server";
        case XCB_CONN_CLOSED_REQ_LEN_EXCEED:
            return "a request was too long for the X server";
        case XCB_CONN_CLOSED_PARSE_ERR:
            return "the name of the X display can't be read";
        case XCB_CONN_CLOSED_INVALID_SCREEN:
            return "the X server has no such screen";
        default:
            return "the X server is gone";
    }
}

bool X11Connection::findScreen(int number, std::string& reason) {
    const xcb_setup_t* setup = xcb_get_setup(get());
    auto screens = xcb_setup_roots_iterator(setup);
    while (number-- > 0 && screens.rem > 1) xcb_screen_next(&screens);
    screen_ = screens.data;
    const bool littleEndian = setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    const xcb_format_t* formats = xcb_setup_pixmap_formats(setup);
    const bool wide =
        std::any_of(formats, formats + xcb_setup_pixmap_formats_length(setup), [&](const xcb_format_t& one) {
            return one.depth == screen_->root_depth && one.bits_per_pixel == 32;
        });
    if (!wide || littleEndian != (std::endian::native == std::endian::little) ||
        !findVisual(*screen_, screen_->root_depth, screen_->root_visual)) {
        reason = "the X server's pixels are not of 32 bits in this machine's order";
        return false;
    }
    depth_ = screen_->root_depth;
    visual_ = screen_->root_visual;
    colormap_ = screen_->default_colormap;
    if (const auto* deep = findVisual(*screen_, 32, 0)) {
        depth_ = 32;
        visual_ = deep->visual_id;
        colormap_ = xcb_generate_id(get());
        xcb_create_colormap(get(), XCB_COLORMAP_ALLOC_NONE, colormap_, root(), visual_);
    }
    return true;
}

// An extension answers only after its version was asked for, and its monitors, raw events and regions only
// from these versions on.
bool X11Connection::findExtensions(std::string& reason) {
    xcb_connection_t* c = get();
    const auto* randr = xcb_get_extension_data(c, &xcb_randr_id);
    const auto* fixes = xcb_get_extension_data(c, &xcb_xfixes_id);
    const auto* input = xcb_get_extension_data(c, &xcb_input_id);
    const auto* shape = xcb_get_extension_data(c, &xcb_shape_id);
    const auto* composite = xcb_get_extension_data(c, &xcb_composite_id);
    const auto there = [](const xcb_query_extension_reply_t* one) { return one && one->present; };
    if (!there(randr) || !there(fixes) || !there(input) || !there(shape)) {
        reason = "the X server lacks one of RANDR, XFIXES, XInput and SHAPE";
        return false;
    }
    const auto randrCookie = xcb_randr_query_version(c, 1, 5);
    const auto fixesCookie = xcb_xfixes_query_version(c, 5, 0);
    const auto inputCookie = xcb_input_xi_query_version(c, 2, 2);
    const X11Reply<xcb_randr_query_version_reply_t> randrVersion{
        xcb_randr_query_version_reply(c, randrCookie, nullptr)};
    const X11Reply<xcb_xfixes_query_version_reply_t> fixesVersion{
        xcb_xfixes_query_version_reply(c, fixesCookie, nullptr)};
    const X11Reply<xcb_input_xi_query_version_reply_t> inputVersion{
        xcb_input_xi_query_version_reply(c, inputCookie, nullptr)};
    const auto atLeast = [](std::uint32_t major, std::uint32_t minor, std::uint32_t a, std::uint32_t b) {
        return major > a || (major == a && minor >= b);
    };
    if (!randrVersion || !atLeast(randrVersion->major_version, randrVersion->minor_version, 1, 5) ||
        !fixesVersion || fixesVersion->major_version < 2 || !inputVersion ||
        !atLeast(inputVersion->major_version, inputVersion->minor_version, 2, 1)) {
        reason = "the X server's RANDR is older than 1.5, its XFIXES than 2.0 or its XInput than 2.1";
        return false;
    }
    randrEvent_ = randr->first_event;
    fixesEvent_ = fixes->first_event;
    inputOpcode_ = input->major_opcode;
    if (there(composite)) {
        const X11Reply<xcb_composite_query_version_reply_t> version{
            xcb_composite_query_version_reply(c, xcb_composite_query_version(c, 0, 4), nullptr)};
        hasComposite_ = version && atLeast(version->major_version, version->minor_version, 0, 2);
    }
    return true;
}

void X11Connection::findAtoms(int number) {
    const std::string compositor = "_NET_WM_CM_S" + std::to_string(number);
    const auto ask = [&](std::string_view name) {
        return xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    };
    std::vector<std::pair<xcb_intern_atom_cookie_t, xcb_atom_t X11Atoms::*>> asked;
    for (const NamedAtom& atom : kAtoms) asked.emplace_back(ask(atom.name), atom.place);
    asked.emplace_back(ask(compositor), &X11Atoms::compositor);
    for (const auto& [cookie, place] : asked) {
        const X11Reply<xcb_intern_atom_reply_t> reply{xcb_intern_atom_reply(get(), cookie, nullptr)};
        atoms_.*place = reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    }
}

bool X11Connection::updateCompositor() {
    const X11Reply<xcb_get_selection_owner_reply_t> owner{
        xcb_get_selection_owner_reply(get(), xcb_get_selection_owner(get(), atoms_.compositor), nullptr)};
    const bool there = owner && owner->owner != XCB_NONE;
    return std::exchange(hasCompositor_, there) != there;
}

bool X11Connection::hasWindowManager() {
    if (std::exchange(managerKnown_, true)) return hasManager_;
    const auto check = numbers(root(), atoms_.supportingCheck, XCB_ATOM_WINDOW);
    // The property outlives its manager; the window that it names doesn't.
    hasManager_ = !check.empty() && numbers(check.front(), atoms_.supportingCheck, XCB_ATOM_WINDOW) == check;
    supported_ =
        hasManager_ ? numbers(root(), atoms_.supported, XCB_ATOM_ATOM) : std::vector<std::uint32_t>{};
    return hasManager_;
}

bool X11Connection::supports(xcb_atom_t hint) {
    return hasWindowManager() && std::ranges::find(supported_, hint) != supported_.end();
}

std::vector<std::uint32_t> X11Connection::numbers(xcb_window_t window, xcb_atom_t property,
                                                  xcb_atom_t type) const {
    const X11Reply<xcb_get_property_reply_t> reply{xcb_get_property_reply(
        get(), xcb_get_property(get(), 0, window, property, type, 0, 1U << 16), nullptr)};
    if (!reply || reply->format != 32) return {};
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

std::string X11Connection::text(xcb_window_t window, xcb_atom_t property) const {
    const X11Reply<xcb_get_property_reply_t> reply{xcb_get_property_reply(
        get(), xcb_get_property(get(), 0, window, property, XCB_ATOM_ANY, 0, 1U << 16), nullptr)};
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

void X11Connection::setNumbers(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                               std::initializer_list<std::uint32_t> values) const {
    xcb_change_property(get(), XCB_PROP_MODE_REPLACE, window, property, type, 32,
                        static_cast<std::uint32_t>(values.size()), values.begin());
}

void X11Connection::setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                            std::string_view text) const {
    xcb_change_property(get(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

void X11Connection::askManager(xcb_window_t window, xcb_atom_t type, const std::uint32_t (&data)[5]) const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = type;
    std::memcpy(message.data.data32, data, sizeof data);
    xcb_send_event(get(), 0, root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
}

X11Event X11Connection::nextEvent() {
    if (read_.empty()) return X11Event{xcb_poll_for_event(get())};
    X11Event event = std::move(read_.front());
    read_.pop_front();
    return event;
}

}  // namespace zqcore::platform
