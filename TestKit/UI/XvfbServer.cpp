#include "TestKit/UI/XvfbServer.h"

#include <signal.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>

#include "Platform/Dispatch/RunLoop.h"

namespace zqcore::testkit {

namespace {

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
    void operator()(xcb_connection_t* connection) const noexcept { xcb_disconnect(connection); }
};
template <class T>
using Reply = std::unique_ptr<T, Free>;

}  // namespace

struct XvfbServer::Client {
    std::unique_ptr<ChildProcess> server;
    std::unique_ptr<xcb_connection_t, Free> connection;
    xcb_screen_t* screen = nullptr;
    int presses = 0;

    [[nodiscard]] xcb_connection_t* get() const { return connection.get(); }
    void wait() const {
        const Reply<xcb_get_input_focus_reply_t> done{
            xcb_get_input_focus_reply(get(), xcb_get_input_focus(get()), nullptr)};
    }
    [[nodiscard]] xcb_atom_t atom(const std::string& name) const {
        const Reply<xcb_intern_atom_reply_t> reply{xcb_intern_atom_reply(
            get(), xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
            nullptr)};
        return reply ? reply->atom : 0;
    }
};

XvfbServer::XvfbServer(int width, int height) : client_(std::make_unique<Client>()) {
    const std::string size = std::to_string(width) + "x" + std::to_string(height) + "x24";
    // The server's own choice of a display; it tells when it listens. What its key map's compiler says of
    // keys that it doesn't know is no news.
    client_->server = std::make_unique<ChildProcess>(
        std::vector<std::string>{"sh", "-c", "exec Xvfb \"$@\" 2>/dev/null", "sh", "-displayfd", "1",
                                 "-screen", "0", size, "-nolisten", "tcp", "-noreset"});
    const auto number = client_->server->readLine();
    if (!number || number->empty()) return;
    display_ = ":" + *number;
    client_->connection.reset(xcb_connect(display_.c_str(), nullptr));
    if (xcb_connection_has_error(client_->get()) != 0) {
        client_->connection.reset();
        return;
    }
    client_->screen = xcb_setup_roots_iterator(xcb_get_setup(client_->get())).data;
    const auto* xtest = xcb_get_extension_data(client_->get(), &xcb_test_id);
    if (!xtest || !xtest->present) client_->connection.reset();
}

XvfbServer::~XvfbServer() { stop(); }

bool XvfbServer::running() const noexcept { return client_->connection != nullptr; }

void XvfbServer::stop() {
    client_->connection.reset();
    if (!client_->server) return;
    // Politely, so that it takes its lock and its socket away.
    if (client_->server->pid() > 0) ::kill(client_->server->pid(), SIGTERM);
    client_->server->wait();
    client_->server.reset();
}

int XvfbServer::run(const std::vector<std::string>& arguments) const {
    const auto program = start(arguments);
    return program ? program->wait() : -1;
}

std::unique_ptr<ChildProcess> XvfbServer::start(const std::vector<std::string>& arguments) const {
    if (ChildProcess({"sh", "-c", "command -v \"$0\" >/dev/null", arguments.front()}).wait() != 0)
        return nullptr;
    std::vector<std::string> all{"sh", "-c", "DISPLAY=$0 exec \"$@\" 2>/dev/null", display_};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return std::make_unique<ChildProcess>(all);
}

bool XvfbServer::waitFor(const std::function<bool()>& done) {
    for (int look = 0; look < 500; ++look)
        if (platform::RunLoop::main().runUntil(done, std::chrono::milliseconds(20))) return true;
    return false;
}

std::uint32_t XvfbServer::pixel(int x, int y) const {
    const Reply<xcb_get_image_reply_t> reply{xcb_get_image_reply(
        client_->get(),
        xcb_get_image(client_->get(), XCB_IMAGE_FORMAT_Z_PIXMAP, client_->screen->root,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 1, 1, ~0U),
        nullptr)};
    std::uint32_t value = 0;
    if (reply) std::memcpy(&value, xcb_get_image_data(reply.get()), sizeof value);
    return value & 0xFFFFFF;
}

void XvfbServer::fake(std::uint8_t type, int detail, int x, int y) const {
    xcb_test_fake_input(client_->get(), type, static_cast<std::uint8_t>(detail), XCB_CURRENT_TIME,
                        client_->screen->root, static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    client_->wait();
}

void XvfbServer::movePointer(int x, int y) const { fake(XCB_MOTION_NOTIFY, 0, x, y); }
void XvfbServer::pressButton(int button) const { fake(XCB_BUTTON_PRESS, button, 0, 0); }
void XvfbServer::releaseButton(int button) const { fake(XCB_BUTTON_RELEASE, button, 0, 0); }
void XvfbServer::click(int button) const {
    pressButton(button);
    releaseButton(button);
}
void XvfbServer::pressKey(int key) const { fake(XCB_KEY_PRESS, key, 0, 0); }
void XvfbServer::releaseKey(int key) const { fake(XCB_KEY_RELEASE, key, 0, 0); }

std::uint32_t XvfbServer::addWindow(int x, int y, int width, int height, std::uint32_t color) const {
    const xcb_window_t window = xcb_generate_id(client_->get());
    const std::uint32_t values[] = {color, 1, XCB_EVENT_MASK_BUTTON_PRESS};
    xcb_create_window(client_->get(), XCB_COPY_FROM_PARENT, window, client_->screen->root,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, client_->screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    xcb_map_window(client_->get(), window);
    client_->wait();
    return window;
}

void XvfbServer::removeWindow(std::uint32_t window) const {
    xcb_destroy_window(client_->get(), window);
    client_->wait();
}

int XvfbServer::pressesHeard() const {
    client_->wait();
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(client_->get())})
        if ((event->response_type & 0x7F) == XCB_BUTTON_PRESS) ++client_->presses;
    return client_->presses;
}

void XvfbServer::focus(std::uint32_t window) const {
    xcb_set_input_focus(client_->get(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    client_->wait();
}

std::uint32_t XvfbServer::focusedWindow() const {
    const Reply<xcb_get_input_focus_reply_t> reply{
        xcb_get_input_focus_reply(client_->get(), xcb_get_input_focus(client_->get()), nullptr)};
    return reply ? reply->focus : 0;
}

void XvfbServer::requestClose(std::uint32_t window) const {
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = client_->atom("WM_PROTOCOLS");
    message.data.data32[0] = client_->atom("WM_DELETE_WINDOW");
    xcb_send_event(client_->get(), 0, window, 0, reinterpret_cast<const char*>(&message));
    client_->wait();
}

std::uint32_t XvfbServer::root() const noexcept { return client_->screen->root; }

void XvfbServer::setProperty(std::uint32_t window, const std::string& name, const std::string& type,
                             const std::vector<std::uint32_t>& values) const {
    xcb_change_property(client_->get(), XCB_PROP_MODE_REPLACE, window, client_->atom(name),
                        client_->atom(type), 32, static_cast<std::uint32_t>(values.size()), values.data());
    client_->wait();
}

void XvfbServer::setText(std::uint32_t window, const std::string& name, const std::string& text) const {
    xcb_change_property(client_->get(), XCB_PROP_MODE_REPLACE, window, client_->atom(name), XCB_ATOM_STRING,
                        8, static_cast<std::uint32_t>(text.size()), text.data());
    client_->wait();
}

std::vector<std::uint32_t> XvfbServer::property(std::uint32_t window, const std::string& name) const {
    const Reply<xcb_get_property_reply_t> reply{xcb_get_property_reply(
        client_->get(),
        xcb_get_property(client_->get(), 0, window, client_->atom(name), XCB_ATOM_ANY, 0, 1024), nullptr)};
    if (!reply || reply->format != 32) return {};
    const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + xcb_get_property_value_length(reply.get()) / 4};
}

void XvfbServer::pretendCompositor(bool there) const {
    const xcb_window_t owner = there ? addWindow(-10, -10, 1, 1, 0) : XCB_NONE;
    xcb_set_selection_owner(client_->get(), owner, client_->atom("_NET_WM_CM_S0"), XCB_CURRENT_TIME);
    client_->wait();
}

}  // namespace zqcore::testkit
