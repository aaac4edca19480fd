#pragma once

#include "Platform/AppKit/NSScrollView.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// A scroll view whose scrolling closes the tip of a view that moved away from under the pointer.
/// Threads: main thread. Lifetime: as any view.
class ZQ_EXPORT TipableScrollView : public NSScrollView {
  public:
    using NSScrollView::NSScrollView;

  protected:
    void setup() override;
};

}  // namespace zqcore
