#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

class NSButton;
class NSPanel;
class NSWindow;

enum class NSAlertStyle { warning = 0, informational = 1, critical = 2 };

/// What ended an alert: 1000 for the first button, 1001 for the second and so on, or this when its display
/// went away.
using NSAlertResponse = long;
inline constexpr NSAlertResponse NSAlertFirstButtonReturn = 1000;
inline constexpr NSAlertResponse NSAlertAbortedResponse = -1001;

/// A question to the user in a panel of its own. Without buttons it has one, "OK". The first one is pressed
/// by Return, one titled "Cancel" by Escape. Threads: main thread. Lifetime: kept while it is open. Failure:
/// without a display, or when its panel is closed otherwise, the answer is `NSAlertAbortedResponse`.
class ZQ_EXPORT NSAlert final : public NSObject {
  public:
    using Completion = std::function<void(NSAlertResponse)>;

    [[nodiscard]] NSAlertStyle alertStyle() const noexcept { return style_; }
    void setAlertStyle(NSAlertStyle style) noexcept { style_ = style; }
    [[nodiscard]] const std::string& messageText() const noexcept { return messageText_; }
    void setMessageText(std::string text) { messageText_ = std::move(text); }
    [[nodiscard]] const std::string& informativeText() const noexcept { return informativeText_; }
    void setInformativeText(std::string text) { informativeText_ = std::move(text); }
    std::shared_ptr<NSButton> addButtonWithTitle(std::string title);
    [[nodiscard]] const std::vector<std::shared_ptr<NSButton>>& buttons() const noexcept { return buttons_; }

    /// Opens over the window; the completion comes on the main thread with the answer.
    void beginSheetModalForWindow(const std::shared_ptr<NSWindow>& window, Completion completion);
    /// Opens in the middle of the screen and runs the main loop until it is answered.
    [[nodiscard]] NSAlertResponse runModal();
    /// The panel while it is open.
    [[nodiscard]] const std::shared_ptr<NSPanel>& window() const noexcept { return panel_; }

    /// Lets a test answer each `runModal` at once; an empty one lets the user answer again.
    static void setAnswerForTesting(std::function<NSAlertResponse(const NSAlert&)> answer);

    /// What the buttons do.
    void buttonPressed(NSObject* sender);

  private:
    void open(const std::shared_ptr<NSWindow>& over, Completion completion);
    void end(NSAlertResponse response);

    NSAlertStyle style_ = NSAlertStyle::warning;
    std::string messageText_;
    std::string informativeText_;
    std::vector<std::shared_ptr<NSButton>> buttons_;
    std::shared_ptr<NSPanel> panel_;
    std::shared_ptr<NSObject> lossObserver_;
    std::shared_ptr<NSAlert> kept_;
    Completion completion_;
};

}  // namespace zqcore::platform
