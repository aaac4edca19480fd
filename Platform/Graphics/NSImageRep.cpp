#include "Platform/Graphics/NSImageRep.h"

#include <cmath>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

std::shared_ptr<const CGImage> NSImageRep::cgImage(double scale) const {
    const double width = std::ceil(size_.width * scale);
    const double height = std::ceil(size_.height * scale);
    constexpr double largest = PixelBuffer::kLargestSide;
    if (!(width >= 1 && height >= 1 && width <= largest && height <= largest)) return nullptr;
    const auto pixels =
        PixelBuffer::make(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height));
    const auto context = CGContext::bitmap(pixels);
    if (!context) return nullptr;
    draw(*context, {{}, {width, height}});
    return CGImage::make(context->pixels());
}

void NSCustomImageRep::draw(CGContext& context, const CGRect& rect) const {
    const CGSize own = size();
    if (!handler_ || !(own.width > 0 && own.height > 0)) return;
    // The context is only borrowed: the scope below lets go of it before this call ends.
    const std::shared_ptr<CGContext> borrowed(std::shared_ptr<CGContext>(), &context);
    context.saveGState();
    context.translateBy(rect.origin.x, rect.origin.y);
    context.scaleBy(rect.size.width / own.width, rect.size.height / own.height);
    // What the function draws beside its image isn't part of it.
    context.clipTo(CGRect{{}, own});
    if (context.isFlipped() != flipped_) context.flip(own.height);
    {
        const GraphicsContextScope scope(borrowed);
        handler_({{}, own});
    }
    context.restoreGState();
}

}  // namespace zqcore::platform
