#include "Classes/UI/TipManager/TipWindow.h"

#include "Platform/Graphics/NSColor.h"
#include "Platform/Layout/ConstraintMaker.h"

namespace zqcore {

void TipViewController::loadView() {
    setView(makeObject<NSView>());
    view()->addSubview(tipView_);
    snp(tipView_).makeConstraints([](ConstraintMaker& make) {
        make.left().equalToSuperview().offset(TipView::shadowHorizontalInset);
        make.top().equalToSuperview().offset(TipView::shadowVerticalInset);
        // The lines only say how wide the card is at least; without a pull it would keep the width of the
        // wider card before.
        make.width().equalTo(0).priority(NSLayoutPriorityFittingSizeCompression);
    });
}

TipWindow::TipWindow()
    : NSPanel({}, NSWindowStyleMaskNonactivatingPanel, NSBackingStoreType::buffered, true) {}

void TipWindow::setup() {
    NSPanel::setup();
    setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorTransient |
                          NSWindowCollectionBehaviorStationary | NSWindowCollectionBehaviorIgnoresCycle |
                          NSWindowCollectionBehaviorCanJoinAllApplications);
    setLevel(NSPopUpMenuWindowLevel + 10);
    setHasShadow(false);
    setBackgroundColor(NSColor::clearColor());
    setOpaque(false);
    setReleasedWhenClosed(false);
    setAnimationBehavior(NSWindowAnimationBehavior::none);
    setIgnoresMouseEvents(true);
    tipViewController_ = makeObject<TipViewController>();
    setContentViewController(tipViewController_);
}

}  // namespace zqcore
