#pragma once

#include <memory>
#include <string>
#include <typeinfo>

#include "Platform/AppKit/NSNib.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Base/NSStringFromClass.h"

namespace zqcore {

/// The first view of the class `View` in the nib that is named after it, or null. Threads: main thread.
template <class View>
[[nodiscard]] std::shared_ptr<View> zq_loadFromNib() {
    std::string name = NSStringFromClass(typeid(View));
    if (const auto colons = name.rfind("::"); colons != std::string::npos) name.erase(0, colons + 2);
    const auto objects = NSNib::loadNibNamed(name, nullptr);
    if (!objects) return nullptr;
    for (const auto& object : *objects)
        if (auto view = std::dynamic_pointer_cast<View>(object)) return view;
    return nullptr;
}

}  // namespace zqcore
