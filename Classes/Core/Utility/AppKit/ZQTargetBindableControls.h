#pragma once

#include "Classes/Core/Utility/ZQTargetBindable.h"
#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSGestureRecognizer.h"
#include "Platform/AppKit/NSMenuItem.h"

// A closure in the place of target and action, for controls, menu items and gestures:
//
//     zq_bindAction(button, [](NSButton& pressed) { pressed.setTitle("Pressed"); });
//     zq_bindAction(button, {});                                  // no target and no action any more
namespace zqcore {

static_assert(ZQTargetBindable<NSControl>);
static_assert(ZQTargetBindable<NSMenuItem>);
static_assert(ZQTargetBindable<NSGestureRecognizer>);

}  // namespace zqcore
