#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Graphics/CGAffineTransform.h"
#include "Platform/Graphics/CGColor.h"

struct _cairo;  // what stands behind a context

namespace zqcore::platform {

class CGImage;
class CGPath;
class PixelBuffer;

enum class CGBlendMode { normal = 0, clear = 16, copy = 17, sourceIn = 18, sourceOut = 19, sourceAtop = 20 };
enum class CGLineCap { butt = 0, round = 1, square = 2 };
enum class CGLineJoin { miter = 0, round = 1, bevel = 2 };
enum class CGInterpolationQuality { standard = 0, none = 1, low = 2, high = 3, medium = 4 };

/// A blurred copy of a shape in one colour. `offset` lies in the space that is current when it is drawn;
/// `blur` in points is twice the sigma of the Gaussian.
struct CGShadow {
    CGColor color;
    CGSize offset;
    CGFloat blur = 0;
};

/// A surface to draw on, with a stack of states. A new one has its origin in the lower left corner and y
/// upwards, one point a pixel; `flip` turns y downwards. Images and text stand upright in both.
/// Threads: one at a time. Lifetime: a bitmap context keeps its pixels.
/// Failure: a transform that flattens the plane draws nothing until its state is restored; places that aren't
/// numbers draw nothing.
class ZQ_EXPORT CGContext final {
  public:
    /// A transparent bitmap of that many pixels, or a null pointer for sides that a bitmap can't have.
    [[nodiscard]] static std::shared_ptr<CGContext> bitmap(std::int64_t width, std::int64_t height);
    /// Draws into pixels that are there. A null pointer gives one.
    [[nodiscard]] static std::shared_ptr<CGContext> bitmap(std::shared_ptr<PixelBuffer> pixels);
    /// The platform's maker: null unless 8 bits a component, our one byte order and alpha (CGImage.h), and
    /// rows of at least 4 times the width, or 0 for just that.
    [[nodiscard]] static std::shared_ptr<CGContext> bitmapContextCreate(std::int64_t width,
                                                                        std::int64_t height,
                                                                        int bitsPerComponent,
                                                                        std::size_t bytesPerRow,
                                                                        std::uint32_t bitmapInfo);
    /// Draws on a surface of the window system: takes over one reference to `native`, whose device space has
    /// `pixelHeight` rows from the top.
    [[nodiscard]] static std::shared_ptr<CGContext> adopt(_cairo* native, CGFloat pixelHeight);
    ~CGContext();
    CGContext(const CGContext&) = delete;
    CGContext& operator=(const CGContext&) = delete;

    void saveGState();
    /// More restores than saves do nothing.
    void restoreGState();

    void translateBy(CGFloat x, CGFloat y);
    void scaleBy(CGFloat x, CGFloat y);
    void concatenate(const CGAffineTransform& transform);
    /// Turns y round within a space `height` high: what was its upper edge becomes y = 0.
    void flip(CGFloat height);
    /// Whether y grows downwards here, told by the calls of `flip` in this state.
    [[nodiscard]] bool isFlipped() const noexcept;
    /// From the present space to pixels, whose y grows upwards.
    [[nodiscard]] CGAffineTransform ctm() const noexcept;

    void clipTo(const CGRect& rect);
    void clipTo(const CGPath& path, bool evenOdd = false);
    /// What can be drawn on, in the present space; empty if nothing can.
    [[nodiscard]] CGRect clipBoundingBox() const;

    void setFillColor(const CGColor& color);
    void setStrokeColor(const CGColor& color);
    void setLineWidth(CGFloat width);
    void setLineCap(CGLineCap cap);
    void setLineJoin(CGLineJoin join);
    /// Multiplies what is drawn from now on.
    void setAlpha(CGFloat alpha);
    void setBlendMode(CGBlendMode mode);
    void setInterpolationQuality(CGInterpolationQuality quality);
    void setShouldAntialias(bool antialias);

    void fill(const CGRect& rect);
    void fill(const CGPath& path, bool evenOdd = false);
    void stroke(const CGPath& path);
    /// Makes the rectangle transparent, whatever the blend mode.
    void clear(const CGRect& rect);

    /// The image, upright, stretched to `rect`.
    void drawImage(const CGImage& image, const CGRect& rect);
    /// The fill colour through the image's alpha.
    void fillMask(const CGImage& image, const CGRect& rect);
    /// Fills the clip; beyond both ends the end colours go on. Without locations the colours are spread
    /// evenly; without colours nothing happens.
    void drawLinearGradient(std::span<const CGColor> colors, std::span<const CGFloat> locations,
                            CGPoint start, CGPoint end);
    /// The shadow of a filled path alone, not the path. It may be left out within `covered`, where something
    /// opaque is about to be drawn.
    void drawShadow(const CGPath& path, const CGShadow& shadow, const CGRect& covered = {});

    /// What follows up to `endTransparencyLayer` is drawn as one group; the group is then shown through
    /// `alpha`, its shadow below it. States are saved and restored with it.
    void beginTransparencyLayer(CGFloat alpha = 1, const std::optional<CGShadow>& shadow = std::nullopt);
    void endTransparencyLayer();
    /// The same, shown only where `mask`, stretched to `rect` in the space of the begin, is opaque.
    void endTransparencyLayer(const CGImage& mask, const CGRect& rect);

    /// In pixels; 0 for what is no bitmap.
    [[nodiscard]] int width() const noexcept;
    [[nodiscard]] int height() const noexcept;
    /// A copy of the bitmap as it stands; null for what is no bitmap.
    [[nodiscard]] std::shared_ptr<const CGImage> makeImage() const;
    /// Ends what is still pending, so that the bitmap can be read.
    void flush() const;
    /// The bitmap itself, all drawing done.
    [[nodiscard]] std::shared_ptr<PixelBuffer> pixels() const;

    /// For what else draws through the same library, with the present space set.
    [[nodiscard]] _cairo* native() const noexcept;
    /// Whether drawing now would leave no trace.
    [[nodiscard]] bool drawsNothing() const noexcept;
    [[nodiscard]] CGFloat alpha() const noexcept;

  private:
    struct Impl;
    explicit CGContext(std::unique_ptr<Impl> impl) noexcept;

    std::unique_ptr<Impl> impl_;
};

}  // namespace zqcore::platform
