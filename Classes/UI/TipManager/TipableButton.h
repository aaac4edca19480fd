#pragma once

#include "Classes/UI/TipManager/Tipable.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// A button with a tip. A press closes the tip first, then goes on to the button.
/// Threads: main thread. Lifetime: as any view.
class ZQ_EXPORT TipableButton : public TipableOver<NSButton> {
  public:
    using TipableOver<NSButton>::TipableOver;

    void mouseDown(const NSEvent& event) override;
};

}  // namespace zqcore
