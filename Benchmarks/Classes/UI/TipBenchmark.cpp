// From `showTip` to the drawn pixels, beside the bare cairo and pango work of the same pixels: the same
// rectangles, texts, pictures and shadow, their places known beforehand.
#include <benchmark/benchmark.h>
#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "Classes/UI/TipManager/TipManager.h"
#include "Classes/UI/TipManager/TipWindow.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace {

using namespace zqcore;

std::shared_ptr<TipInfo> makeTip() {
    auto info = TipInfo::make();
    info->text = "翻译选中的文字";
    info->trigger = TipTrigger::keyCombo(*KeyCombo::make(Key::d, NSEventModifierFlagOption));
    info->rightText = "Choose a language";
    info->rightTrigger = TipTrigger::key(Key::return_);
    info->windowActions = {
        {"Pin", TipTrigger::keyCombo(*KeyCombo::make(Key::p, NSEventModifierFlagCommand))},
        {"Zoom in", TipTrigger::keyCombo(*KeyCombo::make(Key::equal, NSEventModifierFlagCommand))}};
    return info;
}

/// A window with a control in it, the pointer on the control.
class Scene {
  public:
    explicit Scene(CGFloat scale)
        : ui_({{{{0, 0}, {1440, 900}}, {{0, 0}, {1440, 876}}, scale}}),
          window_(makeObject<NSWindow>(CGRect{{100, 200}, {400, 300}})),
          view_(makeObject<NSView>(CGRect{{50, 60}, {40, 20}})) {
        window_->contentView()->addSubview(view_);
        window_->orderFront();
        ui_.display().movePointer({160, 265});
        ui_.turn();
    }
    ~Scene() { TipManager::close(); }

    /// With the turn of the loop that draws it.
    void show() {
        TipManager::showTip(view_, info_);
        ui_.turn();
    }
    [[nodiscard]] bool isDrawn() { return tip() && ui_.display().windowPicture(tip()->windowNumber()); }
    void close() {
        TipManager::close();
        ui_.turn();
    }
    std::shared_ptr<TipWindow> tip() {
        return std::dynamic_pointer_cast<TipWindow>(
            ui_.application().windowWithWindowNumber(TipManager::windowNumber().value_or(0)));
    }

  private:
    testkit::HeadlessApplication ui_;
    std::shared_ptr<NSWindow> window_;
    std::shared_ptr<NSView> view_;
    std::shared_ptr<TipInfo> info_ = makeTip();
};

void showTip(benchmark::State& state, CGFloat scale) {
    Scene scene(scale);
    for (auto _ : state) {
        scene.show();
        state.PauseTiming();
        if (!scene.isDrawn()) state.SkipWithError("no tip was drawn");
        scene.close();
        state.ResumeTiming();
    }
}

/// The same card as a flat list, y downwards from the window's upper edge.
struct Card {
    struct Fill {
        CGRect rect;
        CGFloat radius;
        CGColor color;
    };
    struct Text {
        std::string text;
        CGPoint origin;
        CGColor color;
    };
    struct Picture {
        std::string path;
        CGRect rect;
    };
    CGSize size;
    std::vector<Fill> fills;  // the card itself first
    std::vector<Text> texts;
    std::vector<Picture> pictures;
};

void collect(const NSView& view, CGFloat height, CGFloat scale, Card& card) {
    CGRect rect = view.convertRectToView(view.bounds(), nullptr);
    rect.origin.y = height - rect.origin.y - rect.size.height;
    if (const auto* label = dynamic_cast<const NSTextField*>(&view)) {
        card.texts.push_back({label->stringValue(), rect.origin, label->textColor()->cgColor()});
    } else if (const auto* image = dynamic_cast<const NSImageView*>(&view)) {
        card.pictures.push_back({image->image()->bestFile(scale).path, rect});
    } else if (const auto color = view.layer()->backgroundColor(); color.alpha > 0) {
        card.fills.push_back({rect, view.layer()->cornerRadius(), color});
    }
    for (const auto& subview : view.subviews()) collect(*subview, height, scale, card);
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

/// One over the width of a running mean, in 16 bits below the point.
int reciprocal(int radius) { return (1 << 16) / (2 * radius + 1); }

void meanOfRows(Mask& mask, int width, int height, int stride, int radius) {
    Mask padded(static_cast<std::size_t>(width + 2 * radius + 1));
    const int share = reciprocal(radius);
    for (int y = 0; y < height; ++y) {
        std::uint8_t* row = mask.data() + static_cast<std::ptrdiff_t>(y) * stride;
        std::copy_n(row, width, padded.begin() + radius + 1);
        int sum = 0;
        for (int x = 0; x < 2 * radius; ++x) sum += padded[static_cast<std::size_t>(x + 1)];
        for (int x = 0; x < width; ++x) {
            sum += padded[static_cast<std::size_t>(std::min(x + 2 * radius + 1, width + 2 * radius))];
            row[x] = static_cast<std::uint8_t>((sum * share) >> 16);
            sum -= padded[static_cast<std::size_t>(x + 1)];
        }
    }
}

/// All columns at once, so that memory is read in its order.
void meanOfColumns(Mask& mask, int height, int stride, int radius) {
    const Mask before = mask;
    std::vector<int> sums(static_cast<std::size_t>(stride));
    const int share = reciprocal(radius);
    const auto add = [&](int y, int sign) {
        if (y < 0 || y >= height) return;
        const std::uint8_t* row = before.data() + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < stride; ++x) sums[static_cast<std::size_t>(x)] += sign * row[x];
    };
    for (int y = -radius; y < radius; ++y) add(y, 1);
    for (int y = 0; y < height; ++y) {
        add(y + radius, 1);
        std::uint8_t* row = mask.data() + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < stride; ++x)
            row[x] = static_cast<std::uint8_t>((sums[static_cast<std::size_t>(x)] * share) >> 16);
        add(y - radius, -1);
    }
}

void drawShadow(cairo_t* cr, const Card& card, int width, int height, CGFloat scale) {
    const int stride = cairo_format_stride_for_width(CAIRO_FORMAT_A8, width);
    Mask mask(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height));
    cairo_surface_t* surface =
        cairo_image_surface_create_for_data(mask.data(), CAIRO_FORMAT_A8, width, height, stride);
    cairo_t* draw = cairo_create(surface);
    cairo_scale(draw, scale, scale);
    roundedRect(draw, card.fills.front().rect, card.fills.front().radius);
    cairo_fill(draw);
    cairo_destroy(draw);
    cairo_surface_flush(surface);
    const int radius = static_cast<int>(std::lround(2 * scale));
    for (int pass = 0; pass < 3; ++pass) {
        meanOfRows(mask, width, height, stride, radius);
        meanOfColumns(mask, height, stride, radius);
    }
    cairo_surface_mark_dirty(surface);
    cairo_save(cr);
    cairo_identity_matrix(cr);
    cairo_set_source_rgba(cr, 16 / 255.0, 16 / 255.0, 16 / 255.0, 0.31);
    cairo_mask_surface(cr, surface, 0, 2 * scale);
    cairo_restore(cr);
    cairo_surface_destroy(surface);
}

void drawBare(benchmark::State& state, CGFloat scale) {
    Card card;
    {
        Scene scene(scale);
        scene.show();
        const auto tip = scene.tip();
        if (!tip) {
            state.SkipWithError("no tip");
            return;
        }
        card.size = tip->frame().size;
        collect(*tip->tipViewController()->tipView(), card.size.height, scale, card);
    }
    std::vector<cairo_surface_t*> pictures;
    for (const auto& picture : card.pictures)
        pictures.push_back(cairo_image_surface_create_from_png(picture.path.c_str()));
    PangoFontDescription* font = pango_font_description_from_string("DejaVu Sans");
    pango_font_description_set_absolute_size(font, 12 * PANGO_SCALE);
    PangoContext* context = pango_font_map_create_context(pango_cairo_font_map_get_default());
    const int width = static_cast<int>(std::ceil(card.size.width * scale));
    const int height = static_cast<int>(std::ceil(card.size.height * scale));

    for (auto _ : state) {
        cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height);
        cairo_t* cr = cairo_create(surface);
        drawShadow(cr, card, width, height, scale);
        cairo_scale(cr, scale, scale);
        for (const auto& [rect, radius, color] : card.fills) {
            cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
            roundedRect(cr, rect, radius);
            cairo_fill(cr);
        }
        CGRect border = card.fills.front().rect;
        border = {{border.origin.x + 0.25, border.origin.y + 0.25},
                  {border.size.width - 0.5, border.size.height - 0.5}};
        cairo_set_source_rgb(cr, 0.86, 0.87, 0.88);
        cairo_set_line_width(cr, 0.5);
        roundedRect(cr, border, card.fills.front().radius);
        cairo_stroke(cr);
        for (const auto& [text, origin, color] : card.texts) {
            PangoLayout* layout = pango_layout_new(context);
            pango_layout_set_font_description(layout, font);
            pango_layout_set_text(layout, text.data(), static_cast<int>(text.size()));
            cairo_set_source_rgba(cr, color.red, color.green, color.blue, color.alpha);
            cairo_move_to(cr, origin.x, origin.y);
            pango_cairo_show_layout(cr, layout);
            g_object_unref(layout);
        }
        for (std::size_t index = 0; index < pictures.size(); ++index) {
            const CGRect& rect = card.pictures[index].rect;
            cairo_save(cr);
            cairo_translate(cr, rect.origin.x, rect.origin.y);
            cairo_scale(cr, rect.size.width / cairo_image_surface_get_width(pictures[index]),
                        rect.size.height / cairo_image_surface_get_height(pictures[index]));
            cairo_set_source_surface(cr, pictures[index], 0, 0);
            cairo_paint(cr);
            cairo_restore(cr);
        }
        cairo_surface_flush(surface);
        benchmark::DoNotOptimize(cairo_image_surface_get_data(surface));
        cairo_destroy(cr);
        cairo_surface_destroy(surface);
    }
    for (cairo_surface_t* picture : pictures) cairo_surface_destroy(picture);
    g_object_unref(context);
    pango_font_description_free(font);
}

BENCHMARK_CAPTURE(showTip, one, 1.0)->Name("tip/scale1/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(drawBare, one, 1.0)->Name("tip/scale1/cairo")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(showTip, two, 2.0)->Name("tip/scale2/ours")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(drawBare, two, 2.0)->Name("tip/scale2/cairo")->Unit(benchmark::kMicrosecond);

}  // namespace
