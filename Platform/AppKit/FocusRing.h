#pragma once

#include <memory>

namespace zqcore::platform {

class CGContext;
class NSResponder;
class NSWindow;

/// Whether a ring goes round the responder while it has the keys: it is a view with a focus-ring mask.
[[nodiscard]] bool hasFocusRing(const std::shared_ptr<NSResponder>& responder);

/// The ring round the key window's first responder, outside of the view's mask and within what the clip views
/// above leave of its surroundings. The context is in window space. Main thread.
void drawFocusRing(NSWindow& window, CGContext& context);

}  // namespace zqcore::platform
