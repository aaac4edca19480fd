#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

// Names that views answer for by their accessibility operations (NSView.h).
inline constexpr std::string_view NSAccessibilityRoleAttribute = "AXRole";
inline constexpr std::string_view NSAccessibilityRoleDescriptionAttribute = "AXRoleDescription";
inline constexpr std::string_view NSAccessibilityHelpAttribute = "AXHelp";
inline constexpr std::string_view NSAccessibilityParentAttribute = "AXParent";
inline constexpr std::string_view NSAccessibilityChildrenAttribute = "AXChildren";
inline constexpr std::string_view NSAccessibilityWindowAttribute = "AXWindow";
inline constexpr std::string_view NSAccessibilityTopLevelUIElementAttribute = "AXTopLevelUIElement";
inline constexpr std::string_view NSAccessibilityPositionAttribute = "AXPosition";
inline constexpr std::string_view NSAccessibilitySizeAttribute = "AXSize";
inline constexpr std::string_view NSAccessibilityFocusedAttribute = "AXFocused";
inline constexpr std::string_view NSAccessibilityValueAttribute = "AXValue";
inline constexpr std::string_view NSAccessibilityEnabledAttribute = "AXEnabled";
inline constexpr std::string_view NSAccessibilityDescriptionAttribute = "AXDescription";

inline constexpr std::string_view NSAccessibilityUnknownRole = "AXUnknown";
inline constexpr std::string_view NSAccessibilityButtonRole = "AXButton";
inline constexpr std::string_view NSAccessibilityCheckBoxRole = "AXCheckBox";
inline constexpr std::string_view NSAccessibilityPressAction = "AXPress";

/// What an attribute holds: nothing, a number, a text, a place or a size in y-up screen space, an object, or
/// several.
using NSAccessibilityValue = std::variant<std::monostate, bool, double, std::string, CGPoint, CGSize,
                                          std::shared_ptr<NSObject>, std::vector<std::shared_ptr<NSObject>>>;

}  // namespace zqcore::platform
