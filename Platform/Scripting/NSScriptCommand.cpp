#include "Platform/Scripting/NSScriptCommand.h"

#include <utility>

namespace zqcore::platform {

NSScriptCommand::NSScriptCommand(NSScriptCommandDescription commandDescription)
    : description_(std::move(commandDescription)) {}

NSScriptCommand::~NSScriptCommand() {
    if (reply_) reply_(std::nullopt);
}

std::optional<std::string> NSScriptCommand::performDefaultImplementation() { return std::nullopt; }

void NSScriptCommand::suspendExecution() {
    const std::lock_guard lock(mutex_);
    if (state_ == State::running) state_ = State::suspended;
}

void NSScriptCommand::resumeExecutionWithResult(std::optional<std::string> result) {
    Reply reply;
    {
        const std::lock_guard lock(mutex_);
        if (state_ != State::suspended) return;
        state_ = State::ended;
        reply = std::exchange(reply_, nullptr);
    }
    if (reply) reply(std::move(result));
}

void NSScriptCommand::execute(Reply reply) {
    {
        const std::lock_guard lock(mutex_);
        if (state_ != State::created) return;
        state_ = State::running;
        reply_ = std::move(reply);
    }
    auto result = performDefaultImplementation();
    Reply now;
    {
        // Suspended, or even resumed by now on another thread: what was returned is not the answer.
        const std::lock_guard lock(mutex_);
        if (state_ != State::running) return;
        state_ = State::ended;
        now = std::exchange(reply_, nullptr);
    }
    if (now) now(std::move(result));
}

}  // namespace zqcore::platform
