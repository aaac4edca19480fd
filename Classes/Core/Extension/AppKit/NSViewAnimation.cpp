#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSWindow.h"

namespace zqcore {

void zq_animationGroupLayout(NSView& view, double duration, const std::function<void()>& closure) {
    NSAnimationContext::runAnimationGroup([&](NSAnimationContext& context) {
        context.setDuration(duration);
        context.setAllowsImplicitAnimation(true);
        if (closure) closure();
        if (const auto window = view.window()) window->layoutIfNeeded();
    });
}

}  // namespace zqcore
