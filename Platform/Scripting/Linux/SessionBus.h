#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Scripting/Linux/ApplicationLaunch.h"
#include "Platform/Scripting/Linux/BusConnection.h"
#include "Platform/Scripting/Linux/Introspection.h"
#include "Platform/Scripting/Linux/SdBusHandles.h"
#include "Platform/Scripting/ScriptingBus.h"

namespace zqcore::platform {

/// Scripting over the D-Bus session bus. What it knows of other processes (who serves an identifier, which
/// commands that process has) is kept fresh by a watch of the name, so that a request to a known target is
/// one round trip and no more. Threads: any; its fields are under the connection's lock. Lifetime: the
/// process's.
class SessionBus final : public ScriptingBus, private BusConnection::Owner {
  public:
    SessionBus();

    bool nameHasOwner(const std::string& identifier) override;
    bool isActivatable(const std::string& identifier) override;
    void start(const std::string& identifier) override;
    std::expected<bool, NSError> knowsRequestCommand(const std::string& identifier) override;
    std::expected<Answer, NSError> request(const std::string& identifier, std::string_view text) override;
    ScriptingServeStatus serve(const std::string& identifier, CommandHandler handler) override;
    void stopServing(const std::string& identifier) override;
    void whenGone(std::function<void()> handler) override;
    bool broadcast(const NSDistributedNotification& notification) override;
    std::shared_ptr<void> listen(const std::string& name, NotificationHandler handler) override;

  private:
    /// Another process that serves an identifier.
    struct Peer {
        SessionBus& bus;
        /// A new number with every watch and every change that it told. What a question found out counts only
        /// for the version that it was asked in: a change that came since is newer.
        std::uint64_t version;
        SdSlotHandle watch{};
        /// The unique name of the process, empty while there is none.
        std::string owner{};
        std::optional<ScriptingCommands> commands{};
        /// The last start of its desktop entry by this process, until it came or a question told its failure.
        std::shared_ptr<ApplicationLaunch> launch{};
    };
    /// An identifier that this process serves.
    struct Served {
        SessionBus& bus;
        std::string identifier;
        std::shared_ptr<const CommandHandler> handler{};
        /// Shared by the identifiers that have one path.
        std::shared_ptr<sd_bus_slot> object{};
        /// Whether the bus has given the name to this process.
        bool ours = false;
        SdSlotHandle claim{};
        /// While another process has the name that was this one's on an earlier bus.
        SdSlotHandle watch{};
    };
    struct Listener {
        SessionBus& bus;
        std::string name;
        NotificationHandler handler;
        std::atomic<bool> ended{false};
        SdSlotHandle match{};
    };
    class HeldCall;
    /// What to do with a message once its sender is known to be of this user, or not.
    using Judged = std::move_only_function<void(sd_bus_message*, bool admitted)>;
    struct Sender {
        SessionBus& bus;
        std::string uniqueName;
        std::vector<std::pair<SdMessageHandle, Judged>> waiting;
    };

    void opened(sd_bus* bus) override;
    void welcomed() override;
    void closing() override;
    void lost() override;

    [[nodiscard]] std::expected<ScriptingCommands, NSError> commandsOf(const std::string& identifier);
    [[nodiscard]] std::expected<ScriptingCommands, NSError> findCommands(const std::string& identifier);
    [[nodiscard]] std::expected<ScriptingCommands, NSError> askForCommands(const std::string& identifier,
                                                                           BusConnection::Deadline deadline);
    /// What a failed start of a desktop entry is to the next one who asks.
    enum class Failed { counts, startsAnew };
    [[nodiscard]] std::shared_ptr<ApplicationLaunch> launch(const std::string& identifier, Failed earlier);
    enum class Watched { asBefore, fromNow };
    [[nodiscard]] bool askForOwner(const std::string& identifier, Watched watched);
    Peer& watch(sd_bus* bus, const std::string& identifier);
    [[nodiscard]] static SdSlotHandle watchOwner(sd_bus* bus, const std::string& identifier,
                                                 sd_bus_message_handler_t handler, void* data);
    void learnOwner(const std::string& identifier, std::uint64_t version, std::string_view owner);
    void forgetAbsent(const std::string& identifier, Failed earlier);
    [[nodiscard]] bool isWanted() const { return !served_.empty() || !listeners_.empty(); }
    void search();
    static int onOwnerChanged(sd_bus_message* message, void* peer, sd_bus_error*);

    [[nodiscard]] int exportObject(sd_bus* bus, Served& served);
    void claim(sd_bus* bus, Served& served);
    [[nodiscard]] Served* addressedBy(sd_bus_message* message);
    static int onClaimed(sd_bus_message* message, void* served, sd_bus_error*);
    static int onServedNameChanged(sd_bus_message* message, void* served, sd_bus_error*);
    void subscribe(sd_bus* bus, Listener& listener);
    void stopListening(const std::shared_ptr<Listener>& listener);
    void judge(sd_bus_message* message, Judged judged);
    void judgeWaiting(Sender& sender, bool admitted);
    void accept(sd_bus_message* message, std::shared_ptr<const CommandHandler> handler);
    void reply(HeldCall& call, const Answer& answer);
    void refuse(HeldCall& call, const std::string& why);
    static int onCommand(sd_bus_message* message, void* bus, sd_bus_error*);
    static int onNotification(sd_bus_message* message, void* listener, sd_bus_error*);
    static int onUserOfSender(sd_bus_message* message, void* sender, sd_bus_error*);

    BusConnection& connection_;
    std::map<std::string, Peer, std::less<>> peers_;
    std::uint64_t lastVersion_ = 0;
    std::map<std::string, Served, std::less<>> served_;
    std::vector<std::shared_ptr<Listener>> listeners_;
    std::set<std::string, std::less<>> admitted_;
    std::map<std::string, Sender, std::less<>> judging_;
    std::shared_ptr<const std::function<void()>> gone_;
    /// The tries to find a bus since one last took this process in, and whether the next one is under way.
    int tries_ = 0;
    bool searching_ = false;
};

}  // namespace zqcore::platform
