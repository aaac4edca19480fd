#include "Classes/UI/TipManager/TipManager.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Classes/Core/Utility/AppKit/ZQEventMonitor.h"
#include "Classes/Core/Utility/DispatchQueueExtension.h"
#include "Classes/UI/TipManager/FrameChecker.h"
#include "Classes/UI/TipManager/TipPlacement.h"
#include "Classes/UI/TipManager/TipWindow.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/Base/Clock.h"
#include "Platform/Combine/WillDeallocSignal.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Foundation/NotificationSignal.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore {

namespace {

/// How long the pointer rests before a delayed tip shows.
constexpr double kDelay = 1.0;
/// For how long after a tip the next one comes without a wait.
constexpr std::chrono::seconds kNoWaitAfterClose{1};

constexpr NSEventMask kPressMask =
    NSEventMaskFromType(NSEventType::leftMouseDown) | NSEventMaskFromType(NSEventType::rightMouseDown) |
    NSEventMaskFromType(NSEventType::keyDown) | NSEventMaskFromType(NSEventType::otherMouseDown);
constexpr NSEventMask kShownMask =
    kPressMask | NSEventMaskFromType(NSEventType::mouseMoved) | NSEventMaskFromType(NSEventType::scrollWheel);
static_assert(kPressMask == 0x200040A && kShownMask == 0x240042A);

using CloseCallback = TipManager::CloseCallback;
using View = std::shared_ptr<NSView>;

/// All of it belongs to the main thread.
struct State {
    TipDisplayStrategy displayStrategy = TipDisplayStrategy::immediately;
    std::shared_ptr<TipWindow> tipWindow;
    std::weak_ptr<NSView> currentView;
    std::weak_ptr<NSView> delayView;
    CloseCallback closeCallback;
    std::shared_ptr<RACDisposable> viewDisposable;
    std::shared_ptr<RACDisposable> windowDisposable;
    /// Of the tip that waits or of the one that is shown, never both.
    std::shared_ptr<ZQEventMonitor> eventMonitor;
    std::shared_ptr<NSTimer> delayTimer;
    Date lastCloseTime{};
};

State& state() {
    // Never ended: views that go with the process still look for their tip.
    static State& shared = *new State;
    return shared;
}

void stopEventMonitor() {
    if (const auto monitor = std::exchange(state().eventMonitor, nullptr)) monitor->stop();
}

void startEventMonitor(NSEventMask mask, ZQEventMonitor::Handler handler) {
    state().eventMonitor = ZQEventMonitor::bothMonitorWithEvent(mask, std::move(handler));
    state().eventMonitor->start();
}

void dispose(std::shared_ptr<RACDisposable>& disposable) {
    if (const auto held = std::exchange(disposable, nullptr)) held->dispose();
}

// Also called while a view goes, where nothing may be thrown.
void run(const CloseCallback& callback) {
    if (callback) guardedCall("close callback of a tip", callback);
}

void endTimer() {
    state().delayView.reset();
    stopEventMonitor();
    if (const auto timer = std::exchange(state().delayTimer, nullptr)) timer->invalidate();
}

void resetData() {
    state().currentView.reset();
    state().closeCallback = nullptr;
    dispose(state().viewDisposable);
    dispose(state().windowDisposable);
    stopEventMonitor();
}

void closeDirectly() {
    const auto callback = std::exchange(state().closeCallback, nullptr);
    resetData();
    if (const auto window = state().tipWindow) {
        window->close();
        state().lastCloseTime = Clock::current().wallNow();
    }
    state().tipWindow = nullptr;
    run(callback);
}

/// Whether a tip may show, or stay, for the view.
bool checkIfNeedShow(const View& view) {
    const auto window = view ? view->window() : nullptr;
    if (!window || !window->isVisible() || !window->isOnActiveSpace()) return false;
    const auto frame = zq_frameInScreen(*view);
    if (!frame || !CGRectContainsPoint(*frame, NSEvent::mouseLocation())) return false;
    const auto screen = window->screen();
    return screen && CGRectContainsRect(screen->frame(), *frame);
}

std::shared_ptr<NSScreen> fetchScreen(const NSView& view) {
    const auto window = view.window();
    if (!window) return NSScreen::mainScreen();
    if (auto screen = window->screen()) return screen;
    // A window wholly off its screens; an edge that two of them share belongs to the first that takes it.
    const CGPoint corner = zq_frameInScreen(view).value_or(CGRect{}).origin;
    const auto screens = NSScreen::screens();
    for (const auto contains : {NSPointInRect, ZQPointInRect}) {
        const auto found = std::ranges::find_if(
            screens, [&](const auto& screen) { return contains(corner, screen->frame()); });
        if (found != screens.end()) return *found;
    }
    return NSScreen::mainScreen();
}

std::optional<CGRect> fixedWindowFrame(const NSView& view, CGSize windowSize, const TipInfo& info) {
    const auto target = zq_frameInScreen(view);
    if (!target) return std::nullopt;
    const auto screen = fetchScreen(view);
    if (!screen) return std::nullopt;
    return tip_placement::fixedWindowFrame(*target, windowSize, info, screen->visibleFrame());
}

void handleEventWhileShown(const NSEvent& event) {
    if ((event.mask() & kPressMask) != 0 || !checkIfNeedShow(state().currentView.lock())) closeDirectly();
}

void followEndOf(const View& view) {
    const auto closeAny = [] { TipManager::close(); };
    // The signal of an object's end has no value, only its completion.
    state().viewDisposable =
        rac_willDeallocSignal(view).subscribe([closeAny](const RACUnit&) { closeAny(); }, closeAny);
    if (const auto window = view->window()) {
        state().windowDisposable = rac_addObserverForName(NSNotificationCenter::defaultCenter(),
                                                          std::string(NSWindowWillCloseNotification), window)
                                       .takeUntil(rac_willDeallocSignal(window))
                                       .subscribeNext([closeAny](const auto&) { closeAny(); });
    }
}

void showTipDirectly(const View& view, const std::shared_ptr<TipInfo>& info, CloseCallback closeCallback) {
    // Taken out before it runs, so that what it asks for in turn doesn't meet it again.
    const auto replaced = std::exchange(state().closeCallback, nullptr);
    if (state().currentView.lock() != view) run(replaced);
    if (!checkIfNeedShow(view)) {
        closeDirectly();
        return;
    }
    resetData();
    state().currentView = view;
    state().closeCallback = std::move(closeCallback);
    followEndOf(view);
    startEventMonitor(kShownMask,
                      [](const std::shared_ptr<NSEvent>& event) { handleEventWhileShown(*event); });

    if (!state().tipWindow) state().tipWindow = makeObject<TipWindow>();
    if (!info->text || info->text->empty()) {
        closeDirectly();
        return;
    }
    const auto window = state().tipWindow;
    const auto& tipView = window->tipViewController()->tipView();
    tipView->update(*info);
    const CGSize cardSize = tipView->fittingSize();
    const CGSize windowSize{cardSize.width + 2 * TipView::shadowHorizontalInset,
                            cardSize.height + 2 * TipView::shadowVerticalInset};
    const auto frame = fixedWindowFrame(*view, windowSize, *info);
    if (!frame) {
        closeDirectly();
        return;
    }
    window->setFrame(*frame, true);
    // Who hears of the window's new place may have closed the tip.
    if (state().tipWindow == window) window->orderFrontRegardless();
}

void startTimer(double interval, std::function<void()> completion) {
    stopEventMonitor();
    if (const auto timer = std::exchange(state().delayTimer, nullptr)) timer->invalidate();
    startEventMonitor(kPressMask, [](const std::shared_ptr<NSEvent>&) { endTimer(); });
    state().delayTimer = NSTimer::scheduledTimerWithTimeInterval(
        interval, false, [completion = std::move(completion)](NSTimer&) {
            endTimer();
            completion();
        });
}

void showTip(const View& view, const std::shared_ptr<TipInfo>& info, CloseCallback closeCallback) {
    endTimer();
    const auto strategy = info->displayStrategy.value_or(state().displayStrategy);
    if (strategy == TipDisplayStrategy::immediately || state().tipWindow ||
        Clock::current().wallNow() - state().lastCloseTime < kNoWaitAfterClose) {
        showTipDirectly(view, info, std::move(closeCallback));
        return;
    }
    state().delayView = view;
    startTimer(kDelay, [weak = std::weak_ptr(view), info, closeCallback = std::move(closeCallback)] {
        if (const auto held = weak.lock()) showTipDirectly(held, info, closeCallback);
    });
}

}  // namespace

TipDisplayStrategy TipManager::displayStrategy() { return state().displayStrategy; }

void TipManager::setDisplayStrategy(TipDisplayStrategy strategy) { state().displayStrategy = strategy; }

std::optional<int> TipManager::windowNumber() {
    if (!state().tipWindow) return std::nullopt;
    return state().tipWindow->windowNumber();
}

void TipManager::showTip(const std::shared_ptr<NSView>& view, const std::shared_ptr<TipInfo>& info,
                         CloseCallback closeCallback) {
    if (!view || !info) return;
    DispatchQueueExtension::safeMain([view, info, closeCallback = std::move(closeCallback)]() mutable {
        zqcore::showTip(view, info, std::move(closeCallback));
    });
}

void TipManager::close(const std::shared_ptr<NSView>& view) {
    DispatchQueueExtension::safeMain([view] {
        if (!view) {
            endTimer();
            closeDirectly();
            return;
        }
        if (state().delayView.lock() == view) endTimer();
        if (state().currentView.lock() == view) closeDirectly();
    });
}

void TipManager::closeIfNeed() {
    DispatchQueueExtension::safeMain([] {
        const auto view = state().currentView.lock();
        if (view && !checkIfNeedShow(view)) closeDirectly();
    });
}

}  // namespace zqcore
