#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSResponder.h"
#include "Platform/Base/Export.h"
#include "Platform/Combine/AnyCancellable.h"

namespace zqcore::platform {

class NSAppearance;
class NSEvent;
class NSWindow;

inline constexpr std::string_view NSApplicationDidBecomeActiveNotification =
    "NSApplicationDidBecomeActiveNotification";
inline constexpr std::string_view NSApplicationDidResignActiveNotification =
    "NSApplicationDidResignActiveNotification";
inline constexpr std::string_view NSApplicationDidChangeScreenParametersNotification =
    "NSApplicationDidChangeScreenParametersNotification";
/// The display went away: no window is visible from now on, and none can be shown; nothing was closed.
inline constexpr std::string_view NSApplicationDisplayLostNotification =
    "NSApplicationDisplayLostNotification";

/// The one application object: windows, activation, events and the main loop's turn. A turn of the main loop
/// runs the due timers in the order of their times, then the main queue as it stood, then the display pass
/// (constraints, layout, tracking areas, drawing). Nothing wakes while nothing changes.
/// Threads: main thread, save where told. Lifetime: made at the first use; it holds each visible window.
/// Failure: what an event handler throws is caught, with one log line.
class ZQ_EXPORT NSApplication : public NSResponder {
  public:
    ~NSApplication() override;
    [[nodiscard]] static const std::shared_ptr<NSApplication>& shared();
    /// Closes all windows, drops monitors and the display's handler, and lets the next use make a new one.
    static void resetForTesting();

    // Activation.
    [[nodiscard]] bool isActive() const;
    void activate(bool ignoringOtherApps = true);
    /// The same from any thread: on another than the main one it is queued for that and returns at once.
    static void activateIgnoringOtherApps(bool ignoring);
    void deactivate();

    // Windows.
    /// All that are visible, in the order of showing.
    [[nodiscard]] const std::vector<std::shared_ptr<NSWindow>>& windows() const;
    [[nodiscard]] std::shared_ptr<NSWindow> keyWindow() const;
    [[nodiscard]] std::shared_ptr<NSWindow> mainWindow() const;
    [[nodiscard]] std::shared_ptr<NSWindow> windowWithWindowNumber(int number) const;

    // Events.
    /// Lets the local monitors see the event, then hands it to its window.
    virtual void sendEvent(const std::shared_ptr<NSEvent>& event);
    [[nodiscard]] std::shared_ptr<NSEvent> currentEvent() const;
    /// Performs the action on the target, or without one on the first taker from the key window's first
    /// responder up to the application. False if nobody takes it.
    bool sendAction(const Selector& action, const std::shared_ptr<NSObject>& target, NSObject* sender);
    /// Whether all controls take part in moving the focus by keys; off at first.
    [[nodiscard]] bool isFullKeyboardAccessEnabled() const;
    void setFullKeyboardAccessEnabled(bool enabled);
    /// While a control is pressed: local monitors are silent and timers of the default mode wait. The window
    /// of the press ends it with the release.
    [[nodiscard]] bool isTracking() const;
    void beginTracking();
    void endTracking();

    // Appearance.
    /// The one set, else the display's.
    [[nodiscard]] std::shared_ptr<const NSAppearance> effectiveAppearance() const;
    /// Null follows the display again.
    void setAppearance(std::shared_ptr<const NSAppearance> appearance);
    /// Calls at once with the present appearance, then at each set, synchronously.
    [[nodiscard]] AnyCancellable observeEffectiveAppearance(
        std::function<void(const std::shared_ptr<const NSAppearance>&)> observer);

    // The loop.
    /// Runs the main loop until `stop`.
    void run();
    void stop();
    /// One turn with what is ready now; never waits. Gives whether anything ran.
    bool turn();
    /// Asks for a display pass at the end of this or the next turn.
    void setNeedsDisplayPass();

    struct State;
    /// The parts behind this class, for the others of this folder.
    [[nodiscard]] State& state() noexcept { return *state_; }

  protected:
    void setup() override;

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSApplication();

    std::unique_ptr<State> state_;
};

}  // namespace zqcore::platform
