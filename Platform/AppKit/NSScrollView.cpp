#include "Platform/AppKit/NSScrollView.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/AppKit/SteppedAnimation.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/QuartzCore/CAMediaTimingFunction.h"

namespace zqcore::platform {

namespace {

constexpr double kSpringDuration = 0.25;

// The coordinate within its limits along one axis, with the insets at its low and its high end.
CGFloat limitedAlong(CGFloat value, CGFloat start, CGFloat length, CGFloat visible, CGFloat low,
                     CGFloat high) {
    const CGFloat smallest = start - low;
    return std::clamp(value, smallest, std::max(smallest, start + length + high - visible));
}

}  // namespace

NSClipView::~NSClipView() = default;

void NSClipView::setDocumentView(const std::shared_ptr<NSView>& view) {
    if (view == document_) return;
    if (const auto old = std::exchange(document_, nullptr)) old->removeFromSuperview();
    document_ = view;
    if (view) addSubview(view);
    // Its flip is that of the document.
    flipDidChange();
}

void NSClipView::setBoundsOrigin(CGPoint origin) {
    if (!stepping_) stopAnimations();
    NSView::setBoundsOrigin(origin);
}

void NSClipView::willRemoveSubview(NSView& view) {
    NSView::willRemoveSubview(view);
    if (document_.get() == &view) document_.reset();
}

void NSClipView::subviewFrameDidChange(NSView& view) {
    if (&view != document_.get()) return;
    if (const auto scroll = std::dynamic_pointer_cast<NSScrollView>(superview()))
        scroll->documentFrameChanged();
}

void NSClipView::setDrawsBackground(bool draws) {
    drawsBackground_ = draws;
    setNeedsDisplay(true);
}

void NSClipView::setBackgroundColor(std::shared_ptr<NSColor> color) {
    background_ = std::move(color);
    setNeedsDisplay(true);
}

void NSClipView::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current || !drawsBackground_) return;
    current->cgContext()->setFillColor(
        (background_ ? background_ : NSColor::controlBackgroundColor())->cgColor());
    current->cgContext()->fill(bounds());
}

void NSClipView::Animator::setBoundsOrigin(CGPoint origin) {
    const CGPoint from = clip_.bounds().origin;
    const auto weak =
        std::weak_ptr<NSClipView>(std::static_pointer_cast<NSClipView>(clip_.shared_from_this()));
    clip_.steps_ = SteppedAnimation::run([weak, from, origin](double progress) {
        const auto clip = weak.lock();
        if (!clip) return;
        clip->stepping_ = true;
        clip->setBoundsOrigin(progress == 1 ? origin
                                            : CGPoint{from.x + (origin.x - from.x) * progress,
                                                      from.y + (origin.y - from.y) * progress});
        clip->stepping_ = false;
    });
}

NSScrollView::~NSScrollView() = default;

void NSScrollView::setup() {
    NSView::setup();
    clip_ = makeObject<NSClipView>();
    addSubview(clip_);
    tile();
    // An override may put its own clip view in place.
    static_cast<void>(contentView());
}

void NSScrollView::setContentView(const std::shared_ptr<NSClipView>& clip) {
    if (!clip || clip == clip_) return;
    const auto document = clip_ ? clip_->documentView() : nullptr;
    const auto old = std::exchange(clip_, clip);
    if (old) old->removeFromSuperview();
    // Behind the scrollers.
    addSubview(clip, NSWindowOrderingMode::below, nullptr);
    if (document && !clip->documentView()) clip->setDocumentView(document);
    tile();
}

std::shared_ptr<NSView> NSScrollView::documentView() const { return clip_ ? clip_->documentView() : nullptr; }

void NSScrollView::setDocumentView(const std::shared_ptr<NSView>& view) { clip_->setDocumentView(view); }

void NSScrollView::tile() {
    const CGRect whole = bounds();
    if (clip_) clip_->setFrame(whole);
    constexpr CGFloat width = NSScroller::kWidth;
    if (verticalScroller_) {
        verticalScroller_->setFrame(
            {{CGRectGetMaxX(whole) - width, whole.origin.y}, {width, whole.size.height}});
    }
    if (horizontalScroller_) {
        const CGFloat y = isFlipped() ? CGRectGetMaxY(whole) - width : whole.origin.y;
        horizontalScroller_->setFrame({{whole.origin.x, y}, {whole.size.width, width}});
    }
    placeKnobs();
}

void NSScrollView::setHasVerticalScroller(bool has) {
    setScroller(verticalScroller_, NSScroller::Direction::vertical, has);
}

void NSScrollView::setHasHorizontalScroller(bool has) {
    setScroller(horizontalScroller_, NSScroller::Direction::horizontal, has);
}

void NSScrollView::setScroller(std::shared_ptr<NSScroller>& scroller, NSScroller::Direction direction,
                               bool has) {
    if (has == (scroller != nullptr)) return;
    if (!has) return std::exchange(scroller, nullptr)->removeFromSuperview();
    scroller = makeObject<NSScroller>(direction);
    addSubview(scroller);
    tile();
}

// The knob shows the visible part of what can be come to, insets included.
void NSScrollView::placeKnobs() {
    if (!clip_ || (!verticalScroller_ && !horizontalScroller_)) return;
    constexpr CGFloat far = 1e9;
    const CGRect seen = clip_->bounds();
    const CGPoint first = limited({-far, -far});
    const CGPoint last = limited({far, far});
    const auto place = [](NSScroller& scroller, CGFloat at, CGFloat from, CGFloat to, CGFloat visible,
                          bool turned) {
        const CGFloat way = to - from;
        const CGFloat value = way > 0 ? std::clamp((at - from) / way, 0.0, 1.0) : 0;
        scroller.setValueAndProportion(turned ? 1 - value : value, way > 0 ? visible / (way + visible) : 1);
    };
    if (verticalScroller_)
        place(*verticalScroller_, seen.origin.y, first.y, last.y, seen.size.height, !clip_->isFlipped());
    if (horizontalScroller_)
        place(*horizontalScroller_, seen.origin.x, first.x, last.x, seen.size.width, false);
}

void NSScrollView::resizeSubviewsWithOldSize(CGSize oldSize) {
    NSView::resizeSubviewsWithOldSize(oldSize);
    tile();
}

void NSScrollView::reflectScrolledClipView(NSClipView& clip) {
    if (&clip != clip_.get()) return;
    placeKnobs();
    for (const auto& scroller : {verticalScroller_, horizontalScroller_}) {
        if (scroller) scroller->flash();
    }
}

CGPoint NSScrollView::limited(CGPoint origin) const {
    const auto document = documentView();
    const CGRect whole = document ? document->frame() : CGRect{};
    const CGSize visible = clip_->bounds().size;
    const NSEdgeInsets insets = contentInsets();
    const bool flipped = clip_->isFlipped();
    return {
        limitedAlong(origin.x, whole.origin.x, whole.size.width, visible.width, insets.left, insets.right),
        limitedAlong(origin.y, whole.origin.y, whole.size.height, visible.height,
                     flipped ? insets.top : insets.bottom, flipped ? insets.bottom : insets.top)};
}

// While a gesture holds the content nothing may pull it out of the hand.
void NSScrollView::documentFrameChanged() {
    placeKnobs();
    if (inGesture_) return;
    const CGPoint within = limited(clip_->bounds().origin);
    if (within != clip_->bounds().origin) clip_->setBoundsOrigin(within);
}

void NSScrollView::scrollWheel(const NSEvent& event) {
    if (!clip_) return;
    const auto held = shared_from_this();
    const NSEventPhase phase = event.phase() != NSEventPhase::none ? event.phase() : event.momentumPhase();
    const CGPoint now = clip_->bounds().origin;
    const CGFloat dy = clip_->isFlipped() ? -event.scrollingDeltaY() : event.scrollingDeltaY();
    const CGPoint wanted{now.x - event.scrollingDeltaX(), now.y + dy};
    const CGPoint within = limited(wanted);
    if (phase == NSEventPhase::none) {
        clip_->stopAnimations();
        clip_->setBoundsOrigin(within);
        reflectScrolledClipView(*clip_);
        return;
    }
    if (phase == NSEventPhase::began || phase == NSEventPhase::changed) {
        inGesture_ = true;
        clip_->stopAnimations();
    }
    if (event.scrollingDeltaX() != 0 || event.scrollingDeltaY() != 0) {
        clip_->setBoundsOrigin({horizontal_ == NSScrollElasticity::allowed ? wanted.x : within.x,
                                vertical_ == NSScrollElasticity::allowed ? wanted.y : within.y});
        reflectScrolledClipView(*clip_);
    }
    if (phase == NSEventPhase::ended || phase == NSEventPhase::cancelled) {
        inGesture_ = false;
        springBack();
    }
}

void NSScrollView::springBack() {
    const CGPoint rest = limited(clip_->bounds().origin);
    if (rest == clip_->bounds().origin) return;
    NSAnimationContext::runAnimationGroup([&](NSAnimationContext& context) {
        context.setDuration(kSpringDuration);
        context.setTimingFunction(CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseOut));
        clip_->animator().setBoundsOrigin(rest);
    });
}

}  // namespace zqcore::platform
