#include "Apps/Gallery/GalleryWindow.h"

#include <algorithm>
#include <functional>

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Sheet.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/QuartzCore/CALayer.h"

namespace gallery {

namespace {

constexpr CGFloat kSideWidth = 190;
constexpr CGFloat kItemHeight = 30;
// The platform's key codes of the four arrows.
constexpr unsigned short kLeftArrow = 123, kRightArrow = 124, kDownArrow = 125, kUpArrow = 126;

/// One line of the list at the left.
class ListItem final : public NSView {
  public:
    ListItem(const CGRect& frame, bool chosen, std::function<void()> action)
        : NSView(frame), chosen_(chosen), action_(std::move(action)) {}

    void mouseDown(const NSEvent&) override {
        // Acting takes this view off the window.
        const auto action = action_;
        action();
    }
    [[nodiscard]] bool acceptsFirstMouse(const NSEvent* /*event*/) override { return true; }
    void drawRect(const CGRect&) override {
        if (!chosen_) return;
        NSColor::controlAccentColor()->colorWithAlphaComponent(0.25)->set();
        NSRectFillUsingOperation(bounds(), NSCompositingOperation::sourceOver);
    }

  private:
    bool chosen_;
    std::function<void()> action_;
};

class Ground final : public NSView {
  public:
    using NSView::NSView;
    [[nodiscard]] bool isFlipped() const override { return true; }
    void drawRect(const CGRect&) override {
        NSColor::controlBackgroundColor()->set();
        NSRectFill(bounds());
    }
};

}  // namespace

GalleryWindow::GalleryWindow(CGPoint origin)
    : NSWindow(CGRect{origin, {Sheet::kSize.width + kSideWidth, Sheet::kSize.height}},
               NSWindowStyleMaskTitled | NSWindowStyleMaskClosable) {
    setTitle("Gallery");
}

void GalleryWindow::show(const GalleryPage& page) {
    page_ = &page;
    rebuild();
}

void GalleryWindow::rebuild() {
    NSApplication::shared()->effectiveAppearance()->performAsCurrentDrawingAppearance([&] {
        const auto ground = makeObject<Ground>(CGRect{{}, frame().size});
        CGFloat y = 12;
        const auto add = [&](std::string_view title, bool chosen, std::function<void()> action) {
            const auto item =
                makeObject<ListItem>(CGRect{{0, y}, {kSideWidth, kItemHeight}}, chosen, std::move(action));
            const auto text = label(title, 12);
            text->setFrameOrigin({14, (kItemHeight - text->frame().size.height) / 2});
            item->addSubview(text);
            ground->addSubview(item);
            y += kItemHeight;
        };
        for (const GalleryPage* page : allPages())
            add(page->title, page == page_, [this, page] { show(*page); });
        y = frame().size.height - kItemHeight - 12;
        add(NSApplication::shared()->effectiveAppearance()->isDark() ? "Switch to light" : "Switch to dark",
            false, [this] { switchAppearance(); });
        const auto sheet = Sheet::make(*page_);
        sheet->setFrameOrigin({kSideWidth, 0});
        ground->addSubview(sheet);
        setContentView(ground);
    });
}

void GalleryWindow::turnPage(int by) {
    const auto pages = allPages();
    const auto count = static_cast<std::ptrdiff_t>(pages.size());
    const auto at = std::ranges::find(pages, page_) - pages.begin();
    show(*pages[static_cast<std::size_t>((at + by + count) % count)]);
}

void GalleryWindow::switchAppearance() {
    const auto application = NSApplication::shared();
    application->setAppearance(application->effectiveAppearance()->isDark() ? NSAppearance::aqua()
                                                                            : NSAppearance::darkAqua());
    // Layers keep the colours they were given, so the page is made anew.
    rebuild();
}

void GalleryWindow::close() {
    NSWindow::close();
    NSApplication::shared()->stop();
}

void GalleryWindow::keyDown(const NSEvent& event) {
    switch (event.keyCode()) {
        case kLeftArrow:
        case kUpArrow:
            return turnPage(-1);
        case kRightArrow:
        case kDownArrow:
            return turnPage(1);
        default:
            NSWindow::keyDown(event);
    }
}

}  // namespace gallery
