#pragma once

#include <string>

#include "Platform/Base/Export.h"

namespace zqcore {

/// An application by its bundle identifier, and the well-known ones that other code treats in a special way.
/// Threads: a value. Failure: none; any text makes one.
struct ZQ_EXPORT FamousApp {
    std::string rawValue;

    [[nodiscard]] static FamousApp iBooks() { return {"com.apple.iBooksX"}; }
    [[nodiscard]] static FamousApp chrome() { return {"com.google.Chrome"}; }
    [[nodiscard]] static FamousApp edge() { return {"com.microsoft.edgemac"}; }
    [[nodiscard]] static FamousApp parallelsDesktop() { return {"com.parallels.desktop.console"}; }
    [[nodiscard]] static FamousApp popClip() { return {"com.pilotmoon.popclip"}; }
    [[nodiscard]] static FamousApp qq() { return {"com.tencent.qq"}; }
    [[nodiscard]] static FamousApp weChat() { return {"com.tencent.xinWeChat"}; }
    [[nodiscard]] static FamousApp foxitPDFReader() { return {"com.foxit-software.Foxit PDF Reader"}; }

    friend bool operator==(const FamousApp&, const FamousApp&) = default;
};

}  // namespace zqcore
