#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Scripting/NSOpenPanel.h"

namespace zqcore::testkit {

/// Plays the user in front of open panels, from its creation to its end: every panel is answered as told
/// last, or kept open. Threads: main thread.
class ScriptedOpenPanel final {
  public:
    /// What a panel was shown with.
    struct Shown {
        int level = 0;
        std::optional<platform::NSURL> directoryURL;
        bool canChooseDirectories = false;
        bool canChooseFiles = false;
        bool allowsMultipleSelection = false;
        std::string message;
        std::string prompt;
    };

    ScriptedOpenPanel() : state_(std::make_shared<State>()) {
        platform::NSOpenPanel::installPresenter(state_);
    }
    ~ScriptedOpenPanel() { platform::NSOpenPanel::installPresenter(nullptr); }
    ScriptedOpenPanel(const ScriptedOpenPanel&) = delete;
    ScriptedOpenPanel& operator=(const ScriptedOpenPanel&) = delete;

    // How the panels that come are answered; kept open is the beginning.
    void confirmFolderShown() {
        state_->reply = [](const Shown& shown) { return shown.directoryURL; };
    }
    void choose(platform::NSURL url) {
        state_->reply = [url = std::move(url)](const Shown&) { return std::optional(url); };
    }
    void cancel() {
        state_->reply = [](const Shown&) { return std::nullopt; };
    }

    /// Ends the oldest panel that is open.
    void end(std::optional<platform::NSURL> chosen) {
        if (state_->open.empty()) return;
        auto answer = std::move(state_->open.front());
        state_->open.erase(state_->open.begin());
        answer(std::move(chosen));
    }

    [[nodiscard]] const std::vector<Shown>& shown() const noexcept { return state_->shown; }

  private:
    struct State final : platform::OpenPanelPresenter {
        void present(const platform::NSOpenPanel& panel, Answer answer) override {
            shown.push_back({panel.level(), panel.directoryURL(), panel.canChooseDirectories(),
                             panel.canChooseFiles(), panel.allowsMultipleSelection(), panel.message(),
                             panel.prompt()});
            if (reply) {
                answer(reply(shown.back()));
            } else {
                open.push_back(std::move(answer));
            }
        }

        std::function<std::optional<platform::NSURL>(const Shown&)> reply;
        std::vector<Shown> shown;
        std::vector<Answer> open;
    };

    std::shared_ptr<State> state_;
};

}  // namespace zqcore::testkit
