#include "Platform/Scripting/NSOpenPanel.h"

#include <mutex>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Scripting/PortalOpenPanel.h"

namespace zqcore::platform {
namespace {

struct Presenters {
    std::mutex mutex;
    std::shared_ptr<OpenPanelPresenter> installed;
};

Presenters& presenters() {
    // Never ended: threads may still ask while the process goes.
    static auto& shared = *new Presenters;
    return shared;
}

std::shared_ptr<OpenPanelPresenter> presenter() {
    {
        const std::lock_guard lock(presenters().mutex);
        if (presenters().installed) return presenters().installed;
    }
    return std::make_shared<PortalOpenPanel>();
}

/// Calls its function once: with the first answer, or with a cancel if it dies without one.
class OnceAnswer {
  public:
    explicit OnceAnswer(OpenPanelPresenter::Answer function) : function_(std::move(function)) {}
    OnceAnswer(OnceAnswer&& other) noexcept : function_(std::exchange(other.function_, nullptr)) {}
    OnceAnswer& operator=(OnceAnswer&&) = delete;
    ~OnceAnswer() { (*this)(std::nullopt); }

    void operator()(std::optional<NSURL> chosen) {
        if (auto function = std::exchange(function_, nullptr)) function(std::move(chosen));
    }

  private:
    OpenPanelPresenter::Answer function_;
};

}  // namespace

std::shared_ptr<NSOpenPanel> NSOpenPanel::openPanel() { return std::make_shared<NSOpenPanel>(Private{}); }

void NSOpenPanel::installPresenter(std::shared_ptr<OpenPanelPresenter> presenter) {
    const std::lock_guard lock(presenters().mutex);
    presenters().installed.swap(presenter);
}

void NSOpenPanel::beginWithCompletionHandler(std::move_only_function<void(NSModalResponse)> handler) {
    url_.reset();
    // A folder that isn't there can't be shown, and so can't be confirmed.
    if (directoryURL_ && directoryURL_->isFileURL() && canChooseDirectories_) {
        (void)NSFileManager::defaultManager().createDirectoryAtPath(directoryURL_->path(),
                                                                    /*withIntermediateDirectories=*/true);
    }
    OnceAnswer answer(
        [panel = shared_from_this(), handler = std::move(handler)](std::optional<NSURL> chosen) mutable {
            DispatchQueue::main()->async([panel = std::move(panel), handler = std::move(handler),
                                          chosen = std::move(chosen)]() mutable {
                panel->url_ = std::move(chosen);
                if (handler) handler(panel->url_ ? NSModalResponseOK : NSModalResponseCancel);
            });
        });
    presenter()->present(*this, std::move(answer));
}

}  // namespace zqcore::platform
