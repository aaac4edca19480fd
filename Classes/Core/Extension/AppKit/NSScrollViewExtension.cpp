#include "Classes/Core/Extension/AppKit/NSScrollViewExtension.h"

#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSScrollView.h"

namespace zqcore {

CGPoint zq_contentOffset(const NSScrollView& view) { return view.contentView()->bounds().origin; }

void zq_setContentOffset(NSScrollView& view, CGPoint offset) {
    const auto clip = view.contentView();
    clip->setBoundsOrigin(offset);
    view.reflectScrolledClipView(*clip);
}

CGSize zq_contentSize(const NSScrollView& view) {
    const auto document = view.documentView();
    return document ? document->frame().size : CGSize{};
}

void zq_scrollToPoint(NSScrollView& view, CGPoint point, double animateDuration) {
    if (!(animateDuration > 0)) {
        zq_setContentOffset(view, point);
        return;
    }
    NSAnimationContext::runAnimationGroup([&](NSAnimationContext& context) {
        context.setDuration(animateDuration);
        const auto clip = view.contentView();
        clip->animator().setBoundsOrigin(point);
        view.reflectScrolledClipView(*clip);
    });
}

}  // namespace zqcore
