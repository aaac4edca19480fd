#include "Classes/Core/Extension/AppKit/NSFontExtension.h"

#include "Platform/Graphics/TextLayout.h"

namespace zqcore {

// The layer lays its lines out by the same number, and must not know this one.
platform::CGFloat zq_lineHeight(const platform::NSFont& font) noexcept {
    return platform::lineHeightOf(font);
}

}  // namespace zqcore
