#pragma once

#include "Platform/AppKit/NSView.h"

namespace zqcore::testkit {

/// A plain view whose y axis points down. As NSView in all else.
class FlippedView : public platform::NSView {
  public:
    using NSView::NSView;
    [[nodiscard]] bool isFlipped() const override { return true; }
};

}  // namespace zqcore::testkit
