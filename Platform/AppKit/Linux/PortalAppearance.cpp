// The settings portal, https://flatpak.github.io/xdg-desktop-portal (org.freedesktop.portal.Settings): the
// colour scheme is 1 for dark, 2 for light, 0 for no preference.
#include "Platform/AppKit/PortalAppearance.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Dispatch/RunLoop.h"

namespace zqcore::platform {

namespace {

constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kPath = "/org/freedesktop/portal/desktop";
constexpr const char* kSettings = "org.freedesktop.portal.Settings";
constexpr const char* kNamespace = "org.freedesktop.appearance";
constexpr const char* kKey = "color-scheme";
constexpr std::uint32_t kDark = 1;

/// Reads the scheme in the variant at hand; the older method wraps it in a second variant.
bool readScheme(sd_bus_message* message, std::uint32_t& scheme) {
    int depth = 0;
    for (; depth < 3; ++depth) {
        char type = 0;
        const char* contents = nullptr;
        if (sd_bus_message_peek_type(message, &type, &contents) <= 0 || type != 'v') break;
        if (sd_bus_message_enter_container(message, 'v', contents) < 0) return false;
    }
    return depth > 0 && sd_bus_message_read(message, "u", &scheme) > 0;
}

}  // namespace

/// One connection to the session bus, driven by the main run loop alone, so that sd-bus meets one thread.
class PortalAppearance::Connection final {
  public:
    explicit Connection(PortalAppearance& owner) : owner_(owner) {}

    bool open() {
        sd_bus* opened = nullptr;
        if (sd_bus_open_user(&opened) < 0) return false;
        bus_.reset(opened);
        // Subscribed before asked, so that no change falls between.
        if (sd_bus_match_signal_async(opened, nullptr, kPortal, kPath, kSettings, "SettingChanged", onChanged,
                                      nullptr, this) < 0)
            return false;
        constexpr const char* kOwnerRule =
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
            "arg0='org.freedesktop.portal.Desktop'";
        if (sd_bus_add_match_async(opened, nullptr, kOwnerRule, onOwnerChanged, nullptr, this) < 0)
            return false;
        ask("ReadOne");
        watchBus();
        return true;
    }

  private:
    void ask(const char* method) {
        const auto answered = std::string_view(method) == "ReadOne" ? onReadOne : onRead;
        // A failure to send is told by the watch, as any loss is.
        (void)sd_bus_call_method_async(bus_.get(), nullptr, kPortal, kPath, kSettings, method, answered, this,
                                       "ss", kNamespace, kKey);
    }

    void watchBus() {
        const int wanted = sd_bus_get_events(bus_.get());
        const auto events = static_cast<short>(wanted < 0 ? POLLIN : wanted);
        if (watch_ && events == watched_) return;
        watched_ = events;
        watch_.reset();
        watch_ = RunLoop::main().watch(sd_bus_get_fd(bus_.get()), events, [this](short) { process(); });
    }

    void process() {
        int processed = 0;
        do processed = sd_bus_process(bus_.get(), nullptr);
        while (processed > 0);
        // Told last, and from what lies on the stack: a loss ends this object, and who is told may end all.
        PortalAppearance& owner = owner_;
        const auto learned = std::exchange(learned_, std::nullopt);
        if (processed < 0 || sd_bus_is_open(bus_.get()) <= 0) {
            owner.close();
        } else {
            watchBus();
        }
        if (learned) owner.learned(*learned);
    }

    void learn(sd_bus_message* message) {
        std::uint32_t scheme = 0;
        if (readScheme(message, scheme))
            learned_ = scheme == kDark ? DisplayAppearance::dark : DisplayAppearance::light;
    }

    static int onReadOne(sd_bus_message* message, void* self, sd_bus_error*) {
        auto& connection = *static_cast<Connection*>(self);
        if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
            // Portals before 1.17 know the older method only.
            if (sd_bus_error_has_name(error, SD_BUS_ERROR_UNKNOWN_METHOD)) connection.ask("Read");
            return 0;
        }
        connection.learn(message);
        return 0;
    }
    static int onRead(sd_bus_message* message, void* self, sd_bus_error*) {
        if (!sd_bus_message_is_method_error(message, nullptr)) static_cast<Connection*>(self)->learn(message);
        return 0;
    }
    static int onChanged(sd_bus_message* message, void* self, sd_bus_error*) {
        const char* space = nullptr;
        const char* key = nullptr;
        if (sd_bus_message_read(message, "ss", &space, &key) < 0) return 0;
        if (std::string_view(space) == kNamespace && std::string_view(key) == kKey)
            static_cast<Connection*>(self)->learn(message);
        return 0;
    }
    static int onOwnerChanged(sd_bus_message* message, void* self, sd_bus_error*) {
        const char* owner = nullptr;
        if (sd_bus_message_read(message, "sss", nullptr, nullptr, &owner) >= 0 && *owner)
            static_cast<Connection*>(self)->ask("ReadOne");
        return 0;
    }

    PortalAppearance& owner_;
    std::unique_ptr<sd_bus, ReleasedBy<sd_bus_close_unref>> bus_;
    std::unique_ptr<RunLoop::Watch> watch_;
    short watched_ = 0;
    std::optional<DisplayAppearance> learned_;
};

PortalAppearance::PortalAppearance(Handler changed) : changed_(std::move(changed)) { open(); }

PortalAppearance::~PortalAppearance() = default;

DisplayAppearance PortalAppearance::appearance() {
    if (lost_) open();
    return appearance_;
}

void PortalAppearance::open() {
    auto connection = std::make_unique<Connection>(*this);
    if (!connection->open()) return;
    connection_ = std::move(connection);
    lost_ = false;
}

void PortalAppearance::close() {
    lost_ = true;
    connection_.reset();
}

void PortalAppearance::learned(DisplayAppearance appearance) {
    if (std::exchange(appearance_, appearance) == appearance) return;
    const auto changed = changed_;
    if (changed) changed(appearance);
}

}  // namespace zqcore::platform
