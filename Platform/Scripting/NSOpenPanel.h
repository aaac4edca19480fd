#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSURL.h"

namespace zqcore::platform {

/// How a panel ended.
enum NSModalResponse : int { NSModalResponseCancel = 0, NSModalResponseOK = 1 };

class NSOpenPanel;

/// Who shows open panels: the desktop's portal, a command line, a test. Threads: `present` is called on the
/// thread that begins the panel. Lifetime: held while installed, and by every panel under way.
class ZQ_EXPORT OpenPanelPresenter {
  public:
    /// Takes what the user chose, absent for a cancel. From any thread; only the first call counts, and a
    /// panel whose answer is dropped is cancelled.
    using Answer = std::move_only_function<void(std::optional<NSURL>)>;

    virtual ~OpenPanelPresenter() = default;
    /// Shows a panel with these settings and returns at once.
    virtual void present(const NSOpenPanel& panel, Answer answer) = 0;
};

/// A panel in which the user chooses a file or a folder. It has no window of its own: the installed presenter
/// shows it, in a process without one the desktop's portal, and where there is no portal it is cancelled.
/// Threads: main thread; the handler runs there too, never inside the call. Lifetime: a panel under way holds
/// itself. Failure: a panel that can't be shown is a cancelled one.
class ZQ_EXPORT NSOpenPanel final : public std::enable_shared_from_this<NSOpenPanel> {
    struct Private {};

  public:
    explicit NSOpenPanel(Private) {}

    [[nodiscard]] static std::shared_ptr<NSOpenPanel> openPanel();
    /// From now on panels are shown by `presenter`; a null pointer brings the portal back. Any thread.
    static void installPresenter(std::shared_ptr<OpenPanelPresenter> presenter);

    /// The window level; a presenter whose windows have none ignores it.
    [[nodiscard]] int level() const noexcept { return level_; }
    void setLevel(int level) noexcept { level_ = level; }
    /// The folder shown at first. If folders can be chosen, a missing one is made when the panel begins.
    [[nodiscard]] const std::optional<NSURL>& directoryURL() const noexcept { return directoryURL_; }
    void setDirectoryURL(std::optional<NSURL> url) { directoryURL_ = std::move(url); }
    [[nodiscard]] bool canChooseDirectories() const noexcept { return canChooseDirectories_; }
    void setCanChooseDirectories(bool can) noexcept { canChooseDirectories_ = can; }
    [[nodiscard]] bool canChooseFiles() const noexcept { return canChooseFiles_; }
    void setCanChooseFiles(bool can) noexcept { canChooseFiles_ = can; }
    [[nodiscard]] bool allowsMultipleSelection() const noexcept { return allowsMultipleSelection_; }
    void setAllowsMultipleSelection(bool allows) noexcept { allowsMultipleSelection_ = allows; }
    /// The text above the files.
    [[nodiscard]] const std::string& message() const noexcept { return message_; }
    void setMessage(std::string message) { message_ = std::move(message); }
    /// The text of the confirming button.
    [[nodiscard]] const std::string& prompt() const noexcept { return prompt_; }
    void setPrompt(std::string prompt) { prompt_ = std::move(prompt); }

    /// Shows the panel and returns at once; `handler` runs once, when it has ended.
    void beginWithCompletionHandler(std::move_only_function<void(NSModalResponse)> handler);
    /// What was chosen; absent before the end and after a cancel.
    [[nodiscard]] const std::optional<NSURL>& URL() const noexcept { return url_; }

  private:
    int level_ = 0;
    std::optional<NSURL> directoryURL_;
    bool canChooseDirectories_ = false;
    bool canChooseFiles_ = true;
    bool allowsMultipleSelection_ = false;
    std::string message_;
    std::string prompt_;
    std::optional<NSURL> url_;
};

}  // namespace zqcore::platform
