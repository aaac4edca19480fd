#include "Classes/Core/Extension/AppKit/FrameGeometry.h"

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore {

CGPoint FrameGeometry::middle() const { return {CGRectGetMidX(frame()), CGRectGetMidY(frame())}; }
void FrameGeometry::setMiddle(CGPoint middle) const {
    setOrigin({middle.x - width() * 0.5, middle.y - height() * 0.5});
}

CGRect ViewGeometry::frame() const { return view_.frame(); }
void ViewGeometry::setFrame(const CGRect& frame) const { view_.setFrame(frame); }
bool ViewGeometry::isFlipped() const { return view_.isFlipped(); }

CGRect WindowGeometry::frame() const { return window_.frame(); }
void WindowGeometry::setFrame(const CGRect& frame) const { window_.setFrame(frame, true); }

}  // namespace zqcore
