#pragma once

#include "Classes/UI/TipManager/TipInfo.h"
#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::tip_placement {

// Where a tip's window goes. All rectangles are in screen space; the window is larger than its visible card
// by the card's clear margin, which `spacing` and the alignments leave out. Threads: any. Failure: none.

/// The place beside `target` on the side `location`, whatever the screen.
[[nodiscard]] ZQ_EXPORT CGRect calculateLocation(const CGRect& target, CGSize windowSize, const TipInfo& info,
                                                 TipLocation location) noexcept;

/// The place by `info.location`; where that passes the far edge of `visibleFrame`, the place on the opposite
/// side as it is, else slid along its side into `visibleFrame`: left wins over right and top over bottom.
[[nodiscard]] ZQ_EXPORT CGRect fixedWindowFrame(const CGRect& target, CGSize windowSize, const TipInfo& info,
                                                const CGRect& visibleFrame) noexcept;

}  // namespace zqcore::tip_placement
