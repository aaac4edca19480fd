#include "Platform/AppKit/NSButton.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/PointerTracking.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

namespace {

constexpr unsigned short kSpaceBar = 49;

bool flipsState(NSButtonType type) {
    return type == NSButtonType::pushOnPushOff || type == NSButtonType::toggle ||
           type == NSButtonType::switchButton || type == NSButtonType::onOff;
}

}  // namespace

/// Hears the button's own tracking area, so that a subclass's methods hear only of theirs.
class NSButton::HoverWatch final : public NSResponder {
  public:
    explicit HoverWatch(const std::shared_ptr<NSButton>& button) : button_(button) {}

    void mouseEntered(const NSEvent& /*event*/) override { set(true); }
    void mouseExited(const NSEvent& /*event*/) override { set(false); }
    [[nodiscard]] bool isInside() const noexcept { return inside_; }

  private:
    void set(bool inside) {
        inside_ = inside;
        if (const auto button = button_.lock()) button->setNeedsDisplay(true);
    }

    std::weak_ptr<NSButton> button_;
    bool inside_ = false;
};

void NSButtonCell::setHighlighted(bool highlighted) {
    if (std::exchange(highlighted_, highlighted) == highlighted) return;
    if (const auto button = button_.lock()) button->setNeedsDisplay(true);
}

void NSButtonCell::setHighlightsBy(unsigned mask) {
    highlightsBy_ = mask;
    if (const auto button = button_.lock()) button->setNeedsDisplay(true);
}

NSButton::~NSButton() {
    if (hoverArea_) PointerTracking::shared().remove(*hoverArea_);
}

void NSButton::setup() {
    NSControl::setup();
    cell_ = makeObject<NSButtonCell>(std::static_pointer_cast<NSButton>(shared_from_this()));
}

void NSButton::contentChanged() {
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

void NSButton::setTitle(std::string title) {
    title_ = std::move(title);
    attributedTitle_.reset();
    contentChanged();
}
void NSButton::setAttributedTitle(std::shared_ptr<NSAttributedString> title) {
    attributedTitle_ = std::move(title);
    contentChanged();
}
void NSButton::setImage(std::shared_ptr<NSImage> image) {
    image_ = std::move(image);
    contentChanged();
}
void NSButton::setAlternateImage(std::shared_ptr<NSImage> image) {
    alternateImage_ = std::move(image);
    setNeedsDisplay(true);
}
void NSButton::setImageScaling(NSImageScaling scaling) {
    imageScaling_ = scaling;
    setNeedsDisplay(true);
}
void NSButton::setContentTintColor(std::shared_ptr<NSColor> color) {
    tint_ = std::move(color);
    setNeedsDisplay(true);
}
void NSButton::setBordered(bool bordered) {
    bordered_ = bordered;
    contentChanged();
}
void NSButton::setBezelStyle(NSBezelStyle style) {
    bezelStyle_ = style;
    contentChanged();
}
void NSButton::setButtonType(NSButtonType type) {
    type_ = type;
    contentChanged();
}
void NSButton::setState(NSControlStateValue state) {
    state_ = state;
    setNeedsDisplay(true);
}

void NSButton::setShowsBorderOnlyWhileMouseInside(bool shows) {
    if (shows == showsBorderOnlyWhileMouseInside()) return;
    if (hoverArea_) PointerTracking::shared().remove(*hoverArea_);
    hoverArea_.reset();
    hoverWatch_.reset();
    setNeedsDisplay(true);
    if (!shows) return;
    hoverWatch_ = makeObject<HoverWatch>(std::static_pointer_cast<NSButton>(shared_from_this()));
    hoverArea_ = makeObject<NSTrackingArea>(
        CGRect{}, NSTrackingMouseEnteredAndExited | NSTrackingActiveAlways | NSTrackingInVisibleRect,
        hoverWatch_);
    PointerTracking::shared().add(*this, hoverArea_);
}

bool NSButton::showsBorder() const { return bordered_ && (!hoverWatch_ || hoverWatch_->isInside()); }

bool NSButton::contains(const NSEvent& event) const {
    return CGRectContainsPoint(bounds(), convertPointFromView(event.locationInWindow(), nullptr));
}

void NSButton::mouseDown(const NSEvent& /*event*/) {
    // A disabled button swallows the press.
    if (!isEnabled()) return;
    pressed_ = true;
    cell_->setHighlighted(true);
    NSApplication::shared()->beginTracking();
}

void NSButton::mouseDragged(const NSEvent& event) {
    if (pressed_) cell_->setHighlighted(contains(event));
}

void NSButton::mouseUp(const NSEvent& event) {
    if (!pressed_) return;
    const auto held = shared_from_this();
    const bool inside = contains(event) && isEnabled();
    endPress();
    if (inside) {
        fire();
    } else {
        cell_->setHighlighted(false);
    }
}

void NSButton::endPress() {
    if (std::exchange(pressed_, false)) NSApplication::shared()->endTracking();
}

// The state first, then the look, then the action, which finds both as they stay.
void NSButton::fire() {
    if (flipsState(type_)) {
        setState(state_ == NSControlStateValue::on ? NSControlStateValue::off : NSControlStateValue::on);
    } else if (type_ == NSButtonType::radio) {
        setState(NSControlStateValue::on);
    }
    cell_->setHighlighted(false);
    sendAction(action(), target());
}

void NSButton::performClick(NSObject* /*sender*/) {
    if (!isEnabled()) return;
    const auto held = shared_from_this();
    fire();
}

void NSButton::keyDown(const NSEvent& event) {
    if (event.keyCode() == kSpaceBar && isEnabled()) return performClick();
    NSControl::keyDown(event);
}

bool NSButton::performKeyEquivalent(const NSEvent& event) {
    constexpr NSEventModifierFlags kOthers =
        NSEventModifierFlagControl | NSEventModifierFlagOption | NSEventModifierFlagCommand;
    if (keyEquivalent_.empty() || !isEnabled() || isHiddenOrHasHiddenAncestor() ||
        event.charactersIgnoringModifiers() != keyEquivalent_ || (event.modifierFlags() & kOthers) != 0)
        return NSControl::performKeyEquivalent(event);
    performClick();
    return true;
}

void NSButton::pressWasLost() {
    if (!pressed_) return;
    pressed_ = false;
    cell_->setHighlighted(false);
}

void NSButton::viewDidMoveToWindow() {
    NSControl::viewDidMoveToWindow();
    if (hoverArea_ && window()) PointerTracking::shared().add(*this, hoverArea_);
}

}  // namespace zqcore::platform
