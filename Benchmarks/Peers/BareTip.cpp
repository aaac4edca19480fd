#include "Benchmarks/Peers/BareTip.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "Classes/UI/TipManager/TipView.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/QuartzCore/CALayer.h"

namespace zqcore::benchmarks {

namespace {

constexpr double kFontSize = 12;

void setSource(cairo_t* cr, const CGColor& color) {
    cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
}

void roundedRect(cairo_t* cr, const CGRect& rect, CGFloat radius) {
    constexpr double kQuarter = std::numbers::pi / 2;
    const auto [x, y] = rect.origin;
    const auto [w, h] = rect.size;
    cairo_new_sub_path(cr);
    cairo_arc(cr, x + w - radius, y + radius, radius, -kQuarter, 0);
    cairo_arc(cr, x + w - radius, y + h - radius, radius, 0, kQuarter);
    cairo_arc(cr, x + radius, y + h - radius, radius, kQuarter, 2 * kQuarter);
    cairo_arc(cr, x + radius, y + radius, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(cr);
}

using Mask = std::vector<std::uint8_t>;

/// Half widths of three running means that together spread as a Gaussian of `sigma` does.
std::array<int, 3> halfWidths(double sigma) {
    const int lower = (static_cast<int>(std::sqrt(4 * sigma * sigma + 1)) - 1) / 2;
    const auto variance = [](int half) { return half * (half + 1) / 3.0; };
    std::array<int, 3> halves{lower, lower, lower};
    // As many of the next width as come nearest.
    const double missing = (sigma * sigma - 3 * variance(lower)) / (variance(lower + 1) - variance(lower));
    std::fill_n(halves.begin(), std::clamp<long>(std::lround(missing), 0, 3), lower + 1);
    return halves;
}

/// One over the width of a running mean, in 16 bits below the point.
int reciprocal(int half) { return (1 << 16) / (2 * half + 1) + 1; }

void meanOfRows(Mask& mask, int width, int height, int stride, int half) {
    Mask padded(static_cast<std::size_t>(width + 2 * half + 1));
    const int share = reciprocal(half);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = mask.data() + static_cast<std::ptrdiff_t>(y) * stride;
        std::copy_n(row, width, padded.begin() + half + 1);
        int sum = half;  // to the nearest
        for (int x = 0; x < 2 * half; ++x) sum += padded[static_cast<std::size_t>(x + 1)];
        for (int x = 0; x < width; ++x) {
            sum += padded[static_cast<std::size_t>(x + 2 * half + 1)];
            row[x] = static_cast<std::uint8_t>((sum * share) >> 16);
            sum -= padded[static_cast<std::size_t>(x + 1)];
        }
    }
}

/// All columns at once, so that memory is read in its order.
void meanOfColumns(Mask& mask, int height, int stride, int half) {
    const Mask before = mask;
    std::vector<int> sums(static_cast<std::size_t>(stride), half);
    const int share = reciprocal(half);
    const auto add = [&](int y, int sign) {
        if (y < 0 || y >= height) return;
        const std::uint8_t* row = before.data() + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < stride; ++x) sums[static_cast<std::size_t>(x)] += sign * row[x];
    };
    for (int y = -half; y < half; ++y) add(y, 1);
    for (int y = 0; y < height; ++y) {
        add(y + half, 1);
        std::uint8_t* row = mask.data() + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < stride; ++x)
            row[x] = static_cast<std::uint8_t>((sums[static_cast<std::size_t>(x)] * share) >> 16);
        add(y - half, -1);
    }
}

}  // namespace

/// Without hints and with letters between the pixels, as the library sets its texts.
struct BareTip::Type {
    PangoFontDescription* font = pango_font_description_from_string("DejaVu Sans,WenQuanYi Micro Hei,Sans");
    PangoContext* context = nullptr;

    Type() {
        pango_font_description_set_absolute_size(font, kFontSize * PANGO_SCALE);
        PangoFontMap* map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
        context = pango_font_map_create_context(map);
        g_object_unref(map);
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(context, options);
        cairo_font_options_destroy(options);
        pango_context_set_round_glyph_positions(context, FALSE);
        pango_context_set_language(context, pango_language_from_string("en"));
    }
    ~Type() {
        g_object_unref(context);
        pango_font_description_free(font);
    }
    Type(const Type&) = delete;
    Type& operator=(const Type&) = delete;
};

BareTip::BareTip(const TipWindow& window, CGFloat scale)
    : scale_(scale),
      size_(window.frame().size),
      width_(static_cast<int>(std::ceil(size_.width * scale))),
      height_(static_cast<int>(std::ceil(size_.height * scale))),
      type_(std::make_unique<Type>()) {
    const NSView& card = *window.tipViewController()->tipView();
    const CALayer& layer = *card.layer();
    borderColor_ = layer.borderColor();
    borderWidth_ = layer.borderWidth();
    shadowColor_ = layer.shadowColor();
    shadowOffset_ = layer.shadowOffset();
    shadowBlur_ = layer.shadowRadius();
    collect(card);
}

BareTip::~BareTip() {
    for (const Picture& picture : pictures_) cairo_surface_destroy(picture.surface);
}

// Places y downwards from the window's upper edge.
void BareTip::collect(const NSView& view) {
    CGRect rect = view.convertRectToView(view.bounds(), nullptr);
    rect.origin.y = size_.height - rect.origin.y - rect.size.height;
    if (const auto* label = dynamic_cast<const NSTextField*>(&view)) {
        const CGFloat base = std::round(label->font()->ascender());
        texts_.push_back(
            {label->stringValue(), {rect.origin.x, rect.origin.y + base}, label->textColor()->cgColor()});
    } else if (const auto* image = dynamic_cast<const NSImageView*>(&view)) {
        const std::string& path = image->image()->bestFile(scale_).path;
        pictures_.push_back({cairo_image_surface_create_from_png(path.c_str()), rect});
    } else if (const auto color = view.layer()->backgroundColor(); color.alpha > 0) {
        fills_.push_back({rect, view.layer()->cornerRadius(), color});
    }
    for (const auto& subview : view.subviews()) collect(*subview);
}

void BareTip::drawShadow(cairo_t* cr) const {
    const int stride = cairo_format_stride_for_width(CAIRO_FORMAT_A8, width_);
    Mask mask(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height_));
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(mask.data(), CAIRO_FORMAT_A8, width_, height_, stride);
    cairo_t* draw = cairo_create(surface);
    cairo_scale(draw, scale_, scale_);
    roundedRect(draw, fills_.front().rect, fills_.front().radius);
    cairo_fill(draw);
    cairo_destroy(draw);
    cairo_surface_flush(surface);
    for (const int half : halfWidths(shadowBlur_ / 2 * scale_)) {
        if (half == 0) continue;
        meanOfRows(mask, width_, height_, stride, half);
        meanOfColumns(mask, height_, stride, half);
    }
    cairo_surface_mark_dirty(surface);
    setSource(cr, shadowColor_);
    cairo_mask_surface(cr, surface, shadowOffset_.width * scale_, -shadowOffset_.height * scale_);
    cairo_surface_destroy(surface);
}

void BareTip::drawBorder(cairo_t* cr) const {
    const auto& [rect, radius, color] = fills_.front();
    const CGFloat inset = borderWidth_ / 2;
    setSource(cr, borderColor_);
    cairo_set_line_width(cr, borderWidth_);
    roundedRect(cr,
                {{rect.origin.x + inset, rect.origin.y + inset},
                 {rect.size.width - borderWidth_, rect.size.height - borderWidth_}},
                radius - inset);
    cairo_stroke(cr);
}

void BareTip::drawText(cairo_t* cr, const Text& text) const {
    PangoLayout* layout = pango_layout_new(type_->context);
    pango_layout_set_font_description(layout, type_->font);
    pango_layout_set_text(layout, text.text.data(), static_cast<int>(text.text.size()));
    setSource(cr, text.color);
    cairo_move_to(cr, text.origin.x, text.origin.y);
    pango_cairo_show_layout_line(cr, pango_layout_get_line_readonly(layout, 0));
    g_object_unref(layout);
}

cairo_surface_t* BareTip::draw() const {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width_, height_);
    cairo_t* cr = cairo_create(surface);
    drawShadow(cr);
    cairo_scale(cr, scale_, scale_);
    for (const auto& [rect, radius, color] : fills_) {
        setSource(cr, color);
        roundedRect(cr, rect, radius);
        cairo_fill(cr);
    }
    for (const Text& text : texts_) drawText(cr, text);
    for (const auto& [picture, rect] : pictures_) {
        cairo_save(cr);
        cairo_translate(cr, rect.origin.x, rect.origin.y);
        cairo_rectangle(cr, 0, 0, rect.size.width, rect.size.height);
        cairo_scale(cr, rect.size.width / cairo_image_surface_get_width(picture),
                    rect.size.height / cairo_image_surface_get_height(picture));
        cairo_set_source_surface(cr, picture, 0, 0);
        cairo_pattern_set_extend(cairo_get_source(cr), CAIRO_EXTEND_PAD);
        cairo_fill(cr);
        cairo_restore(cr);
    }
    drawBorder(cr);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    return surface;
}

}  // namespace zqcore::benchmarks
