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
    for (auto& [identifier, served] : served_) {
        served.object.reset();
        served.claim.reset();
        served.watch.reset();
        served.ours = false;
    }
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

SessionBus::Peer& SessionBus::watch(sd_bus* bus, const std::string& identifier) {
    const auto [place, made] = peers_.try_emplace(identifier, *this, lastVersion_ + 1);
    Peer& peer = place->second;
    if (!made) return peer;
    ++lastVersion_;
    peer.watch = watchOwner(bus, identifier, &SessionBus::onOwnerChanged, &peer);
    return peer;
}

SdSlotHandle SessionBus::watchOwner(sd_bus* bus, const std::string& identifier,
                                    sd_bus_message_handler_t handler, void* data) {
    const std::string rule = std::string("type='signal',sender='") + kDaemon + "',interface='" + kDaemon +
                             "',member='NameOwnerChanged',arg0='" + identifier + "'";
    sd_bus_slot* slot = nullptr;
    // Its own callback for the daemon's answer: without one a refusal would end the connection.
    sd_bus_add_match_async(
        bus, &slot, rule.c_str(), handler, [](sd_bus_message*, void*, sd_bus_error*) { return 1; }, data);
    return SdSlotHandle(slot);
}

int SessionBus::onOwnerChanged(sd_bus_message* message, void* pointer, sd_bus_error*) {
    auto& peer = *static_cast<Peer*>(pointer);
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &now) < 0) return 0;
    peer.version = ++peer.bus.lastVersion_;
    peer.owner = now;
    peer.commands.reset();
    if (peer.owner.empty()) return 0;
    if (const auto launch = std::exchange(peer.launch, nullptr)) launch->cameUp();
    return 0;
}

void SessionBus::learnOwner(const std::string& identifier, std::uint64_t version, std::string_view owner) {
    const auto peer = peers_.find(identifier);
    if (peer == peers_.end() || peer->second.version != version) return;
    if (peer->second.owner != owner) peer->second.commands.reset();
    peer->second.owner = owner;
}

// Ends the watch of a name that nobody has and nobody is to take.
void SessionBus::forgetAbsent(const std::string& identifier, Failed earlier) {
    const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
    const auto peer = peers_.find(identifier);
    if (peer == peers_.end()) return;
    auto& launch = peer->second.launch;
    if (launch && earlier == Failed::startsAnew && !launch->pending()) launch.reset();
    if (!launch && peer->second.owner.empty()) peers_.erase(peer);
}

bool SessionBus::askForOwner(const std::string& identifier, Watched watched) {
    // No version of a name that isn't watched: its changes aren't told, so nothing may be kept.
    std::uint64_t version = 0;
    const auto done = connection_.call(
        [&](sd_bus* bus, sd_bus_message** message) {
            if (watched == Watched::fromNow) watch(bus, identifier);
            if (const auto peer = peers_.find(identifier); peer != peers_.end())
                version = peer->second.version;
            const int made =
                sd_bus_message_new_method_call(bus, message, kDaemon, kDaemonPath, kDaemon, "GetNameOwner");
            return made < 0 ? made : sd_bus_message_append(*message, "s", identifier.c_str());
        },
        [&](sd_bus_message* message) {
            const char* owner = nullptr;
            const int read = sd_bus_message_read(message, "s", &owner);
            if (read >= 0) learnOwner(identifier, version, owner);
            return read;
        });
    if (!done && done.error().code() == kErrorNoSuchProcess) {
        const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
        learnOwner(identifier, version, "");
    }
    return done.has_value();
}

bool SessionBus::nameHasOwner(const std::string& identifier) {
    if (!isBusName(identifier)) return false;
    bool watched = false;
    {
        BusConnection::Access access(connection_);
        if (access.failure() < 0) return false;
        access.takeInArrived();
        const auto peer = peers_.find(identifier);
        watched = peer != peers_.end();
        if (watched && !peer->second.owner.empty()) return true;
    }
    // What isn't known, or known not to be there, is worth a question. Only a name that has an owner is
    // watched from then on, so that asking for names costs nothing later. It is asked for again behind the
    // watch: from there on no change can be missed.
    const bool there =
        askForOwner(identifier, Watched::asBefore) && (watched || askForOwner(identifier, Watched::fromNow));
    if (!there) forgetAbsent(identifier, Failed::counts);
    return there;
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

// Nothing where there is nothing to wait for: it has come meanwhile, or has no desktop entry.
std::shared_ptr<ApplicationLaunch> SessionBus::launch(const std::string& identifier, Failed earlier) {
    const auto entry = findDesktopEntry(identifier);
    BusConnection::Access access(connection_);
    access.takeInArrived();
    if (access.failure() < 0) return nullptr;
    if (const auto peer = peers_.find(identifier); peer != peers_.end()) {
        if (!peer->second.owner.empty()) return nullptr;
        const auto& known = peer->second.launch;
        if (known && (known->pending() || (known->failed() && earlier == Failed::counts))) return known;
    }
    if (!entry) return nullptr;
    // Watched before the start, so that its coming can't be missed.
    Peer& peer = watch(access.bus(), identifier);
    return peer.launch = ApplicationLaunch::start(*entry, callLimit());
}

std::expected<ScriptingCommands, NSError> SessionBus::commandsOf(const std::string& identifier) {
    auto commands = findCommands(identifier);
    // A failure is told once; the next question starts the target anew.
    if (!commands) forgetAbsent(identifier, Failed::startsAnew);
    return commands;
}

std::expected<ScriptingCommands, NSError> SessionBus::findCommands(const std::string& identifier) {
    const auto deadline = BusConnection::nextDeadline();
    auto commands = askForCommands(identifier, deadline);
    if (commands || !commands.error().localizedDescription().starts_with(SD_BUS_ERROR_SERVICE_UNKNOWN))
        return commands;
    // Nobody serves it and the bus can't start it. A start just before that failed isn't tried again.
    if (const auto launched = launch(identifier, Failed::counts)) {
        // The bus answers in order: the watch is in force when this is, so who comes later is heard of.
        if (askForOwner(identifier, Watched::asBefore)) launched->cameUp();
        if (auto up = launched->wait(); !up) return std::unexpected(std::move(up.error()));
    } else if (!nameHasOwner(identifier)) {
        return commands;
    }
    return askForCommands(identifier, deadline);
}

std::expected<ScriptingCommands, NSError> SessionBus::askForCommands(const std::string& identifier,
                                                                     BusConnection::Deadline deadline) {
    {
        const BusConnection::Access access(connection_);
        if (access.failure() < 0) return std::unexpected(scriptingErrorForErrno(access.failure(), "no bus"));
        const auto peer = peers_.find(identifier);
        if (peer != peers_.end() && peer->second.commands) return *peer->second.commands;
    }
    ScriptingCommands commands;
    std::uint64_t version = 0;
    const std::string path = objectPathForIdentifier(identifier);
    auto done = connection_.call(
        [&](sd_bus* bus, sd_bus_message** message) {
            version = watch(bus, identifier).version;
            return sd_bus_message_new_method_call(bus, message, identifier.c_str(), path.c_str(),
                                                  "org.freedesktop.DBus.Introspectable", "Introspect");
        },
        [&](sd_bus_message* message) {
            const char* document = nullptr;
            const int read = sd_bus_message_read(message, "s", &document);
            if (read < 0) return read;
            commands = commandsInDocument(document);
            const char* sender = sd_bus_message_get_sender(message);
            const auto peer = peers_.find(identifier);
            if (!sender || peer == peers_.end()) return read;
            // One that the question started came to the bus since, which is a change.
            if (peer->second.version != version && peer->second.owner != sender) return read;
            peer->second.owner = sender;
            peer->second.commands = commands;
            return read;
        },
        deadline);
    if (done) return commands;
    if (done.error().code() == kErrorNoSuchProcess) {
        const BusConnection::Access access(connection_, BusConnection::Access::Opening::never);
        learnOwner(identifier, version, "");
    }
    return std::unexpected(std::move(done.error()));
}

std::expected<bool, NSError> SessionBus::knowsRequestCommand(const std::string& identifier) {
    if (!isBusName(identifier)) return false;
    auto commands = commandsOf(identifier);
    if (commands) return commands->request || commands->exchange;
    if (commands.error().code() == kErrorNotHandled) return false;
    return std::unexpected(std::move(commands.error()));
}

std::expected<ScriptingBus::Answer, NSError> SessionBus::request(const std::string& identifier,
                                                                 std::string_view text) {
    if (!isBusName(identifier))
        return std::unexpected(makeScriptingError(kErrorNoSuchProcess, "no bus name: " + identifier));
    if (!isSendableText(text))
        return std::unexpected(
            makeScriptingError(kErrorBadParameter, "the text isn't UTF-8 without NUL of at most 100 MiB"));
    const auto commands = commandsOf(identifier);
    if (!commands) return std::unexpected(commands.error());
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
