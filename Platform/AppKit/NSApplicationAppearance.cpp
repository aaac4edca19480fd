#include "Platform/AppKit/ApplicationState.h"
#if __has_include("Platform/Graphics/NSAppearance.h")
#include "Platform/Graphics/NSAppearance.h"
#endif

namespace zqcore::platform {

std::shared_ptr<const NSAppearance> NSApplication::effectiveAppearance() const {
    if (state_->appearance) return state_->appearance;
#if __has_include("Platform/Graphics/NSAppearance.h")
    return state_->display->appearance() == DisplayAppearance::dark ? NSAppearance::darkAqua()
                                                                    : NSAppearance::aqua();
#else
    return nullptr;
#endif
}

}  // namespace zqcore::platform
