#pragma once

#include <memory>

#include "Platform/AppKit/NSWindow.h"

namespace gallery {

using namespace zqcore;
using namespace zqcore::platform;

struct GalleryPage;

/// The window in which people look at the pages: their names at the left, and a switch between light and
/// dark. Arrow keys turn the pages. Threads: main thread.
class GalleryWindow final : public NSWindow {
  public:
    explicit GalleryWindow(CGPoint origin);

    void show(const GalleryPage& page);
    [[nodiscard]] bool canBecomeKey() const override { return true; }
    void keyDown(const NSEvent& event) override;
    /// Ends the application's loop too.
    void close() override;

  private:
    void rebuild();
    void turnPage(int by);
    void switchAppearance();

    const GalleryPage* page_ = nullptr;
};

}  // namespace gallery
