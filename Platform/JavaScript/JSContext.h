#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/JavaScript/JSValue.h"

namespace zqcore::platform {

/// A place where scripts run, with its own globals. It belongs to the optional component
/// `ZQCore::JavaScript`; the core library doesn't need it.
/// Threads: one at a time. Lifetime: values keep what they need of it. Failure: a script that fails gives
/// undefined, and its message stays until the next script. A script that doesn't end isn't stopped.
class ZQ_EXPORT JSContext final {
  public:
    JSContext();
    ~JSContext();
    JSContext(const JSContext&) = delete;
    JSContext& operator=(const JSContext&) = delete;

    /// Runs the script, which is UTF-8, and gives the value of its last statement.
    [[nodiscard]] std::shared_ptr<JSValue> evaluateScript(std::string_view script);
    /// What the last script failed with, such as "SyntaxError: Unexpected end of script"; empty if it didn't.
    [[nodiscard]] const std::string& exception() const noexcept { return exception_; }

  private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
    std::string exception_;
};

}  // namespace zqcore::platform
