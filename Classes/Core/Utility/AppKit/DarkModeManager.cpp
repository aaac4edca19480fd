#include "Classes/Core/Utility/AppKit/DarkModeManager.h"

#include <array>
#include <string_view>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Graphics/NSAppearance.h"

namespace zqcore {

namespace {

bool readDarkState() {
    constexpr std::array<std::string_view, 2> kNames = {NSAppearanceNameDarkAqua, NSAppearanceNameAqua};
    const auto appearance = NSApplication::shared()->effectiveAppearance();
    return appearance && appearance->bestMatchFromAppearancesWithNames(kNames) == NSAppearanceNameDarkAqua;
}

}  // namespace

const std::shared_ptr<DarkModeManager>& DarkModeManager::shared() {
    static const auto* const kShared = new std::shared_ptr<DarkModeManager>(makeObject<DarkModeManager>());
    return *kShared;
}

DarkModeManager::DarkModeManager()
    : isDarkMode_(std::make_shared<CurrentValueSubject<bool>>(readDarkState())) {}

void DarkModeManager::setup() {
    NSObject::setup();
    observe();
}

void DarkModeManager::observeAgainForTesting() {
    observe();
    readAgain();
}

void DarkModeManager::observe() {
    const std::weak_ptr<NSObject> weak = weak_from_this();
    ob_ = NSApplication::shared()->observeEffectiveAppearance([weak](const auto&) {
        if (weak.expired()) return;
        DispatchQueue::main()->async([weak] {
            if (const auto held = std::static_pointer_cast<DarkModeManager>(weak.lock())) held->readAgain();
        });
    });
}

void DarkModeManager::readAgain() {
    const bool isDark = readDarkState();
    if (isDark != isDarkMode()) isDarkMode_->send(isDark);
}

}  // namespace zqcore
