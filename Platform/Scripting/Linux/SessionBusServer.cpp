#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "Platform/Base/NSLog.h"
#include "Platform/Scripting/Linux/BusErrors.h"
#include "Platform/Scripting/Linux/BusValue.h"
#include "Platform/Scripting/Linux/SealedText.h"
#include "Platform/Scripting/Linux/SessionBus.h"

// The serving half: commands that arrive, who may send them and their answers, and notifications.
namespace zqcore::platform {
namespace {

constexpr const char* kNotificationPath = "/com/tessara/ZQCore/DistributedNotificationCenter";
constexpr const char* kNotificationInterface = "com.tessara.ZQCore.DistributedNotificationCenter";
constexpr const char* kNotificationMember = "Posted";

// Never queue behind another owner: whether the name is ours is to be known at once.
constexpr std::uint64_t kClaimFlags = 0x4;
constexpr std::size_t kMostAdmitted = 1024;

int ignoreAnswer(sd_bus_message*, void*, sd_bus_error*) { return 1; }

/// Whether an answer to RequestName gives the name: 1 is owner now, 4 owner already (D-Bus specification).
[[nodiscard]] bool givesName(std::uint32_t answer) { return answer == 1 || answer == 4; }

[[nodiscard]] bool readNotification(sd_bus_message* message, NSDistributedNotification& notification) {
    const char* name = nullptr;
    if (sd_bus_message_read_basic(message, 's', &name) <= 0) return false;
    notification.name = name;
    if (sd_bus_message_enter_container(message, 'a', "v") < 0) return false;
    if (sd_bus_message_at_end(message, 0) == 0 && readVariant(message, notification.object) < 0) return false;
    if (sd_bus_message_exit_container(message) < 0) return false;
    return readDictionary(message, notification.userInfo.emplace()) >= 0;
}

[[nodiscard]] int sendNotification(sd_bus* bus, const NSDistributedNotification& notification) {
    sd_bus_message* raw = nullptr;
    int made =
        sd_bus_message_new_signal(bus, &raw, kNotificationPath, kNotificationInterface, kNotificationMember);
    const SdMessageHandle message(raw);
    if (made >= 0) made = sd_bus_message_append_basic(raw, 's', notification.name.c_str());
    // An array of none or one: the bus has no null.
    if (made >= 0) made = sd_bus_message_open_container(raw, 'a', "v");
    if (made >= 0 && !notification.object.isNull()) made = appendVariant(raw, notification.object);
    if (made >= 0) made = sd_bus_message_close_container(raw);
    if (made >= 0) made = appendDictionary(raw, notification.userInfo.value_or(ValueDictionary()));
    return made < 0 ? made : sd_bus_send(bus, raw, nullptr);
}

}  // namespace

/// A call whose answer is still to come. Only the connection's lock makes its message safe to touch.
class SessionBus::HeldCall final {
  public:
    HeldCall(SessionBus& bus, sd_bus_message* message, bool exchange)
        : bus_(bus), message_(sd_bus_message_ref(message)), exchange_(exchange) {}
    ~HeldCall() {
        if (message_) bus_.reply(*this, std::nullopt);
    }
    HeldCall(const HeldCall&) = delete;
    HeldCall& operator=(const HeldCall&) = delete;

    [[nodiscard]] bool exchange() const noexcept { return exchange_; }
    [[nodiscard]] SdMessageHandle take() noexcept { return std::move(message_); }

  private:
    SessionBus& bus_;
    SdMessageHandle message_;
    bool exchange_;
};

void SessionBus::opened(sd_bus* bus) {
    for (auto& [identifier, served] : served_) {
        if (exportObject(bus, served) >= 0) claim(bus, served);
    }
    for (const auto& listener : listeners_) subscribe(bus, *listener);
}

void SessionBus::claim(sd_bus* bus, Served& served) {
    sd_bus_slot* slot = nullptr;
    sd_bus_request_name_async(bus, &slot, served.identifier.c_str(), 0, &SessionBus::onClaimed, &served);
    served.claim.reset(slot);
}

int SessionBus::onClaimed(sd_bus_message* message, void* pointer, sd_bus_error*) {
    auto& served = *static_cast<Served*>(pointer);
    sd_bus* bus = sd_bus_message_get_bus(message);
    // When the connection goes, sd-bus itself answers what is pending.
    if (sd_bus_is_open(bus) <= 0) return 1;
    std::uint32_t answer = 0;
    if (sd_bus_message_is_method_error(message, nullptr) == 0) sd_bus_message_read(message, "u", &answer);
    served.ours = givesName(answer);
    if (served.ours) {
        served.watch.reset();
    } else if (!served.watch) {
        served.bus.connection_.defer([identifier = served.identifier] {
            NSLog("scripting: " + identifier + " has gone to another process, which is waited for");
        });
        // Claimed once more behind the watch: from here on its end can't be missed.
        served.watch = watchOwner(bus, served.identifier, &SessionBus::onServedNameChanged, &served);
        served.bus.claim(bus, served);
    }
    return 1;
}

int SessionBus::onServedNameChanged(sd_bus_message* message, void* pointer, sd_bus_error*) {
    auto& served = *static_cast<Served*>(pointer);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &now) >= 0 && *now == '\0')
        served.bus.claim(sd_bus_message_get_bus(message), served);
    return 0;
}

int SessionBus::exportObject(sd_bus* bus, Served& served) {
    static const std::array<sd_bus_vtable, 4> table{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD_WITH_ARGS("request", SD_BUS_ARGS("s", text), SD_BUS_RESULT("s", answer),
                                &SessionBus::onCommand, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD_WITH_ARGS("exchange", SD_BUS_ARGS("v", text), SD_BUS_RESULT("v", answer),
                                &SessionBus::onCommand, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    const std::string path = objectPathForIdentifier(served.identifier);
    for (const auto& [identifier, other] : served_) {
        if (!other.object || objectPathForIdentifier(identifier) != path) continue;
        served.object = other.object;
        return 0;
    }
    sd_bus_slot* slot = nullptr;
    const int made =
        sd_bus_add_object_vtable(bus, &slot, path.c_str(), kScriptingInterface, table.data(), this);
    served.object = SdSlotHandle(slot);
    return made;
}

// By its destination, for identifiers may share a path, or by that alone if it was sent to the connection's
// own name.
SessionBus::Served* SessionBus::addressedBy(sd_bus_message* message) {
    const char* destination = sd_bus_message_get_destination(message);
    const std::string_view path = sd_bus_message_get_path(message);
    Served* found = nullptr;
    for (auto& [identifier, served] : served_) {
        if (objectPathForIdentifier(identifier) != path) continue;
        if (destination && identifier == destination) return &served;
        if (!found) found = &served;
    }
    return found;
}

ScriptingServeStatus SessionBus::serve(const std::string& identifier, CommandHandler handler) {
    if (!isSendableText(identifier) || identifier.starts_with(':') ||
        sd_bus_service_name_is_valid(identifier.c_str()) <= 0)
        return ScriptingServeStatus::invalidIdentifier;
    auto shared = std::make_shared<const CommandHandler>(std::move(handler));
    // Foreign objects may end with a handler, so one that is given up outlives the lock.
    const auto kept = shared;
    bool made = false;
    {
        const BusConnection::Access access(connection_);
        if (access.failure() < 0) return ScriptingServeStatus::noBus;
        const auto [place, isNew] = served_.try_emplace(identifier, *this, identifier);
        Served& served = place->second;
        made = isNew;
        // The object first: a call may follow the name at once.
        if (!served.object && exportObject(access.bus(), served) < 0) {
            if (made) served_.erase(place);
            return ScriptingServeStatus::invalidIdentifier;
        }
        std::swap(served.handler, shared);
        if (served.ours) return ScriptingServeStatus::serving;
    }
    bool ours = false;
    const auto done = connection_.call(
        [&](sd_bus* bus, sd_bus_message** message) {
            const int built =
                sd_bus_message_new_method_call(bus, message, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                               "org.freedesktop.DBus", "RequestName");
            return built < 0 ? built
                             : sd_bus_message_append(*message, "su", identifier.c_str(),
                                                     static_cast<std::uint32_t>(kClaimFlags));
        },
        [&](sd_bus_message* message) {
            std::uint32_t answer = 0;
            const int read = sd_bus_message_read(message, "u", &answer);
            ours = read >= 0 && givesName(answer);
            const auto served = served_.find(identifier);
            if (ours && served != served_.end()) served->second.ours = true;
            return read;
        });
    if (ours) return ScriptingServeStatus::serving;
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    const auto served = served_.find(identifier);
    if (served != served_.end() && made) served_.erase(served);
    // What was served before is still waited for, by its own handler.
    else if (served != served_.end())
        std::swap(served->second.handler, shared);
    return done ? ScriptingServeStatus::nameTaken : ScriptingServeStatus::noBus;
}

void SessionBus::stopServing(const std::string& identifier) {
    // Foreign objects may end with the handler, so it outlives the lock.
    std::shared_ptr<const CommandHandler> ended;
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    const auto served = served_.find(identifier);
    if (served == served_.end()) return;
    ended = std::move(served->second.handler);
    served_.erase(served);
    if (!access.bus()) return;
    sd_bus_release_name_async(access.bus(), nullptr, identifier.c_str(), &ignoreAnswer, nullptr);
}

int SessionBus::onCommand(sd_bus_message* message, void* pointer, sd_bus_error*) {
    auto& bus = *static_cast<SessionBus*>(pointer);
    const Served* served = bus.addressedBy(message);
    if (!served) return 0;
    bus.judge(message, [&bus, handler = std::weak_ptr(served->handler)](sd_bus_message* call, bool admitted) {
        if (admitted) return bus.accept(call, handler.lock());
        sd_bus_reply_method_errorf(call, SD_BUS_ERROR_ACCESS_DENIED,
                                   "only processes of the same user may call");
    });
    return 1;
}

void SessionBus::accept(sd_bus_message* message, std::shared_ptr<const CommandHandler> handler) {
    const bool exchange = sd_bus_message_has_signature(message, "v") > 0;
    auto call = std::make_unique<HeldCall>(*this, message, exchange);
    CarriedText carried;
    const int read = takeCarriedText(message, carried);
    if (read < 0) {
        sd_bus_reply_method_errorf(message, SD_BUS_ERROR_INVALID_ARGS, "a text or a sealed file is wanted");
        [[maybe_unused]] const auto done = call->take();
        return;
    }
    using Weight = BusConnection::Weight;
    const Weight weight = carried.file ? Weight::heavy : Weight::light;
    connection_.defer(
        [this, handler = std::move(handler), call = std::move(call), carried = std::move(carried)]() mutable {
            if (carried.file) {
                auto sealed = readSealedText(carried.file);
                if (!sealed) return refuse(*call, sealed.error());
                carried.text = *std::move(sealed);
            }
            if (!handler || !*handler) return;
            (*handler)(std::move(carried.text),
                       [this, call = std::move(call)](const Answer& answer) { reply(*call, answer); });
        },
        weight);
}

void SessionBus::reply(HeldCall& call, const Answer& answer) {
    // The large copy is made before the lock is taken.
    const bool sendable = answer && isSendableText(*answer);
    FileDescriptor file;
    if (sendable && call.exchange() && answer->size() >= kSealedTextThreshold) file = makeSealedText(*answer);
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    const SdMessageHandle message = call.take();
    if (!message) return;
    if (!sendable) {
        sd_bus_reply_method_errorf(
            message.get(), kNoResultErrorName,
            answer ? "the result can't be sent" : "the command ended without a result");
        return;
    }
    sd_bus_message* raw = nullptr;
    int made = sd_bus_message_new_method_return(message.get(), &raw);
    const SdMessageHandle result(raw);
    if (made >= 0) made = putCarriedText(raw, call.exchange(), *answer, file);
    if (made >= 0) sd_bus_send(nullptr, raw, nullptr);
}

void SessionBus::refuse(HeldCall& call, const std::string& why) {
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    const SdMessageHandle message = call.take();
    sd_bus_reply_method_errorf(message.get(), SD_BUS_ERROR_INVALID_ARGS, "%s", why.c_str());
}

void SessionBus::judge(sd_bus_message* message, Judged judged) {
    const char* sender = sd_bus_message_get_sender(message);
    if (!sender) return judged(message, false);
    if (admitted_.contains(std::string_view(sender))) return judged(message, true);
    // Every later message of the sender waits behind this one, so its order is kept.
    const auto [place, first] = judging_.try_emplace(sender, *this, sender);
    place->second.waiting.emplace_back(sd_bus_message_ref(message), std::move(judged));
    if (!first) return;
    const int asked =
        sd_bus_call_method_async(sd_bus_message_get_bus(message), nullptr, "org.freedesktop.DBus",
                                 "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetConnectionUnixUser",
                                 &SessionBus::onUserOfSender, &place->second, "s", sender);
    if (asked < 0) judgeWaiting(place->second, false);
}

int SessionBus::onUserOfSender(sd_bus_message* message, void* pointer, sd_bus_error*) {
    auto& sender = *static_cast<Sender*>(pointer);
    std::uint32_t user = 0;
    const bool told =
        sd_bus_message_is_method_error(message, nullptr) == 0 && sd_bus_message_read(message, "u", &user) > 0;
    sender.bus.judgeWaiting(sender, told && user == ::geteuid());
    return 1;
}

void SessionBus::judgeWaiting(Sender& sender, bool admitted) {
    // A unique name is never given twice while the bus lives, so what is forgotten here is only asked again.
    if (admitted_.size() >= kMostAdmitted) admitted_.clear();
    if (admitted) admitted_.insert(sender.uniqueName);
    auto waiting = std::exchange(sender.waiting, {});
    judging_.erase(std::string(sender.uniqueName));
    for (auto& [message, judged] : waiting) judged(message.get(), admitted);
}

bool SessionBus::broadcast(const NSDistributedNotification& notification) {
    if (!isSendableText(notification.name)) return false;
    {
        const BusConnection::Access access(connection_);
        if (access.failure() < 0 || sendNotification(access.bus(), notification) < 0) return false;
        // Written out already, as is usual.
        const int events = sd_bus_get_events(access.bus());
        if (sd_bus_is_ready(access.bus()) > 0 && events >= 0 && (events & POLLOUT) == 0) return true;
    }
    // A process may post and end, so a new connection or a full socket is seen through: the bus answers only
    // when it has taken everything before.
    return askForOwner("org.freedesktop.DBus", Watched::asBefore);
}

std::shared_ptr<void> SessionBus::listen(const std::string& name, NotificationHandler handler) {
    // The rule's text puts the name in quotes.
    if (!isSendableText(name) || name.find('\'') != name.npos) return nullptr;
    auto listener = std::make_shared<Listener>(*this, name, std::move(handler));
    bool open = false;
    {
        const BusConnection::Access access(connection_);
        listeners_.push_back(listener);
        open = access.failure() == 0;
        if (open) subscribe(access.bus(), *listener);
    }
    if (open) {
        // The bus answers in order: once it has, it knows the match, and nothing that is posted now is
        // missed.
        (void)askForOwner("org.freedesktop.DBus", Watched::asBefore);
    } else {
        search();
    }
    void* token = listener.get();
    return {token, [this, listener = std::move(listener)](void*) { stopListening(listener); }};
}

void SessionBus::subscribe(sd_bus* bus, Listener& listener) {
    if (listener.match) return;
    const std::string rule = std::string("type='signal',interface='") + kNotificationInterface +
                             "',member='" + kNotificationMember + "',arg0='" + listener.name + "'";
    sd_bus_slot* slot = nullptr;
    sd_bus_add_match_async(bus, &slot, rule.c_str(), &SessionBus::onNotification, &ignoreAnswer, &listener);
    listener.match.reset(slot);
}

void SessionBus::stopListening(const std::shared_ptr<Listener>& listener) {
    listener->ended.store(true, std::memory_order_relaxed);
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    listener->match.reset();
    std::erase(listeners_, listener);
}

int SessionBus::onNotification(sd_bus_message* message, void* pointer, sd_bus_error*) {
    // The sender isn't judged: one that posts and ends is gone before the bus could be asked about it.
    auto* raw = static_cast<Listener*>(pointer);
    SessionBus& bus = raw->bus;
    const auto found = std::ranges::find(bus.listeners_, raw, &std::shared_ptr<Listener>::get);
    NSDistributedNotification notification;
    if (found == bus.listeners_.end() || !readNotification(message, notification)) return 0;
    bus.connection_.defer([weak = std::weak_ptr(*found), notification = std::move(notification)] {
        const auto listener = weak.lock();
        if (listener && listener->handler && !listener->ended.load(std::memory_order_relaxed))
            listener->handler(notification);
    });
    return 0;
}

}  // namespace zqcore::platform
