#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <string_view>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

class CGContext;
class NSAttributedString;
class NSColor;
class NSFont;

enum class NSTextAlignment { left = 0, right = 1, center = 2, natural = 4 };
enum class NSLineBreakMode {
    byWordWrapping = 0,
    byCharWrapping = 1,
    byClipping = 2,
    byTruncatingHead = 3,
    byTruncatingTail = 4,
    byTruncatingMiddle = 5,
};

/// How a text is broken into lines. Lengths in points.
struct TextLayoutOptions {
    static constexpr CGFloat kNoLimit = std::numeric_limits<CGFloat>::infinity();

    /// The widest a line may be; what isn't above 0 is no limit. Clipping modes never break for it.
    CGFloat width = kNoLimit;
    NSLineBreakMode lineBreak = NSLineBreakMode::byWordWrapping;
    NSTextAlignment alignment = NSTextAlignment::natural;

    friend bool operator==(const TextLayoutOptions&, const TextLayoutOptions&) = default;
};

/// A text broken into lines, to be measured and drawn. Every line is as high as its own font asks for
/// (ascender, descender and leading, rounded up), whatever font a missing glyph was taken from, so that
/// heights don't change with the script. Nothing is rounded to pixels: a text measures the same at any scale.
/// Fonts: DejaVu Sans, and WenQuanYi Micro Hei for Chinese, from their files; only a text with glyphs that
/// both lack looks into the fonts of the system. The last few short texts are remembered and cost nothing
/// again. Threads: the one that made it. Failure: none; a byte that isn't UTF-8 reads as U+FFFD.
class ZQ_EXPORT TextLayout final {
  public:
    TextLayout(std::string_view text, const std::shared_ptr<NSFont>& font,
               const TextLayoutOptions& options = {});
    /// `font` is that of runs without one, and of an empty text.
    TextLayout(const NSAttributedString& text, const std::shared_ptr<NSFont>& font,
               const TextLayoutOptions& options = {});
    ~TextLayout();
    TextLayout(TextLayout&&) noexcept;
    TextLayout& operator=(TextLayout&&) noexcept;

    /// The widest line and the heights of all lines; an empty text is 0 wide and one line high.
    [[nodiscard]] CGSize size() const noexcept;
    [[nodiscard]] std::size_t lineCount() const noexcept;
    /// From the upper edge to the first base line.
    [[nodiscard]] CGFloat firstBaseline() const noexcept;

    /// Draws the lines from the upper edge of `rect` on, aligned within its width. `color` is that of runs
    /// without one; the label colour if it is null.
    void draw(CGContext& context, const CGRect& rect, const std::shared_ptr<NSColor>& color = nullptr) const;
    /// Where the edge before a UTF-16 unit stands: a rectangle without width, as high as its line, from the
    /// upper left corner of the text with y downwards.
    [[nodiscard]] CGRect caretRect(std::size_t index) const;

  private:
    struct Impl;
    class Recent;
    std::shared_ptr<Impl> impl_;
};

/// The line height of a font: ascender, absolute descender and leading together, rounded up.
[[nodiscard]] ZQ_EXPORT CGFloat lineHeightOf(const NSFont& font) noexcept;

}  // namespace zqcore::platform
