// From `showTip` to the pixels that the display has, beside the bare cairo and pango work of the same pixels.
#include <benchmark/benchmark.h>
#include <cairo.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "Benchmarks/Peers/BareTip.h"
#include "Classes/UI/TipManager/TipManager.h"
#include "Classes/UI/TipManager/TipWindow.h"
#include "Platform/AppKit/NSWindow.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace {

using namespace zqcore;
using namespace zqcore::platform;
using benchmarks::BareTip;

/// `mark` stands behind each text of the lines.
std::shared_ptr<TipInfo> makeTip(const std::string& mark = {}) {
    auto info = TipInfo::make();
    info->text = "翻译选中的文字" + mark;
    info->trigger = TipTrigger::keyCombo(*KeyCombo::make(Key::d, NSEventModifierFlagOption));
    info->rightText = "Choose a language" + mark;
    info->rightTrigger = TipTrigger::key(Key::return_);
    info->windowActions = {
        {"Pin" + mark, TipTrigger::keyCombo(*KeyCombo::make(Key::p, NSEventModifierFlagCommand))},
        {"Zoom in" + mark, TipTrigger::keyCombo(*KeyCombo::make(Key::equal, NSEventModifierFlagCommand))}};
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
    [[nodiscard]] std::optional<DisplayPicture> picture() {
        const auto window = tip();
        return window ? display().windowPicture(window->windowNumber()) : std::nullopt;
    }
    [[nodiscard]] bool isDrawn() { return picture().has_value(); }
    [[nodiscard]] HeadlessDisplay& display() { return ui_.display(); }
    void close() {
        TipManager::close();
        ui_.turn();
    }
    /// Words that the process hasn't shown yet; the keys and the heading stay.
    void renewWords() { info_ = makeTip(" " + std::to_string(++tips_)); }
    std::shared_ptr<TipWindow> tip() {
        return std::dynamic_pointer_cast<TipWindow>(
            ui_.application().windowWithWindowNumber(TipManager::windowNumber().value_or(0)));
    }

  private:
    testkit::HeadlessApplication ui_;
    std::shared_ptr<NSWindow> window_;
    std::shared_ptr<NSView> view_;
    std::shared_ptr<TipInfo> info_ = makeTip();
    int tips_ = 100;
};

enum class Words { asBefore, renewed };

void showTip(benchmark::State& state, CGFloat scale, Words words) {
    Scene scene(scale);
    for (auto _ : state) {
        scene.show();
        state.PauseTiming();
        if (!scene.isDrawn()) state.SkipWithError("no tip was drawn");
        scene.close();
        if (words == Words::renewed) scene.renewWords();
        state.ResumeTiming();
    }
}

/// The furthest that a channel of a pixel lies from the other picture's, and how far all of them lie on
/// average.
struct Difference {
    int most = 0;
    double mean = 0;
};

Difference differenceOf(const DisplayPicture& ours, cairo_surface_t* bare) {
    Difference difference;
    const unsigned char* rows = cairo_image_surface_get_data(bare);
    const int stride = cairo_image_surface_get_stride(bare);
    for (int y = 0; y < ours.height; ++y) {
        for (int x = 0; x < ours.width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, rows + std::ptrdiff_t{y} * stride + std::ptrdiff_t{x} * 4, sizeof pixel);
            for (int shift = 0; shift < 32; shift += 8) {
                const int gap = std::abs(static_cast<int>(pixel >> shift & 0xFF) -
                                         static_cast<int>(ours.pixel(x, y) >> shift & 0xFF));
                difference.most = std::max(difference.most, gap);
                difference.mean += gap;
            }
        }
    }
    difference.mean /= 4.0 * ours.width * ours.height;
    return difference;
}

/// Another peer than one that draws the same would say nothing.
bool drawsTheSame(const BareTip& bare, const DisplayPicture& ours) {
    // The blur may be another by a trifle.
    constexpr int kMost = 2;
    constexpr double kMean = 0.05;
    if (ours.width != bare.width() || ours.height != bare.height()) return false;
    cairo_surface_t* surface = bare.draw();
    const Difference difference = differenceOf(ours, surface);
    cairo_surface_destroy(surface);
    return difference.most <= kMost && difference.mean <= kMean;
}

/// Handed over to a window of the display, as ours is.
void drawBare(benchmark::State& state, CGFloat scale) {
    Scene scene(scale);
    scene.show();
    if (!scene.isDrawn()) return state.SkipWithError("no tip was drawn");
    const BareTip bare(*scene.tip(), scale);
    if (!drawsTheSame(bare, *scene.picture())) return state.SkipWithError("not the same pixels");
    HeadlessDisplay& display = scene.display();
    for (auto _ : state) {
        const DisplayWindowNumber window = display.openWindow({});
        cairo_surface_t* surface = bare.draw();
        display.present(
            window,
            {bare.width(), bare.height(), static_cast<std::size_t>(cairo_image_surface_get_stride(surface)),
             reinterpret_cast<const std::uint32_t*>(cairo_image_surface_get_data(surface)), scale});
        cairo_surface_destroy(surface);
        state.PauseTiming();
        display.closeWindow(window);
        state.ResumeTiming();
    }
}

#define ZQ_TIP(name, scale, words)                 \
    BENCHMARK_CAPTURE(showTip, name, scale, words) \
        ->Name("tip/" #name "/ours")               \
        ->Unit(benchmark::kMicrosecond);           \
    BENCHMARK_CAPTURE(drawBare, name, scale)->Name("tip/" #name "/cairo")->Unit(benchmark::kMicrosecond)
ZQ_TIP(scale1, 1.0, Words::asBefore);
ZQ_TIP(scale2, 2.0, Words::asBefore);
ZQ_TIP(scale1_words, 1.0, Words::renewed);
ZQ_TIP(scale2_words, 2.0, Words::renewed);
#undef ZQ_TIP

}  // namespace
