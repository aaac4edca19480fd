#include "Classes/Core/Extension/AppKit/NSViewControllerExtension.h"

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/Layout/ConstraintMaker.h"

namespace zqcore {

void zq_addChild(NSViewController& parent, const std::shared_ptr<NSViewController>& controller,
                 const std::function<void()>& updateFrame) {
    const auto child = controller;  // a copy: it may be an element of the list that it leaves
    if (!child) return;
    parent.addChildViewController(child);
    parent.view()->addSubview(child->view());
    if (updateFrame) {
        updateFrame();
    } else {
        snp(child->view()).makeConstraints([](ConstraintMaker& make) { make.edges().equalToSuperview(); });
    }
}

void zq_removeChild(NSViewController& /*parent*/, const std::shared_ptr<NSViewController>& child) {
    if (!child) return;
    child->view()->removeFromSuperview();
    child->removeFromParentViewController();
}

}  // namespace zqcore
