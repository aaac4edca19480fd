#pragma once

#include "Classes/UI/TipManager/Tipable.h"
#include "Platform/AppKit/NSSegmentedControl.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// A segmented control with a tip. Threads: main thread. Lifetime: as any view.
class ZQ_EXPORT TipableSegmentedControl : public TipableOver<NSSegmentedControl> {
  public:
    using TipableOver<NSSegmentedControl>::TipableOver;
};

}  // namespace zqcore
