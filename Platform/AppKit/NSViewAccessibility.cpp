#include "Platform/AppKit/NSAccessibility.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

namespace {

/// What a reader goes on to below the view: the nearest ones that aren't ignored.
void collectChildren(const NSView& view, std::vector<std::shared_ptr<NSObject>>& children) {
    for (const auto& subview : view.subviews()) {
        if (subview->isHidden()) continue;
        if (subview->accessibilityIsIgnored()) {
            collectChildren(*subview, children);
        } else {
            children.push_back(subview);
        }
    }
}

std::shared_ptr<NSObject> parentOf(const NSView& view) {
    auto above = view.superview();
    while (above && above->accessibilityIsIgnored()) above = above->superview();
    if (above) return above;
    return view.window();
}

}  // namespace

std::shared_ptr<NSView> NSView::accessibilityHitTest(CGPoint point) {
    const auto window = window_.lock();
    if (!window || hidden_) return nullptr;
    const auto above = superview_.lock();
    const CGPoint inWindow = window->convertPointFromScreen(point);
    auto hit = hitTest(above ? above->convertPointFromView(inWindow, nullptr) : inWindow);
    while (hit && hit.get() != this && hit->accessibilityIsIgnored()) hit = hit->superview_.lock();
    return hit;
}

std::vector<std::string> NSView::accessibilityAttributeNames() const {
    std::vector<std::string> names;
    for (const std::string_view name :
         {NSAccessibilityRoleAttribute, NSAccessibilityRoleDescriptionAttribute, NSAccessibilityHelpAttribute,
          NSAccessibilityParentAttribute, NSAccessibilityChildrenAttribute, NSAccessibilityWindowAttribute,
          NSAccessibilityTopLevelUIElementAttribute, NSAccessibilityPositionAttribute,
          NSAccessibilitySizeAttribute, NSAccessibilityFocusedAttribute})
        names.emplace_back(name);
    return names;
}

NSAccessibilityValue NSView::accessibilityAttributeValue(std::string_view name) {
    const auto window = window_.lock();
    if (name == NSAccessibilityRoleAttribute) return std::string(NSAccessibilityUnknownRole);
    if (name == NSAccessibilityRoleDescriptionAttribute) return std::string("unknown");
    if (name == NSAccessibilityHelpAttribute) return std::string();
    if (name == NSAccessibilityParentAttribute) return parentOf(*this);
    if (name == NSAccessibilityWindowAttribute || name == NSAccessibilityTopLevelUIElementAttribute)
        return std::static_pointer_cast<NSObject>(window);
    if (name == NSAccessibilitySizeAttribute) return frame_.size;
    if (name == NSAccessibilityFocusedAttribute) return window && window->firstResponder().get() == this;
    if (name == NSAccessibilityPositionAttribute && window)
        return window->convertRectToScreen(convertRectToView(bounds(), nullptr)).origin;
    if (name != NSAccessibilityChildrenAttribute) return {};
    std::vector<std::shared_ptr<NSObject>> children;
    collectChildren(*this, children);
    return children;
}

bool NSView::accessibilityIsAttributeSettable(std::string_view name) const {
    return name == NSAccessibilityFocusedAttribute && acceptsFirstResponder();
}

void NSView::accessibilitySetValue(const NSAccessibilityValue& value, std::string_view name) {
    const auto window = window_.lock();
    const bool* const focused = std::get_if<bool>(&value);
    if (!window || !focused || name != NSAccessibilityFocusedAttribute) return;
    if (*focused) {
        window->makeFirstResponder(self());
    } else if (window->firstResponder().get() == this) {
        window->makeFirstResponder(nullptr);
    }
}

}  // namespace zqcore::platform
