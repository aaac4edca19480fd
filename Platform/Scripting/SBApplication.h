#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"

namespace zqcore::platform {

/// Hears of an application's failed events.
class ZQ_EXPORT SBApplicationDelegate {
  public:
    virtual ~SBApplicationDelegate() = default;
    /// The command `event` failed. Called inside the call that sent it, on its thread.
    virtual void eventDidFail(std::string_view event, const NSError& error) = 0;
};

/// Another application, addressed by its bundle identifier, and its scripting command `request:`.
/// Threads: every operation from any; `respondsToSelector` and `request` block. Lifetime: a value of one
/// caller; it holds no connection, and its delegate only weakly. Failure: a failed event goes to the delegate
/// first, then the call gives nothing.
class ZQ_EXPORT SBApplication final {
  public:
    /// The application with that bundle identifier, null pointer if none is installed: nobody serves the
    /// identifier, the bus can't start it, and no desktop entry names it. Starts nothing.
    [[nodiscard]] static std::shared_ptr<SBApplication> make(std::string bundleIdentifier);

    [[nodiscard]] std::shared_ptr<SBApplicationDelegate> delegate() const;
    void setDelegate(std::weak_ptr<SBApplicationDelegate> delegate);

    /// Whether it runs and serves at this moment.
    [[nodiscard]] bool isRunning() const;
    /// Starts the application unless it runs: by the bus or, where that can't, by the program of its desktop
    /// entry. Doesn't wait for it; a command sent meanwhile does.
    void activate();
    /// Whether it has that command; only "request:" can be known. A target that isn't running is started by
    /// the question, two minutes at most. One that can't answer is taken to have it: the next `request` tells
    /// what is wrong, without asking again.
    [[nodiscard]] bool respondsToSelector(std::string_view selector) const;
    /// Sends `request:` with `text` and waits for its result, two minutes at most; a target that wasn't asked
    /// by `respondsToSelector` may take as long before that to start. Absent if the command ended without a
    /// result, and after a failed event.
    [[nodiscard]] std::optional<std::string> request(std::string_view text);
    /// The object itself.
    [[nodiscard]] const SBApplication& get() const noexcept { return *this; }

  private:
    explicit SBApplication(std::string bundleIdentifier);

    [[nodiscard]] std::optional<NSError> takeFailedQuestion();

    std::string identifier_;
    mutable std::mutex mutex_;
    std::weak_ptr<SBApplicationDelegate> delegate_;
    /// Why the last question had no answer, until a request has told it.
    mutable std::optional<NSError> failedQuestion_;
};

}  // namespace zqcore::platform
