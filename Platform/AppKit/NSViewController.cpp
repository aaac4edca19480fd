#include "Platform/AppKit/NSViewController.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"

namespace zqcore::platform {

const std::shared_ptr<NSView>& NSViewController::view() {
    if (!view_) {
        loadView();
        if (!view_) setView(makeObject<NSView>());
        viewDidLoad();
    }
    return view_;
}

void NSViewController::setView(std::shared_ptr<NSView> view) {
    if (view_) view_->controller_.reset();
    view_ = std::move(view);
    if (view_) view_->controller_ = std::static_pointer_cast<NSViewController>(shared_from_this());
}

void NSViewController::loadView() { setView(makeObject<NSView>()); }

void NSViewController::addChildViewController(const std::shared_ptr<NSViewController>& controller) {
    const auto child = controller;  // a copy: it may be an element of the list that it leaves
    for (auto above = std::static_pointer_cast<NSViewController>(shared_from_this()); above;
         above = above->parent_.lock()) {
        if (above == child) return;
    }
    if (!child) return;
    child->removeFromParentViewController();
    child->parent_ = std::static_pointer_cast<NSViewController>(shared_from_this());
    children_.push_back(child);
}

void NSViewController::removeFromParentViewController() {
    const auto held = shared_from_this();
    if (const auto above = std::exchange(parent_, {}).lock()) {
        std::erase_if(above->children_, [this](const auto& child) { return child.get() == this; });
    }
}

// After the controller come those behind its view.
std::shared_ptr<NSResponder> NSViewController::nextResponder() const {
    if (auto set = NSResponder::nextResponder()) return set;
    if (!view_) return nullptr;
    if (auto above = view_->superview()) return above;
    return view_->window();
}

}  // namespace zqcore::platform
