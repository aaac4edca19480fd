#include "Classes/Core/Utility/KeepAlive/KeepAliveHelper.h"

#include <mutex>
#include <utility>

#include "Classes/Core/Utility/DispatchQueueExtension.h"
#include "Classes/Core/Utility/GCDTimer.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Graphics/NSColor.h"

namespace zqcore {

namespace {

constexpr double kTickInterval = 60.0;
constexpr int kTickLimit = 100;
constexpr CGRect kWindowFrame{{1, 1}, {1, 1}};

/// A panel that can't be seen, clicked or photographed.
class ClearWindow final : public NSPanel {
  public:
    using NSPanel::NSPanel;

    [[nodiscard]] bool canBecomeKey() const override { return false; }
    [[nodiscard]] bool canBecomeMain() const override { return false; }

  protected:
    void setup() override {
        NSPanel::setup();
        setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces |
                              NSWindowCollectionBehaviorTransient | NSWindowCollectionBehaviorStationary |
                              NSWindowCollectionBehaviorIgnoresCycle |
                              NSWindowCollectionBehaviorCanJoinAllApplications);
        setLevel(NSModalPanelWindowLevel);
        setBackgroundColor(NSColor::clearColor());
        setHasShadow(false);
        setOpaque(false);
        setIgnoresMouseEvents(true);
        setSharingType(NSWindowSharingType::none);
    }
};

struct State {
    // Main thread only.
    std::shared_ptr<ClearWindow> window;
    // `endTimer` may come from any thread.
    std::mutex mutex;
    std::shared_ptr<GCDTimer> timer;
    // On the queue only.
    int ticks = 0;
};

State& state() {
    // Never ended: the timer's queue may still tick while the process goes.
    static State& shared = *new State;
    return shared;
}

std::shared_ptr<GCDTimer> exchangeTimer(std::shared_ptr<GCDTimer> timer) {
    const std::lock_guard lock(state().mutex);
    return std::exchange(state().timer, std::move(timer));
}

}  // namespace

void KeepAliveHelper::fire() {
    ZQLogInfo("启用保活");
    NSApplication::activateIgnoringOtherApps(true);
    DispatchQueueExtension::safeMain([] {
        if (state().window) return;
        const auto& process = NSProcessInfo::processInfo();
        process.disableAutomaticTermination("KeepAliveHelper");
        process.disableSuddenTermination();
        startTimer();
        state().window = makeObject<ClearWindow>();
        state().window->setFrame(kWindowFrame, true);
        state().window->orderFront();
    });
}

void KeepAliveHelper::stop() {
    ZQLogInfo("停止保活");
    DispatchQueueExtension::safeMain([] {
        if (!state().window) return;
        endTimer();
        // Cleared only when closed: who hears of the closing still finds it.
        state().window->close();
        state().window.reset();
    });
}

void KeepAliveHelper::endTimer() {
    if (const auto timer = exchangeTimer(nullptr)) timer->invalidate();
}

std::shared_ptr<NSWindow> KeepAliveHelper::window() { return state().window; }

const std::shared_ptr<DispatchQueue>& KeepAliveHelper::queue() {
    static const auto& shared =
        *new std::shared_ptr<DispatchQueue>(DispatchQueue::serial("com.tessaradev.ZQCore.KeepAliveHelper"));
    return shared;
}

int KeepAliveHelper::tickCountForTesting() { return state().ticks; }

void KeepAliveHelper::startTimer() {
    const auto timer = GCDTimer::make(kTickInterval, true, queue(), [](GCDTimer&) {
        if (++state().ticks == kTickLimit) state().ticks = 0;
    });
    exchangeTimer(timer);
    timer->fire();
}

}  // namespace zqcore
