#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

class CGContext;
class CGImage;

/// One form of an image: its size in points and what draws it.
/// Threads: one at a time. Lifetime: shared by the images that hold it.
class ZQ_EXPORT NSImageRep : public NSObject {
  public:
    [[nodiscard]] CGSize size() const noexcept { return size_; }
    void setSize(CGSize size) noexcept { size_ = size; }
    /// 0 for a form without pixels of its own.
    [[nodiscard]] virtual int pixelsWide() const noexcept { return 0; }
    [[nodiscard]] virtual int pixelsHigh() const noexcept { return 0; }

    /// Draws itself upright into `rect`.
    virtual void draw(CGContext& context, const CGRect& rect) const = 0;
    /// Its pixels: its own, else drawn at `scale` pixels a point; null if it has no area or is too large.
    [[nodiscard]] virtual std::shared_ptr<const CGImage> cgImage(double scale) const;

  protected:
    explicit NSImageRep(CGSize size) noexcept : size_(size) {}

  private:
    CGSize size_;
};

/// A form that a function draws, anew each time. The function draws on the current graphics context into the
/// given rectangle, whose origin is 0, 0 and whose y grows downwards if `flipped`.
class ZQ_EXPORT NSCustomImageRep final : public NSImageRep {
  public:
    using DrawingHandler = std::function<bool(const CGRect& destination)>;

    [[nodiscard]] static std::shared_ptr<NSCustomImageRep> make(CGSize size, bool flipped,
                                                                DrawingHandler handler) {
        return makeObject<NSCustomImageRep>(size, flipped, std::move(handler));
    }
    void draw(CGContext& context, const CGRect& rect) const override;

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSCustomImageRep(CGSize size, bool flipped, DrawingHandler handler)
        : NSImageRep(size), flipped_(flipped), handler_(std::move(handler)) {}

    bool flipped_;
    DrawingHandler handler_;
};

}  // namespace zqcore::platform
