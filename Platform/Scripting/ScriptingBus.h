#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// A notification that went to every process of the user.
struct NSDistributedNotification {
    std::string name;
    /// Who sent it, commonly a text; null for none.
    Value object;
    /// Property-list values; absent for none.
    std::optional<ValueDictionary> userInfo;
};

/// How a claim to serve an identifier ended.
enum class ScriptingServeStatus { serving, invalidIdentifier, nameTaken, noBus };

/// What carries commands and notifications between the processes of one user. The real one is the D-Bus
/// session bus: a bundle identifier is a bus name; the object's path is the identifier with dots as slashes
/// and every other foreign character as `_`; its one interface "com.tessara.ZQCore.Scripting" has `request(s)
/// → s`, which any bus tool can call, and `exchange(v) → v`, the same with the text as bytes or, from 64 KiB
/// up, as a sealed memory file. A command that ends without a result is answered with the error
/// "com.tessara.ZQCore.Scripting.Error.NoResult".
/// Security: the session bus takes connections of its own user only; beside that, a command from a process of
/// another user is refused here, by the user number that the bus tells. What arrives is checked: texts are
/// UTF-8 without NUL and at most 100 MiB, memory files are sealed. A notification's dictionary has at most
/// 64 MiB, the largest array of a message (D-Bus specification, "Container types").
/// Time: a call waits 120 seconds at most. Threads: every operation from any, and each may block for a round
/// trip; `broadcast` does on a new connection and behind a full socket only. Lifetime: it connects at first
/// use, and again after the bus was lost, when it also claims again what was served. While something is
/// served or listened for it looks for a bus by itself: after 0.1, 0.2, 0.4 ... 25.6 seconds, and every 25.6
/// seconds from then on. Failure: a scripting error (-600 not there, -609 no bus, -1708 no such command,
/// -1712 no answer, -1715 refused text, -1743 not permitted) whose text keeps the bus's own words; never a
/// hang.
class ZQ_EXPORT ScriptingBus {
  public:
    /// The text that a command gave; absent if it ended without one.
    using Answer = std::optional<std::string>;
    /// Takes the one answer, on any thread. Dropped uncalled, it answers that there is none.
    using Reply = std::move_only_function<void(Answer)>;
    /// Takes a command's text. Called on a thread of the bus, so it only hands on.
    using CommandHandler = std::function<void(std::string text, Reply reply)>;
    using NotificationHandler = std::function<void(const NSDistributedNotification&)>;

    virtual ~ScriptingBus() = default;

    /// The bus in force: the session's, unless a test kit installed another.
    [[nodiscard]] static ScriptingBus& current();
    /// Puts `bus` in force, or the session's again for a null pointer.
    static void installForTesting(ScriptingBus* bus) noexcept;

    /// Whether a process serves `identifier` now.
    [[nodiscard]] virtual bool nameHasOwner(const std::string& identifier) = 0;
    /// Whether the bus can start a process for `identifier`.
    [[nodiscard]] virtual bool isActivatable(const std::string& identifier) = 0;
    /// Starts the process for `identifier` unless there is one: by the bus or, where that doesn't know it, by
    /// its desktop entry. Doesn't wait for it; a question or a command that comes meanwhile does.
    virtual void start(const std::string& identifier) = 0;
    /// Whether the process has the command `request:`. It asks a process once for as long as that serves; a
    /// target that isn't running is started by the question. Its start and its answer have one limit
    /// together. The reason if it can't be told; `request` would ask, and start, once more.
    [[nodiscard]] virtual std::expected<bool, NSError> knowsRequestCommand(const std::string& identifier) = 0;
    /// Sends the command `request:` and waits for its answer. A target that isn't known yet is asked for its
    /// commands first, as by `knowsRequestCommand`; the call has its whole limit after that.
    [[nodiscard]] virtual std::expected<Answer, NSError> request(const std::string& identifier,
                                                                 std::string_view text) = 0;

    /// Claims `identifier` and hands every `request:` to `handler` from then on. A second call for the same
    /// identifier replaces the handler; one that fails changes nothing. Where another process takes the name
    /// first on a new bus, that is told in the log, and the name is claimed again as soon as it is free.
    virtual ScriptingServeStatus serve(const std::string& identifier, CommandHandler handler) = 0;
    /// Gives `identifier` up; commands that arrived before may still answer.
    virtual void stopServing(const std::string& identifier) = 0;
    /// Calls `handler` from then on, on a global queue, when a bus that this process served or listened on
    /// was lost and none has come up in its place after 1.5 seconds. The process goes on looking for one.
    virtual void whenGone(std::function<void()> handler) = 0;

    /// Sends a notification to everyone, this process included. False if it couldn't be handed to the bus:
    /// there is none, or no message can hold it.
    virtual bool broadcast(const NSDistributedNotification& notification) = 0;
    /// Calls `handler` for every notification of that name, in each sender's order, on a thread of the bus,
    /// until the last reference to the result goes.
    [[nodiscard]] virtual std::shared_ptr<void> listen(const std::string& name,
                                                       NotificationHandler handler) = 0;
};

}  // namespace zqcore::platform
