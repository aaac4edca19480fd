#include "Classes/Core/Extension/AppKit/StringMeasuring.h"

#include <cmath>

#include "Platform/Graphics/TextLayout.h"

namespace zqcore {

using platform::CGFloat;
using platform::TextLayout;

CGFloat zq_height(std::string_view text, CGFloat withConstrainedWidth,
                  const std::shared_ptr<platform::NSFont>& font) {
    return std::ceil(TextLayout(text, font, {.width = withConstrainedWidth}).size().height);
}

CGFloat zq_width(std::string_view text, CGFloat /*withConstrainedHeight*/,
                 const std::shared_ptr<platform::NSFont>& font) {
    // A limit on the height breaks no line, so it can't change how wide one is.
    return std::ceil(TextLayout(text, font).size().width);
}

}  // namespace zqcore
