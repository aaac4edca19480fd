#pragma once

#include <memory>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Graphics/CGContext.h"

namespace zqcore::platform {

class NSBitmapImageRep;

enum class NSCompositingOperation {
    clear = 0,
    copy = 1,
    sourceOver = 2,
    sourceIn = 3,
    sourceOut = 4,
    sourceAtop = 5,
};

/// The context that `set`, `fill` and their kind draw on: each thread has a current one, or none.
/// Threads: the current context belongs to the calling thread. Lifetime: shared; keeps its `CGContext`.
class ZQ_EXPORT NSGraphicsContext final {
  public:
    [[nodiscard]] static std::shared_ptr<NSGraphicsContext> graphicsContextWithCGContext(
        std::shared_ptr<CGContext> context);
    /// Draws into the bitmap's pixels; a null pointer gives one.
    [[nodiscard]] static std::shared_ptr<NSGraphicsContext> graphicsContextWithBitmapImageRep(
        const std::shared_ptr<NSBitmapImageRep>& bitmap);

    [[nodiscard]] static std::shared_ptr<NSGraphicsContext> currentContext();
    static void setCurrentContext(std::shared_ptr<NSGraphicsContext> context);
    /// Puts the current context aside together with its state; the two go in pairs.
    static void saveGraphicsState();
    /// Brings back the one that was put aside last; without one nothing happens.
    static void restoreGraphicsState();

    [[nodiscard]] const std::shared_ptr<CGContext>& cgContext() const noexcept { return context_; }
    /// Whether y grows downwards in it.
    [[nodiscard]] bool isFlipped() const noexcept { return context_->isFlipped(); }

    explicit NSGraphicsContext(std::shared_ptr<CGContext> context) noexcept : context_(std::move(context)) {}

  private:
    std::shared_ptr<CGContext> context_;
};

/// Makes `context` current while it lives, state saved before and restored after.
class ZQ_EXPORT GraphicsContextScope final {
  public:
    explicit GraphicsContextScope(std::shared_ptr<CGContext> context);
    ~GraphicsContextScope() { NSGraphicsContext::restoreGraphicsState(); }
    GraphicsContextScope(const GraphicsContextScope&) = delete;
    GraphicsContextScope& operator=(const GraphicsContextScope&) = delete;
};

/// Fills with the current colour, replacing what was there. Without current context nothing happens.
ZQ_EXPORT void NSRectFill(const CGRect& rect);
ZQ_EXPORT void NSRectFillUsingOperation(const CGRect& rect, NSCompositingOperation operation);

[[nodiscard]] ZQ_EXPORT CGBlendMode blendModeOf(NSCompositingOperation operation) noexcept;

}  // namespace zqcore::platform
