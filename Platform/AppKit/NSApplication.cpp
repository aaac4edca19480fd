#include "Platform/AppKit/NSApplication.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/ApplicationState.h"
#include "Platform/AppKit/DisplayPass.h"
#include "Platform/AppKit/EventMonitors.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Foundation/NSTimer.h"

namespace zqcore::platform {

namespace {

std::shared_ptr<NSApplication>& slot() {
    // Never ended: views may still ask while the process goes.
    static auto& application = *new std::shared_ptr<NSApplication>;
    return application;
}

}  // namespace

NSApplication::NSApplication() : state_(std::make_unique<State>(*this)) {}

NSApplication::~NSApplication() = default;

const std::shared_ptr<NSApplication>& NSApplication::shared() {
    auto& application = slot();
    if (!application) application = makeObject<NSApplication>();
    return application;
}

void NSApplication::setup() {
    state_->display = Display::current();
    state_->display->setHandler(state_.get());
    state_->tellMainScreenScale();
    RunLoop::main().setTurnHandler(RunLoop::TurnPart::afterQueue, [this] { state_->runDisplayPass(); });
}

void NSApplication::resetForTesting() {
    auto& application = slot();
    if (application) {
        for (const auto& window : std::vector(application->state_->windows)) window->orderOut();
        application->state_->display->setHandler(nullptr);
        RunLoop::main().setTurnHandler(RunLoop::TurnPart::afterQueue, {});
    }
    EventMonitors::shared().removeAll();
    NSTimer::invalidateAllForTesting();
    NSTimer::setMainRunLoopMode(NSRunLoopMode::defaultMode);
    application.reset();
}

bool NSApplication::isActive() const { return state_->active; }

void NSApplication::activate(bool ignoringOtherApps) {
    // Politely, it waits until the user brings it to the front.
    if (ignoringOtherApps) state_->display->activateApplication();
}

void NSApplication::activateIgnoringOtherApps(bool ignoring) {
    if (isMainThread()) return shared()->activate(ignoring);
    DispatchQueue::main()->async([ignoring] { shared()->activate(ignoring); });
}

void NSApplication::deactivate() { state_->display->deactivateApplication(); }

const std::vector<std::shared_ptr<NSWindow>>& NSApplication::windows() const { return state_->windows; }

std::shared_ptr<NSWindow> NSApplication::keyWindow() const { return state_->keyWindow.lock(); }

std::shared_ptr<NSWindow> NSApplication::mainWindow() const {
    const auto key = keyWindow();
    return key && key->canBecomeMain() ? key : nullptr;
}

std::shared_ptr<NSWindow> NSApplication::windowWithWindowNumber(int number) const {
    return state_->windowOf(number);
}

void NSApplication::sendEvent(const std::shared_ptr<NSEvent>& event) {
    if (!event) return;
    const auto held = shared_from_this();
    // A pressed control takes its drags and its release past the monitors, as its loop does on the platform.
    const bool swallowed = state_->tracking && (event->type() == NSEventType::leftMouseDragged ||
                                                event->type() == NSEventType::leftMouseUp);
    const auto passed = swallowed ? event : EventMonitors::shared().filter(event);
    if (!passed) return;
    const auto outer = std::exchange(state_->currentEvent, passed);
    const bool command = (passed->modifierFlags() & NSEventModifierFlagCommand) != 0;
    bool taken = false;
    if (passed->type() == NSEventType::keyDown && command) {
        if (const auto key = keyWindow())
            guardedCall("performKeyEquivalent", [&] { taken = key->performKeyEquivalent(*passed); });
    }
    if (const auto window = passed->window(); window && !taken)
        guardedCall("sendEvent", [&] { window->sendEvent(passed); });
    state_->currentEvent = outer;
}

std::shared_ptr<NSEvent> NSApplication::currentEvent() const { return state_->currentEvent; }

bool NSApplication::sendAction(const Selector& action, const std::shared_ptr<NSObject>& target,
                               NSObject* sender) {
    bool taken = false;
    const auto offer = [&](NSObject& object) {
        guardedCall(action.name(), [&] {
            // What throws has taken it.
            taken = true;
            taken = action.perform(object, sender);
        });
        return taken;
    };
    if (target) return offer(*target);
    const auto window = keyWindow();
    for (auto responder = window ? window->firstResponder() : nullptr; responder;
         responder = responder->nextResponder()) {
        if (offer(*responder)) return true;
    }
    return offer(*this);
}

bool NSApplication::isFullKeyboardAccessEnabled() const { return state_->fullKeyboardAccess; }

void NSApplication::setFullKeyboardAccessEnabled(bool enabled) { state_->fullKeyboardAccess = enabled; }

bool NSApplication::isTracking() const { return state_->tracking; }

void NSApplication::beginTracking() {
    if (!std::exchange(state_->tracking, true)) NSTimer::setMainRunLoopMode(NSRunLoopMode::eventTracking);
}

void NSApplication::endTracking() {
    if (std::exchange(state_->tracking, false)) NSTimer::setMainRunLoopMode(NSRunLoopMode::defaultMode);
}

AnyCancellable NSApplication::observeEffectiveAppearance(
    std::function<void(const std::shared_ptr<const NSAppearance>&)> observer) {
    if (!observer) return AnyCancellable();
    auto held = std::make_shared<std::function<void(const std::shared_ptr<const NSAppearance>&)>>(
        std::move(observer));
    state_->appearanceObservers.push_back(held);
    guardedCall("appearance observer", [&] { (*held)(effectiveAppearance()); });
    return AnyCancellable([held = std::move(held)]() mutable { held.reset(); });
}

void NSApplication::setAppearance(std::shared_ptr<const NSAppearance> appearance) {
    if (state_->appearance == appearance) return;
    state_->appearance = std::move(appearance);
    state_->tellAppearance();
}

void NSApplication::run() { RunLoop::main().run(); }

void NSApplication::stop() { RunLoop::main().stop(); }

bool NSApplication::turn() { return RunLoop::main().drain(); }

void NSApplication::setNeedsDisplayPass() {
    if (std::exchange(state_->passRequested, true)) return;
    RunLoop::main().requestTurn();
}

void NSApplication::State::runDisplayPass() {
    // A loop nested in drawing must not draw again from the start.
    if (inPass || !std::exchange(passRequested, false)) return;
    inPass = true;
    for (const auto& window : std::vector(windows)) {
        if (window->needsPass_) guardedCall("display pass", [&] { DisplayPass::run(*window); });
    }
    inPass = false;
}

}  // namespace zqcore::platform
