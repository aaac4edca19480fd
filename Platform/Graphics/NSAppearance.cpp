#include "Platform/Graphics/NSAppearance.h"

#include <algorithm>
#include <utility>

namespace zqcore::platform {

namespace {

// Never freed: colours may be asked for while the process ends.
const std::shared_ptr<const NSAppearance>& light() {
    static const auto& shared =
        *new std::shared_ptr<const NSAppearance>(std::make_shared<NSAppearance>(NSAppearanceNameAqua));
    return shared;
}

const std::shared_ptr<const NSAppearance>& dark() {
    static const auto& shared =
        *new std::shared_ptr<const NSAppearance>(std::make_shared<NSAppearance>(NSAppearanceNameDarkAqua));
    return shared;
}

thread_local bool drawsDark = false;

}  // namespace

std::shared_ptr<const NSAppearance> NSAppearance::aqua() { return light(); }
std::shared_ptr<const NSAppearance> NSAppearance::darkAqua() { return dark(); }

std::shared_ptr<const NSAppearance> NSAppearance::appearanceNamed(std::string_view name) {
    if (name == NSAppearanceNameAqua) return light();
    if (name == NSAppearanceNameDarkAqua) return dark();
    return nullptr;
}

std::optional<std::string> NSAppearance::bestMatchFromAppearancesWithNames(
    std::span<const std::string_view> names) const {
    const auto listed = [&](std::string_view name) { return std::ranges::find(names, name) != names.end(); };
    if (listed(name_)) return name_;
    if (listed(NSAppearanceNameAqua)) return std::string(NSAppearanceNameAqua);
    return std::nullopt;
}

std::shared_ptr<const NSAppearance> NSAppearance::currentDrawingAppearance() {
    return drawsDark ? dark() : light();
}

void NSAppearance::setCurrentDrawingAppearance(const std::shared_ptr<const NSAppearance>& appearance) {
    drawsDark = appearance && appearance->isDark();
}

void NSAppearance::performAsCurrentDrawingAppearance(const std::function<void()>& block) const {
    struct Restore {
        bool before = drawsDark;
        ~Restore() { drawsDark = before; }
    } const restore;
    drawsDark = isDark();
    if (block) block();
}

}  // namespace zqcore::platform
