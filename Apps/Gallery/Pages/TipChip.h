#pragma once

#include <memory>
#include <string_view>

#include "Apps/Gallery/Sheet.h"
#include "Classes/UI/TipManager/TipableView.h"

namespace gallery {

class Stage;

/// A plain control that has a tip.
[[nodiscard]] std::shared_ptr<TipableView> tipChip(std::string_view title, CGSize size,
                                                   std::shared_ptr<TipInfo> tip);

/// Rests the pointer on each sample of the sheet in turn and keeps its tip.
void showEachTip(Stage& stage, Sheet& sheet);

}  // namespace gallery
