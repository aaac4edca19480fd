#include "Platform/AppKit/ApplicationState.h"
#include "Platform/Graphics/NSAppearance.h"

namespace zqcore::platform {

std::shared_ptr<const NSAppearance> NSApplication::effectiveAppearance() const {
    if (state_->appearance) return state_->appearance;
    return state_->display->appearance() == DisplayAppearance::dark ? NSAppearance::darkAqua()
                                                                    : NSAppearance::aqua();
}

}  // namespace zqcore::platform
