#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Classes/UI/TipManager/TipWindow.h"
#include "Platform/Base/CGGeometry.h"
#include "Platform/Graphics/CGColor.h"

struct _cairo;
struct _cairo_surface;

namespace zqcore::benchmarks {

/// A tip's card drawn with cairo and pango alone: the same rectangles, border, texts, pictures and shadow as
/// the window that it is taken from, their places, colours and fonts known beforehand.
class BareTip {
  public:
    /// Reads what the window shows, and opens its pictures and fonts.
    BareTip(const TipWindow& window, CGFloat scale);
    ~BareTip();
    BareTip(const BareTip&) = delete;
    BareTip& operator=(const BareTip&) = delete;

    [[nodiscard]] int width() const noexcept { return width_; }
    [[nodiscard]] int height() const noexcept { return height_; }
    /// A new surface with the card on it, flushed; the caller's.
    [[nodiscard]] _cairo_surface* draw() const;

  private:
    struct Fill {
        CGRect rect;
        CGFloat radius;
        CGColor color;
    };
    struct Text {
        std::string text;
        CGPoint origin;  // of the baseline
        CGColor color;
    };
    struct Picture {
        _cairo_surface* surface;
        CGRect rect;
    };
    struct Type;

    void collect(const NSView& view);
    void drawShadow(_cairo* cr) const;
    void drawBorder(_cairo* cr) const;
    void drawText(_cairo* cr, const Text& text) const;

    CGFloat scale_;
    CGSize size_;
    int width_ = 0;
    int height_ = 0;
    std::vector<Fill> fills_;  // the card itself first
    CGColor borderColor_;
    CGFloat borderWidth_ = 0;
    CGColor shadowColor_;
    CGSize shadowOffset_;
    CGFloat shadowBlur_ = 0;
    std::vector<Text> texts_;
    std::vector<Picture> pictures_;
    std::unique_ptr<Type> type_;
};

}  // namespace zqcore::benchmarks
