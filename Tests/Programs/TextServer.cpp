// A scripting server whose command does what its text says. Prints "serving" when it serves.
// Usage: TextServer IDENTIFIER
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Platform/Base/NSObject.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Scripting/NSScriptSuiteRegistry.h"

using namespace zqcore::platform;

namespace {

class TextCommand final : public NSScriptCommand {
  public:
    using NSScriptCommand::NSScriptCommand;

    std::optional<std::string> performDefaultImplementation() override {
        const std::string& text = *directParameter().asString();
        if (text == "die") ::_exit(3);
        if (text == "nothing") return std::nullopt;
        if (text == "main?") return isMainThread() ? "main" : "other";
        if (text == "pid?") return std::to_string(::getpid());
        if (text == "bad answer") return std::string("a\0b", 3);
        if (text == "drop") {
            suspendExecution();
            return std::nullopt;
        }
        if (text == "hold") {
            held.push_back(hold());
            return std::nullopt;
        }
        if (text == "release") {
            for (const auto& command : std::exchange(held, {})) command->resumeExecutionWithResult("late");
            return "released";
        }
        if (text == "thread") {
            std::thread([command = hold()] {
                command->resumeExecutionWithResult("from a thread");
                command->resumeExecutionWithResult("again");
            }).detach();
            return "ignored";
        }
        if (text.starts_with("repeat ")) return std::string(std::stoul(text.substr(7)), 'x');
        return text;
    }

  private:
    std::shared_ptr<NSScriptCommand> hold() {
        suspendExecution();
        return std::static_pointer_cast<NSScriptCommand>(shared_from_this());
    }

    static inline std::vector<std::shared_ptr<NSScriptCommand>> held;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const auto status = NSScriptSuiteRegistry::serve(argv[1], [](NSScriptCommandDescription description) {
        return makeObject<TextCommand>(std::move(description));
    });
    std::puts(status == ScriptingServeStatus::serving ? "serving" : "refused");
    std::fflush(stdout);
    if (status == ScriptingServeStatus::serving) RunLoop::main().run();
    return status == ScriptingServeStatus::serving ? 0 : 1;
}
