#include "Classes/UI/TipManager/TipInfo.h"

#include <gtest/gtest.h>

namespace zqcore {
namespace {

TEST(TipInfoTest, StartsEmptyAboveItsView) {
    const auto info = TipInfo::make();
    EXPECT_FALSE(info->displayStrategy) << "absent, not immediately";
    EXPECT_EQ(info->location, TipLocation::top);
    EXPECT_EQ(info->horizontalAlignment, TipHorizontalAlignment::center);
    EXPECT_EQ(info->verticalAlignment, TipVerticalAlignment::center);
    EXPECT_EQ(info->spacing, 5);
    EXPECT_EQ(info->horizontalOffset, 0);
    EXPECT_EQ(info->verticalOffset, 0);
    EXPECT_FALSE(info->text || info->trigger || info->rightText || info->rightTrigger || info->windowActions);
}

TEST(TipInfoTest, BothHaveTextNeedsACharacterInEach) {
    const auto info = TipInfo::make();
    const std::optional<std::string> texts[] = {std::nullopt, "", "翻", "text"};
    for (const auto& left : texts) {
        for (const auto& right : texts) {
            info->text = left;
            info->rightText = right;
            EXPECT_EQ(info->bothHaveText(), left.value_or("") != "" && right.value_or("") != "");
        }
    }
}

}  // namespace
}  // namespace zqcore
