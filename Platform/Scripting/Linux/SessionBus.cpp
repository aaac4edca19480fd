#include "Platform/Scripting/Linux/SessionBus.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Scripting/Linux/BusErrors.h"
#include "Platform/Scripting/Linux/SealedText.h"

// The calling half: who is there, what it can do, and the call itself. Serving is in SessionBusServer.cpp.
namespace zqcore::platform {
namespace {

constexpr const char* kDaemon = "org.freedesktop.DBus";
constexpr const char* kDaemonPath = "/org/freedesktop/DBus";

// Who serves or listens and has no bus looks for one after 0.1, 0.2, 0.4 ... 25.6 seconds, and every 25.6
// seconds from then on.
constexpr std::chrono::milliseconds kFirstRetry{100};
constexpr int kMostTries = 8;
// After four tries, 1.5 seconds, the bus counts as gone: one that is only started anew is up by then.
constexpr int kTriesUntilGone = 4;

std::atomic<ScriptingBus*> installed{nullptr};

[[nodiscard]] bool isBusName(const std::string& identifier) {
    return isSendableText(identifier) && !identifier.starts_with(':') &&
           sd_bus_service_name_is_valid(identifier.c_str()) > 0;
}

}  // namespace

ScriptingBus& ScriptingBus::current() {
    if (ScriptingBus* bus = installed.load(std::memory_order_acquire)) return *bus;
    // Never destroyed: its thread runs to the end of the process.
    static SessionBus& session = *new SessionBus;
    return session;
}

void ScriptingBus::installForTesting(ScriptingBus* bus) noexcept {
    installed.store(bus, std::memory_order_release);
}

SessionBus::SessionBus() : connection_(*new BusConnection(*this)) {}

void SessionBus::closing() {
    for (auto& [identifier, peer] : peers_) {
        if (peer.launch) peer.launch->fail(scriptingErrorForErrno(-ECONNRESET, "the bus went away"));
    }
    peers_.clear();
    admitted_.clear();
    judging_.clear();
    for (auto& [identifier, served] : served_) served.object.reset();
    for (const auto& listener : listeners_) listener->match.reset();
}

void SessionBus::welcomed() { tries_ = 0; }

void SessionBus::lost() { search(); }

void SessionBus::whenGone(std::function<void()> handler) {
    // Swapped, so that the handler that goes is destroyed without the lock.
    auto shared = std::make_shared<const std::function<void()>>(std::move(handler));
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    gone_.swap(shared);
}

// A try has failed when the bus can't be reached or, later, doesn't take this process in: then it is lost.
void SessionBus::search() {
    std::shared_ptr<const std::function<void()>> gone;
    int tries = 0;
    {
        const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
        if (!isWanted() || std::exchange(searching_, true)) return;
        tries = tries_;
        if (tries == kTriesUntilGone) gone = gone_;
        tries_ = std::min(tries_ + 1, kMostTries);
    }
    DispatchQueue::global(DispatchQoS::utility)->after(DispatchTime::now(kFirstRetry * (1 << tries)), [this] {
        bool failed = false;
        {
            // What wanted it may be gone by now; then it stays away until its next use.
            BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
            searching_ = false;
            failed = isWanted() && access.open() < 0;
        }
        if (failed) search();
    });
    if (gone && *gone) DispatchQueue::global(DispatchQoS::utility)->async([gone] { (*gone)(); });
}

void SessionBus::watch(sd_bus* bus, const std::string& identifier) {
    Peer& peer = peers_[identifier];
    if (peer.watch) return;
    const std::string rule = std::string("type='signal',sender='") + kDaemon + "',interface='" + kDaemon +
                             "',member='NameOwnerChanged',arg0='" + identifier + "'";
    sd_bus_slot* slot = nullptr;
    // Its own callback for the daemon's answer: without one a refusal would end the connection.
    sd_bus_add_match_async(
        bus, &slot, rule.c_str(), &SessionBus::onOwnerChanged,
        [](sd_bus_message*, void*, sd_bus_error*) { return 1; }, &peer);
    peer.watch.reset(slot);
}

int SessionBus::onOwnerChanged(sd_bus_message* message, void* pointer, sd_bus_error*) {
    auto& peer = *static_cast<Peer*>(pointer);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &now) < 0) return 0;
    peer.owner = now;
    peer.known = true;
    peer.commands.reset();
    if (peer.launch && !peer.owner.empty()) peer.launch->cameUp();
    return 0;
}

std::expected<std::string, NSError> SessionBus::callDaemon(const char* method, const char* argument) {
    std::string result;
    auto done = connection_.call(
        [&](sd_bus* bus, sd_bus_message** message) {
            const int made =
                sd_bus_message_new_method_call(bus, message, kDaemon, kDaemonPath, kDaemon, method);
            return made < 0 ? made : sd_bus_message_append(*message, "s", argument);
        },
        [&](sd_bus_message* message) {
            const char* text = nullptr;
            const int read = sd_bus_message_read(message, "s", &text);
            if (read >= 0) result = text;
            return read;
        });
    if (!done) return std::unexpected(std::move(done.error()));
    return result;
}

bool SessionBus::nameHasOwner(const std::string& identifier) {
    if (!isBusName(identifier)) return false;
    {
        BusConnection::Access access(connection_);
        if (access.failure() < 0) return false;
        access.takeInArrived();
        const auto peer = peers_.find(identifier);
        if (peer != peers_.end() && !peer->second.owner.empty()) return true;
    }
    // What isn't known, or known not to be there, is worth a question; only a name that has an owner is
    // watched, so that asking for names costs nothing later.
    if (!callDaemon("GetNameOwner", identifier.c_str())) return false;
    {
        BusConnection::Access access(connection_);
        if (access.failure() < 0) return false;
        watch(access.bus(), identifier);
    }
    // Asked again behind the watch: from here on no change can be missed.
    const auto owner = callDaemon("GetNameOwner", identifier.c_str());
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    const auto peer = peers_.find(identifier);
    if (peer != peers_.end() && owner) {
        if (peer->second.owner != *owner) peer->second.commands.reset();
        peer->second.owner = *owner;
        peer->second.known = true;
    }
    return owner.has_value();
}

bool SessionBus::isActivatable(const std::string& identifier) {
    if (!isBusName(identifier)) return false;
    bool found = false;
    const auto done = connection_.call(
        [](sd_bus* bus, sd_bus_message** message) {
            return sd_bus_message_new_method_call(bus, message, kDaemon, kDaemonPath, kDaemon,
                                                  "ListActivatableNames");
        },
        [&](sd_bus_message* message) {
            int read = sd_bus_message_enter_container(message, 'a', "s");
            const char* name = nullptr;
            while (read >= 0 && (read = sd_bus_message_read_basic(message, 's', &name)) > 0)
                found = found || identifier == name;
            return read;
        });
    return done && found;
}

void SessionBus::start(const std::string& identifier) {
    if (!isBusName(identifier) || nameHasOwner(identifier)) return;
    if (!isActivatable(identifier)) {
        static_cast<void>(launch(identifier, Failed::startsAnew));
        return;
    }
    const BusConnection::Access access(connection_);
    if (access.failure() < 0) return;
    sd_bus_message* raw = nullptr;
    int made = sd_bus_message_new_method_call(access.bus(), &raw, kDaemon, kDaemonPath, kDaemon,
                                              "StartServiceByName");
    const SdMessageHandle message(raw);
    if (made >= 0) made = sd_bus_message_append(raw, "su", identifier.c_str(), 0U);
    if (made >= 0) made = sd_bus_message_set_expect_reply(raw, 0);
    if (made >= 0) sd_bus_send(access.bus(), raw, nullptr);
}

std::shared_ptr<ApplicationLaunch> SessionBus::launch(const std::string& identifier, Failed earlier) {
    const auto entry = findDesktopEntry(identifier);
    BusConnection::Access access(connection_);
    access.takeInArrived();
    if (access.failure() < 0) return nullptr;
    // Before the start, so that its coming can't be missed.
    watch(access.bus(), identifier);
    Peer& peer = peers_[identifier];
    auto& known = peer.launch;
    const bool kept = known && (known->pending() || (known->failed() && earlier == Failed::counts));
    // Or it has come since it was asked for.
    if (kept || !peer.owner.empty() || !entry) return known;
    return known = ApplicationLaunch::start(*entry, callLimit());
}

void SessionBus::forgetFailedLaunch(const std::string& identifier) {
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    const auto peer = peers_.find(identifier);
    if (peer != peers_.end() && peer->second.launch && peer->second.launch->failed())
        peer->second.launch.reset();
}

std::expected<ScriptingCommands, NSError> SessionBus::commandsOf(const std::string& identifier) {
    auto commands = askForCommands(identifier);
    if (commands || !commands.error().localizedDescription().starts_with(SD_BUS_ERROR_SERVICE_UNKNOWN))
        return commands;
    // Nobody serves it and the bus can't start it. A start that failed isn't tried again by the next question
    // of the same request.
    const auto launched = launch(identifier, Failed::counts);
    if (!launched) return commands;
    // The bus answers in order: the watch is in force when this is, so who comes later is heard of.
    if (callDaemon("GetNameOwner", identifier.c_str())) launched->cameUp();
    if (auto up = launched->wait(); !up) return std::unexpected(std::move(up.error()));
    return askForCommands(identifier);
}

std::expected<ScriptingCommands, NSError> SessionBus::askForCommands(const std::string& identifier) {
    {
        BusConnection::Access access(connection_);
        if (access.failure() < 0) return std::unexpected(scriptingErrorForErrno(access.failure(), "no bus"));
        const auto peer = peers_.find(identifier);
        if (peer != peers_.end() && peer->second.commands) return *peer->second.commands;
        watch(access.bus(), identifier);
    }
    ScriptingCommands commands;
    std::string answerer;
    const std::string path = objectPathForIdentifier(identifier);
    auto done = connection_.call(
        [&](sd_bus* bus, sd_bus_message** message) {
            return sd_bus_message_new_method_call(bus, message, identifier.c_str(), path.c_str(),
                                                  "org.freedesktop.DBus.Introspectable", "Introspect");
        },
        [&](sd_bus_message* message) {
            const char* document = nullptr;
            const int read = sd_bus_message_read(message, "s", &document);
            if (read < 0) return read;
            commands = commandsInDocument(document);
            if (const char* sender = sd_bus_message_get_sender(message)) answerer = sender;
            // Kept here, in the order of arrival: a change of owner that comes later throws it away.
            const auto peer = peers_.find(identifier);
            if (peer == peers_.end() || (peer->second.known && peer->second.owner != answerer)) return read;
            peer->second.owner = answerer;
            peer->second.known = true;
            peer->second.commands = commands;
            return read;
        });
    if (!done) return std::unexpected(std::move(done.error()));
    return commands;
}

bool SessionBus::knowsRequestCommand(const std::string& identifier) {
    if (!isBusName(identifier)) return false;
    const auto commands = commandsOf(identifier);
    if (commands) return commands->request || commands->exchange;
    return commands.error().code() != kErrorNotHandled;
}

std::expected<ScriptingBus::Answer, NSError> SessionBus::request(const std::string& identifier,
                                                                 std::string_view text) {
    if (!isBusName(identifier))
        return std::unexpected(makeScriptingError(kErrorNoSuchProcess, "no bus name: " + identifier));
    if (!isSendableText(text))
        return std::unexpected(
            makeScriptingError(kErrorBadParameter, "the text isn't UTF-8 without NUL of at most 100 MiB"));
    const auto commands = commandsOf(identifier);
    if (!commands) {
        forgetFailedLaunch(identifier);
        return std::unexpected(commands.error());
    }
    if (!commands->request && !commands->exchange)
        return std::unexpected(makeScriptingError(kErrorNotHandled, "no such command: request"));

    FileDescriptor file;
    if (commands->exchange && text.size() >= kSealedTextThreshold) file = makeSealedText(text);
    const std::string path = objectPathForIdentifier(identifier);
    CarriedText answer;
    auto done = connection_.call(
        [&](sd_bus* bus, sd_bus_message** message) {
            const int made = sd_bus_message_new_method_call(bus, message, identifier.c_str(), path.c_str(),
                                                            kScriptingInterface,
                                                            commands->exchange ? "exchange" : "request");
            return made < 0 ? made : putCarriedText(*message, commands->exchange, text, file);
        },
        [&](sd_bus_message* message) { return takeCarriedText(message, answer); });
    if (!done) {
        if (done.error().localizedDescription().starts_with(kNoResultErrorName)) return std::nullopt;
        return std::unexpected(std::move(done.error()));
    }
    if (!answer.file) return std::move(answer.text);
    auto sealed = readSealedText(answer.file);
    if (!sealed) return std::unexpected(makeScriptingError(kErrorBadParameter, sealed.error()));
    return *std::move(sealed);
}

}  // namespace zqcore::platform
