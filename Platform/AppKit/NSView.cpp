#include "Platform/AppKit/NSView.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/PointerTracking.h"

namespace zqcore::platform {

NSView::~NSView() {
    for (const auto& area : trackingAreas_) PointerTracking::shared().remove(*area);
}

std::shared_ptr<NSResponder> NSView::nextResponder() const {
    if (auto set = NSResponder::nextResponder()) return set;
    if (auto controller = controller_.lock()) return controller;
    if (auto above = superview_.lock()) return above;
    return window_.lock();
}

bool NSView::isDescendantOf(const NSView& view) const noexcept {
    if (this == &view) return true;
    for (auto above = superview_.lock(); above; above = above->superview_.lock()) {
        if (above.get() == &view) return true;
    }
    return false;
}

void NSView::addSubview(const std::shared_ptr<NSView>& view) {
    addSubview(view, NSWindowOrderingMode::above, nullptr);
}

void NSView::addSubview(const std::shared_ptr<NSView>& subview, NSWindowOrderingMode place,
                        const std::shared_ptr<NSView>& beside) {
    // Copies: both may be elements of a list of subviews that changes below.
    const auto view = subview;
    const auto sibling = beside;
    if (!view || isDescendantOf(*view)) return;
    if (sibling == view && view->superview_.lock().get() == this) return;
    if (const auto shownIn = view->window_.lock(); shownIn && shownIn->contentView() == view)
        shownIn->setContentView(nullptr);
    const auto held = self();
    const auto window = window_.lock();
    const bool staysInWindow = view->window_.lock() == window;
    if (const auto old = view->superview_.lock()) old->detach(*view, staysInWindow);
    if (!staysInWindow) view->tellWillMove(window);
    guardedCall("viewWillMoveToSuperview", [&] { view->viewWillMoveToSuperview(held); });
    // What was told may have put the view elsewhere already; that then holds.
    if (view->superview_.lock()) return;
    const auto found = sibling ? std::ranges::find(subviews_, sibling) : subviews_.end();
    if (found != subviews_.end()) {
        subviews_.insert(place == NSWindowOrderingMode::below ? found : std::next(found), view);
    } else {
        subviews_.insert(place == NSWindowOrderingMode::below ? subviews_.begin() : subviews_.end(), view);
    }
    view->superview_ = held;
    linked(*view);
    if (!staysInWindow) view->enterWindow(window);
    view->markSubtreeTracking();
    view->setNeedsDisplay(true);
    view->setNeedsLayout(true);
    setNeedsLayout(true);
    guardedCall("viewDidMoveToSuperview", [&] { view->viewDidMoveToSuperview(); });
    guardedCall("didAddSubview", [&] { didAddSubview(*view); });
}

void NSView::removeFromSuperview() {
    const auto held = self();
    const auto above = superview_.lock();
    if (!above) return;
    const bool hadWindow = !window_.expired();
    if (hadWindow) tellWillMove(nullptr);
    guardedCall("viewWillMoveToSuperview", [&] { viewWillMoveToSuperview(nullptr); });
    if (superview_.lock() != above) return;
    above->detach(*this, false);
    if (hadWindow) enterWindow(nullptr);
    guardedCall("viewDidMoveToSuperview", [&] { viewDidMoveToSuperview(); });
}

// Cuts the link alone; a view that moves within its window keeps it.
void NSView::detach(NSView& view, bool staysInWindow) {
    guardedCall("willRemoveSubview", [&] { willRemoveSubview(view); });
    const auto isIt = [&](const auto& subview) { return subview.get() == &view; };
    if (std::ranges::none_of(subviews_, isIt)) return;
    const auto held = view.shared_from_this();
    if (!staysInWindow) {
        if (const auto window = window_.lock()) window->viewLeft(view);
    }
    unlinking(view);
    // Looked for again: those who heard of it may have changed the list.
    std::erase_if(subviews_, isIt);
    view.superview_.reset();
    setNeedsDisplay(true);
    setNeedsLayout(true);
}

void NSView::sortSubviewsUsingFunction(const std::function<NSComparisonResult(NSView&, NSView&)>& compare) {
    if (!compare) return;
    // On a copy: a comparison that throws must leave the list whole.
    auto sorted = subviews_;
    const bool done = guardedCall("sortSubviewsUsingFunction", [&] {
        std::ranges::stable_sort(
            sorted, [&](const auto& a, const auto& b) { return compare(*a, *b) == NSOrderedAscending; });
    });
    if (!done || sorted == subviews_) return;
    subviews_ = std::move(sorted);
    reorderLayers();
    setNeedsDisplay(true);
}

void NSView::tellWillMove(const std::shared_ptr<NSWindow>& window) {
    const auto held = self();
    guardedCall("viewWillMoveToWindow", [&] { viewWillMoveToWindow(window); });
    for (const auto& subview : std::vector(subviews_)) subview->tellWillMove(window);
}

void NSView::enterWindow(const std::shared_ptr<NSWindow>& window) {
    const auto held = self();
    window_ = window;
    needsTracking_ = true;
    if (window) {
        // The appearance may have changed while it was in none.
        needsDisplay_ = true;
        for (const auto& area : trackingAreas_) PointerTracking::shared().add(*this, area);
        window->markForDisplay();
    }
    guardedCall("viewDidMoveToWindow", [&] { viewDidMoveToWindow(); });
    // An override may have moved this view on; its subviews went with it.
    for (const auto& subview : std::vector(subviews_)) {
        if (window_.lock() == window && subview->superview_.lock() == held &&
            subview->window_.lock() != window)
            subview->enterWindow(window);
    }
}

bool NSView::isHiddenOrHasHiddenAncestor() const noexcept {
    if (hidden_) return true;
    const auto above = superview_.lock();
    return above && above->isHiddenOrHasHiddenAncestor();
}

void NSView::setHidden(bool hidden) {
    if (std::exchange(hidden_, hidden) == hidden) return;
    applyLayerState();
    setNeedsDisplay(true);
    if (const auto above = superview_.lock()) {
        above->setNeedsDisplay(true);
        above->subviewHiddenChanged(*this);
    }
    markSubtreeTracking();
    if (const auto above = superview_.lock(); !above || !above->isHiddenOrHasHiddenAncestor())
        tellHidden(hidden);
}

// What is hidden by itself doesn't notice that what is round it is hidden too.
void NSView::tellHidden(bool hidden) {
    const auto held = weak_from_this().lock();
    guardedCall("viewDidHide", [&] { hidden ? viewDidHide() : viewDidUnhide(); });
    for (const auto& subview : std::vector(subviews_)) {
        if (!subview->hidden_) subview->tellHidden(hidden);
    }
}

bool NSView::canBecomeKeyView() const {
    return acceptsFirstResponder() && !window_.expired() && !isHiddenOrHasHiddenAncestor();
}

bool NSView::performKeyEquivalent(const NSEvent& event) {
    for (const auto& subview : std::vector(subviews_)) {
        bool taken = false;
        guardedCall("performKeyEquivalent", [&] { taken = subview->performKeyEquivalent(event); });
        if (taken) return true;
    }
    return false;
}

void NSView::addTrackingArea(const std::shared_ptr<NSTrackingArea>& area) {
    if (!area || std::ranges::find(trackingAreas_, area) != trackingAreas_.end()) return;
    trackingAreas_.push_back(area);
    PointerTracking::shared().add(*this, area);
}

void NSView::removeTrackingArea(const std::shared_ptr<NSTrackingArea>& area) {
    const auto held = area;  // it may be an element of the list
    if (std::erase(trackingAreas_, held) > 0) PointerTracking::shared().remove(*held);
}

void NSView::markTracking() {
    needsTracking_ = true;
    if (const auto window = window_.lock()) window->markForDisplay();
}

void NSView::markSubtreeTracking() {
    markTracking();
    for (const auto& subview : subviews_) subview->markSubtreeTracking();
}

}  // namespace zqcore::platform
