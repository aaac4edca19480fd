#include "Platform/AppKit/NSWindow.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/ApplicationState.h"
#include "Platform/AppKit/DisplayPass.h"
#include "Platform/AppKit/FocusRing.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/AppKit/SteppedAnimation.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"

namespace zqcore::platform {

NSWindow::NSWindow(const CGRect& contentRect, NSWindowStyleMask styleMask, NSBackingStoreType /*backing*/,
                   bool /*defer*/)
    : frame_(CGRectStandardize(contentRect)) {
    state_.frame = frame_;
    state_.styleMask = styleMask;
}

NSPanel::NSPanel(const CGRect& contentRect, NSWindowStyleMask styleMask, NSBackingStoreType backing,
                 bool defer)
    : NSWindow(contentRect, styleMask, backing, defer) {
    setHidesOnDeactivate(true);
    setReleasedWhenClosed(false);
}

NSWindow::~NSWindow() {
    if (const auto shownOn = display(); shownOn && number_ > 0) shownOn->closeWindow(number_);
}

void NSWindow::setup() {
    NSResponder::setup();
    background_ = NSColor::windowBackgroundColor();
    setContentView(makeObject<NSView>());
}

void NSWindow::setFrame(const CGRect& frame, bool display) {
    const auto held = self();
    applyFrame(frame);
    update();
    if (display) displayIfNeeded();
}

void NSWindow::setFrameTopLeftPoint(CGPoint point) {
    setFrameOrigin({point.x, point.y - frame_.size.height});
}

void NSWindow::desktopMoved(const CGRect& frame) {
    const auto held = self();
    applyFrame(frame);
}

void NSWindow::applyFrame(const CGRect& frame) {
    if (frame == frame_) return;
    const CGFloat oldScale = backingScaleFactor();
    const CGRect old = std::exchange(frame_, frame);
    state_.frame = frame;
    auto& center = NSNotificationCenter::defaultCenter();
    if (backingScaleFactor() != oldScale) {
        needsPixels_ = true;
        markForDisplay();
    }
    if (old.size != frame.size) {
        needsPixels_ = true;
        if (contentView_) contentView_->setFrame({{0, 0}, frame.size});
        markForDisplay();
        center.postNotificationName(NSWindowDidResizeNotification, self());
    }
    // Another screen may have another scale.
    if (surface_ && surfaceScale_ != backingScaleFactor()) {
        needsPixels_ = true;
        markForDisplay();
    }
    // The main screen is the one under the keys.
    if (visible_ && isKeyWindow()) NSApplication::shared()->state().tellMainScreenScale();
    if (old.origin != frame_.origin) center.postNotificationName(NSWindowDidMoveNotification, self());
}

CGRect NSWindow::convertRectToScreen(const CGRect& rect) const noexcept {
    return CGRectOffset(rect, frame_.origin.x, frame_.origin.y);
}
CGRect NSWindow::convertRectFromScreen(const CGRect& rect) const noexcept {
    return CGRectOffset(rect, -frame_.origin.x, -frame_.origin.y);
}
CGPoint NSWindow::convertPointToScreen(CGPoint point) const noexcept {
    return {point.x + frame_.origin.x, point.y + frame_.origin.y};
}
CGPoint NSWindow::convertPointFromScreen(CGPoint point) const noexcept {
    return {point.x - frame_.origin.x, point.y - frame_.origin.y};
}

std::shared_ptr<NSScreen> NSWindow::screen() const {
    std::shared_ptr<NSScreen> best;
    CGFloat most = -1;
    for (const auto& screen : NSScreen::screens()) {
        const CGRect part = CGRectIntersection(screen->frame(), frame_);
        // A window without area is where its corner is.
        const bool onIt = !CGRectIsEmpty(part) || CGRectContainsPoint(screen->frame(), frame_.origin);
        if (CGRectIsNull(part) || !onIt) continue;
        const CGFloat area = part.size.width * part.size.height;
        if (std::exchange(most, std::max(most, area)) < area) best = screen;
    }
    return best;
}

CGFloat NSWindow::backingScaleFactor() const {
    if (const auto on = screen()) return on->backingScaleFactor();
    const auto screens = NSScreen::screens();
    return screens.empty() ? 1 : screens.front()->backingScaleFactor();
}

void NSWindow::update() {
    if (const auto shownOn = display(); shownOn && number_ > 0) shownOn->updateWindow(number_, state_);
}

void NSWindow::setTitle(std::string title) {
    state_.title = std::move(title);
    update();
}
void NSWindow::setLevel(NSWindowLevel level) {
    state_.level = level;
    update();
}
void NSWindow::setAlphaValue(CGFloat alpha) {
    alphaSteps_.reset();
    applyAlpha(alpha);
}
void NSWindow::applyAlpha(CGFloat alpha) {
    state_.alpha = std::clamp(alpha, 0.0, 1.0);
    update();
}
void NSWindow::Animator::setAlphaValue(CGFloat alpha) {
    const CGFloat from = window_.alphaValue();
    window_.alphaSteps_ =
        SteppedAnimation::run([weak = std::weak_ptr<NSWindow>(window_.self()), from, alpha](double progress) {
            if (const auto window = weak.lock())
                window->applyAlpha(progress == 1 ? alpha : from + (alpha - from) * progress);
        });
}
void NSWindow::setOpaque(bool opaque) {
    state_.opaque = opaque;
    needsPixels_ = true;
    markForDisplay();
    update();
}
void NSWindow::setBackgroundColor(std::shared_ptr<NSColor> color) {
    background_ = std::move(color);
    needsPixels_ = true;
    markForDisplay();
}
void NSWindow::setHasShadow(bool hasShadow) {
    state_.hasShadow = hasShadow;
    update();
}
void NSWindow::setIgnoresMouseEvents(bool ignores) {
    state_.ignoresMouse = ignores;
    update();
}
NSWindowSharingType NSWindow::sharingType() const noexcept {
    return state_.sharesPixels ? NSWindowSharingType::readOnly : NSWindowSharingType::none;
}
void NSWindow::setSharingType(NSWindowSharingType type) {
    state_.sharesPixels = type != NSWindowSharingType::none;
    update();
}
void NSWindow::setCollectionBehavior(NSWindowCollectionBehavior behavior) {
    state_.collectionBehavior = behavior;
    update();
}

void NSWindow::setContentView(std::shared_ptr<NSView> view) {
    if (view == contentView_) return;
    const auto held = self();
    needsPixels_ = true;
    markForDisplay();
    if (const auto old = std::exchange(contentView_, nullptr)) {
        viewLeft(*old);
        rootLayerLeft(*old);
        old->tellWillMove(nullptr);
        old->enterWindow(nullptr);
    }
    if (!view) return;
    // Held to the end, whoever else lets go of it meanwhile.
    const auto content = std::move(view);
    content->removeFromSuperview();
    if (const auto other = content->window(); other && other->contentView_ == content)
        other->setContentView(nullptr);
    contentView_ = content;
    content->tellWillMove(held);
    content->setFrame({{0, 0}, frame_.size});
    rootLayerEntered(*content);
    content->enterWindow(held);
    content->markSubtreeTracking();
}

void NSWindow::setContentViewController(std::shared_ptr<NSViewController> controller) {
    const auto held = self();
    contentViewController_ = std::move(controller);
    if (!contentViewController_) return;
    const auto view = contentViewController_->view();
    const CGSize fitting = view->fittingSize();
    if (fitting.width > 0 && fitting.height > 0) setContentSize(fitting);
    setContentView(view);
}

bool NSWindow::isOnActiveSpace() const {
    if ((state_.collectionBehavior & NSWindowCollectionBehaviorCanJoinAllSpaces) != 0) return true;
    const auto shownOn = display();
    return shownOn && number_ > 0 && shownOn->isOnActiveSpace(number_);
}

// A window gets its number with its first showing. False without a display that could show it.
bool NSWindow::open() {
    if (number_ > 0) return display() && !display()->isLost();
    const auto& application = NSApplication::shared();
    display_ = application->state().display;
    const auto shownOn = display();
    if (!shownOn || shownOn->isLost()) return false;
    state_.frame = frame_;
    number_ = shownOn->openWindow(state_);
    return number_ > 0;
}

void NSWindow::order(const std::function<void(Display&)>& place) {
    const auto held = self();
    if (!open()) return;
    visible_ = true;
    NSApplication::shared()->state().windowShown(held);
    place(*display());
    needsPixels_ = true;
    markForDisplay();
}

void NSWindow::orderFront(NSObject* /*sender*/) {
    order([this](Display& on) { on.orderFront(number_, false); });
}
void NSWindow::orderFrontRegardless() {
    order([this](Display& on) { on.orderFront(number_, true); });
}
void NSWindow::orderBack(NSObject* /*sender*/) {
    order([this](Display& on) { on.order(number_, false, 0); });
}
void NSWindow::orderWindow(NSWindowOrderingMode mode, int relativeTo) {
    if (mode == NSWindowOrderingMode::out) return orderOut();
    order([&](Display& on) { on.order(number_, mode == NSWindowOrderingMode::above, relativeTo); });
}

void NSWindow::orderOut(NSObject* /*sender*/) {
    const auto held = self();
    if (number_ <= 0) return;
    if (std::exchange(visible_, false)) {
        if (const auto shownOn = display()) shownOn->hideWindow(number_);
        surface_.reset();
        dropPresses();
    }
    // Also one that only hid with the application: it must not come back with it.
    NSApplication::shared()->state().windowHidden(held);
}

void NSWindow::makeKeyAndOrderFront(NSObject* sender) {
    orderFront(sender);
    makeKeyWindow();
}

void NSWindow::close() {
    // An observer that closes the window it hears about must not start anew.
    if (std::exchange(closing_, true)) return;
    const auto held = self();
    NSNotificationCenter::defaultCenter().postNotificationName(NSWindowWillCloseNotification, held);
    orderOut();
    closing_ = false;
}

bool NSWindow::canBecomeKey() const {
    return (state_.styleMask & (NSWindowStyleMaskTitled | NSWindowStyleMaskResizable)) != 0;
}
bool NSWindow::canBecomeMain() const { return visible_ && canBecomeKey(); }

bool NSWindow::isKeyWindow() const { return NSApplication::shared()->keyWindow().get() == this; }
bool NSWindow::isMainWindow() const { return NSApplication::shared()->mainWindow().get() == this; }

void NSWindow::makeKeyWindow() {
    if (!visible_ || !canBecomeKey()) return;
    auto& state = NSApplication::shared()->state();
    if (state.active || (state_.styleMask & NSWindowStyleMaskNonactivatingPanel) != 0) {
        state.setKeyWindow(self());
    } else {
        state.lastKeyWindow = self();
    }
}

void NSWindow::becomeKeyWindow() {
    tellKeyState();
    NSNotificationCenter::defaultCenter().postNotificationName(NSWindowDidBecomeKeyNotification, self());
}

void NSWindow::resignKeyWindow() {
    tellKeyState();
    NSNotificationCenter::defaultCenter().postNotificationName(NSWindowDidResignKeyNotification, self());
}

std::shared_ptr<NSResponder> NSWindow::firstResponder() const {
    if (auto responder = firstResponder_.lock()) return responder;
    return std::const_pointer_cast<NSResponder>(
        std::static_pointer_cast<const NSResponder>(shared_from_this()));
}

bool NSWindow::makeFirstResponder(const std::shared_ptr<NSResponder>& responder) {
    const auto held = self();
    const auto old = firstResponder_.lock();
    const auto wanted = responder.get() == this ? nullptr : responder;
    if (wanted == old) return true;
    if (wanted) {
        const auto view = std::dynamic_pointer_cast<NSView>(wanted);
        if ((view && view->window() != held) || !wanted->acceptsFirstResponder()) return false;
    }
    bool agreed = true;
    if (old) guardedCall("resignFirstResponder", [&] { agreed = old->resignFirstResponder(); });
    if (!agreed) return false;
    firstResponder_ = wanted;
    if (wanted) guardedCall("becomeFirstResponder", [&] { agreed = wanted->becomeFirstResponder(); });
    if (!agreed) firstResponder_.reset();
    firstResponderChanged(old);
    return agreed;
}

void NSWindow::firstResponderChanged(const std::shared_ptr<NSResponder>& old) {
    if (!hasFocusRing(old) && !hasFocusRing(firstResponder_.lock())) return;
    needsPixels_ = true;
    markForDisplay();
}

void NSWindow::layoutIfNeeded() {
    const auto held = self();
    if (contentView_) DisplayPass::layout(*contentView_);
}

void NSWindow::displayIfNeeded() {
    if (needsPass_ || needsPixels_ || layersChanged_) DisplayPass::run(*this);
}

void NSWindow::markForDisplay() {
    needsPass_ = true;
    if (visible_) NSApplication::shared()->setNeedsDisplayPass();
}

// A view that goes can't stay the first responder, nor get the release of a press.
void NSWindow::viewLeft(const NSView& view) {
    const auto goes = [&](const std::shared_ptr<NSResponder>& responder) {
        const auto one = std::dynamic_pointer_cast<NSView>(responder);
        return one && one->isDescendantOf(view);
    };
    if (const auto first = firstResponder_.lock(); goes(first)) {
        firstResponder_.reset();
        firstResponderChanged(first);
    }
    for (std::size_t button = 0; button < pressed_.size(); ++button) {
        if (goes(pressed_[button].lock())) dropPress(button);
    }
}

// The press may have gone up from the view that was hit, so all above it hear that there is no release.
void NSWindow::dropPress(std::size_t button) {
    auto view = std::dynamic_pointer_cast<NSView>(std::exchange(pressed_[button], {}).lock());
    if (view && button == 0) NSApplication::shared()->endTracking();
    for (; view; view = view->superview()) guardedCall("pressWasLost", [&] { view->pressWasLost(); });
}

void NSWindow::dropPresses() {
    for (std::size_t button = 0; button < pressed_.size(); ++button) dropPress(button);
}

}  // namespace zqcore::platform
