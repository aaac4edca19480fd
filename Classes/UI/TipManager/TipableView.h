#pragma once

#include "Classes/UI/TipManager/Tipable.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// A plain view with a tip. Threads: main thread. Lifetime: as any view.
class ZQ_EXPORT TipableView : public TipableOver<NSView> {
  public:
    using TipableOver<NSView>::TipableOver;
};

}  // namespace zqcore
