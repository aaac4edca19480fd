#pragma once

#include "Platform/Scripting/NSOpenPanel.h"

namespace zqcore::platform {

/// Shows open panels through the desktop's file chooser portal (org.freedesktop.portal.FileChooser), on a bus
/// connection and a thread of each panel's own: the panel closes with them. Failure: no bus, no portal, or a
/// portal that goes away cancels the panel.
class ZQ_EXPORT PortalOpenPanel final : public OpenPanelPresenter {
  public:
    void present(const NSOpenPanel& panel, Answer answer) override;
};

}  // namespace zqcore::platform
