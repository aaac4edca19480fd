#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// What the scripting system knows of a command before it runs: its name, and the direct parameter of this
/// call.
struct NSScriptCommandDescription {
    std::string commandName;
    /// Null when the call had no direct parameter.
    Value directParameter;
};

/// One command that another process sent. The scripting system makes it through the factory that a server
/// registered, and runs it on the main thread. Threads: `performDefaultImplementation` on the thread that
/// executes it; suspend and resume from any. Lifetime: the scripting system holds it until it has answered; a
/// suspended command is held by whoever will resume it, and one that dies without an answer answers with
/// nothing. Failure: a resume without an unmatched suspend does nothing, so a command answers once.
class ZQ_EXPORT NSScriptCommand : public NSObject {
  public:
    using Reply = std::move_only_function<void(std::optional<std::string>)>;

    explicit NSScriptCommand(NSScriptCommandDescription commandDescription);
    ~NSScriptCommand() override;

    [[nodiscard]] const NSScriptCommandDescription& commandDescription() const noexcept {
        return description_;
    }
    /// The command's direct parameter, null if there is none.
    [[nodiscard]] const Value& directParameter() const noexcept { return description_.directParameter; }

    /// The command's work; the base has none and gives nothing. What it gives is the answer unless it
    /// suspended.
    virtual std::optional<std::string> performDefaultImplementation();

    /// Says that the answer comes later; the calling thread goes on.
    void suspendExecution();
    /// Ends a suspended command with its answer. May come before the suspended work has returned.
    void resumeExecutionWithResult(std::optional<std::string> result);

    /// For the scripting system: runs the command now and hands its one answer to `reply`, on this thread or
    /// on the one that resumes.
    void execute(Reply reply);

  private:
    enum class State { created, running, suspended, ended };

    NSScriptCommandDescription description_;
    std::mutex mutex_;
    State state_ = State::created;
    Reply reply_;
};

}  // namespace zqcore::platform
