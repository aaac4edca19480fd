#include "Classes/Core/Extension/AppKit/NSStackViewExtension.h"

#include <utility>

#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/QuartzCore/CALayer.h"

namespace zqcore {

namespace {

constexpr double kDuration = 0.25;

using Views = std::vector<std::shared_ptr<NSView>>;

void animateLayout(NSStackView& stack, std::function<void()> ended) {
    NSAnimationContext::runAnimationGroup(
        [&](NSAnimationContext& context) {
            context.setDuration(kDuration);
            context.setAllowsImplicitAnimation(true);
            if (const auto window = stack.window()) window->layoutIfNeeded();
        },
        std::move(ended));
}

}  // namespace

void removeAllArrangedSubviews(NSStackView& stack) {
    for (const auto views = stack.arrangedSubviews(); const auto& view : views) {
        stack.removeArrangedSubview(view);
        view->removeFromSuperview();
    }
}

void zq_hideViews(NSStackView& stack, const Views& views, bool animated, std::function<void()> completion) {
    for (const auto& view : views) view->setHidden(true);
    if (animated) {
        animateLayout(stack, std::move(completion));
    } else if (completion) {
        completion();
    }
}

void zq_showViews(NSStackView& stack, const Views& views, bool animated, std::function<void()> completion) {
    for (const auto& view : views) {
        view->setHidden(false);
        if (!animated) continue;
        view->setWantsLayer(true);
        view->layer()->setOpacity(0);
    }
    if (animated) {
        animateLayout(stack, [views, completion = std::move(completion)] {
            for (const auto& view : views) view->layer()->setOpacity(1);
            if (completion) completion();
        });
    } else if (completion) {
        completion();
    }
}

}  // namespace zqcore
