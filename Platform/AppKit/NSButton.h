#pragma once

#include <memory>
#include <string>

#include "Platform/AppKit/NSControl.h"

namespace zqcore::platform {

class NSAttributedString;
class NSButton;
class NSColor;
class NSImage;
class NSTrackingArea;

enum class NSButtonType {
    momentaryLight = 0,
    pushOnPushOff = 1,
    toggle = 2,
    switchButton = 3,
    radio = 4,
    momentaryChange = 5,
    onOff = 6,
    momentaryPushIn = 7,
    accelerator = 8,
    multiLevelAccelerator = 9,
};

enum class NSBezelStyle {
    rounded = 1,
    regularSquare = 2,
    disclosure = 5,
    shadowlessSquare = 6,
    circular = 7,
    texturedSquare = 8,
    helpButton = 9,
    smallSquare = 10,
    texturedRounded = 11,
    roundRect = 12,
    recessed = 13,
    roundedDisclosure = 14,
    inlineBezel = 15,
};

enum class NSImageScaling {
    proportionallyDown = 0,
    axesIndependently = 1,
    none = 2,
    proportionallyUpOrDown = 3
};
enum class NSControlStateValue { mixed = -1, off = 0, on = 1 };

/// What a highlighted cell shows, as bits.
inline constexpr unsigned NSContentsCellMask = 1;
inline constexpr unsigned NSPushInCellMask = 2;
inline constexpr unsigned NSChangeGrayCellMask = 4;
inline constexpr unsigned NSChangeBackgroundCellMask = 8;

/// The pressed look of a button, apart from it. Threads: main thread. Lifetime: the button holds its cell.
class ZQ_EXPORT NSButtonCell final : public NSObject {
  public:
    explicit NSButtonCell(const std::shared_ptr<NSButton>& button) : button_(button) {}

    [[nodiscard]] bool isHighlighted() const noexcept { return highlighted_; }
    void setHighlighted(bool highlighted);
    [[nodiscard]] unsigned highlightsBy() const noexcept { return highlightsBy_; }
    void setHighlightsBy(unsigned mask);

  private:
    std::weak_ptr<NSButton> button_;
    unsigned highlightsBy_ = NSPushInCellMask | NSChangeGrayCellMask;
    bool highlighted_ = false;
};

/// A button that is pressed, shows a state and sends its action on release. A press is a captured state, not
/// a nested loop: `mouseDown` returns at once, and until the release local monitors and timers of the default
/// mode are silent. Each change of highlight, state, title, enabled and of the window's key state marks it
/// for display. A new one is bordered and titled "Button". Units: points. Threads: main thread. Lifetime and
/// failure: as `NSControl`; a button that goes while pressed, or whose window does, forgets the press.
class ZQ_EXPORT NSButton : public NSControl {
  public:
    using NSControl::NSControl;
    ~NSButton() override;

    [[nodiscard]] const std::string& title() const noexcept { return title_; }
    virtual void setTitle(std::string title);
    /// The title with attributes; null follows the plain one.
    [[nodiscard]] const std::shared_ptr<NSAttributedString>& attributedTitle() const noexcept {
        return attributedTitle_;
    }
    void setAttributedTitle(std::shared_ptr<NSAttributedString> title);
    [[nodiscard]] const std::shared_ptr<NSImage>& image() const noexcept { return image_; }
    void setImage(std::shared_ptr<NSImage> image);
    [[nodiscard]] const std::shared_ptr<NSImage>& alternateImage() const noexcept { return alternateImage_; }
    void setAlternateImage(std::shared_ptr<NSImage> image);
    [[nodiscard]] NSImageScaling imageScaling() const noexcept { return imageScaling_; }
    void setImageScaling(NSImageScaling scaling);
    [[nodiscard]] const std::shared_ptr<NSColor>& contentTintColor() const noexcept { return tint_; }
    void setContentTintColor(std::shared_ptr<NSColor> color);
    [[nodiscard]] bool isBordered() const noexcept { return bordered_; }
    void setBordered(bool bordered);
    [[nodiscard]] NSBezelStyle bezelStyle() const noexcept { return bezelStyle_; }
    void setBezelStyle(NSBezelStyle style);
    [[nodiscard]] NSButtonType buttonType() const noexcept { return type_; }
    void setButtonType(NSButtonType type);
    [[nodiscard]] NSControlStateValue state() const noexcept { return state_; }
    void setState(NSControlStateValue state);
    [[nodiscard]] bool showsBorderOnlyWhileMouseInside() const noexcept { return hoverArea_ != nullptr; }
    /// Watches the pointer by an area of its own, which is not among `trackingAreas`.
    void setShowsBorderOnlyWhileMouseInside(bool shows);
    [[nodiscard]] const std::shared_ptr<NSButtonCell>& cell() const noexcept { return cell_; }
    [[nodiscard]] const std::string& keyEquivalent() const noexcept { return keyEquivalent_; }
    /// The character that presses it, "\r" for Return; with no modifier but Shift.
    void setKeyEquivalent(std::string key) { keyEquivalent_ = std::move(key); }
    /// As a press and a release inside.
    void performClick(NSObject* sender = nullptr);

    void mouseDown(const NSEvent& event) override;
    void mouseDragged(const NSEvent& event) override;
    void mouseUp(const NSEvent& event) override;
    void keyDown(const NSEvent& event) override;
    bool performKeyEquivalent(const NSEvent& event) override;
    void pressWasLost() override;
    void viewDidMoveToWindow() override;
    void windowDidChangeKeyState() override { setNeedsDisplay(true); }
    [[nodiscard]] CGSize intrinsicContentSize() const override;
    [[nodiscard]] CGRect focusRingMaskBounds() const override { return bounds(); }
    void drawFocusRingMask() override;
    void drawRect(const CGRect& dirtyRect) override;

  protected:
    void setup() override;

  private:
    friend class NSButtonCell;
    class HoverWatch;

    [[nodiscard]] bool contains(const NSEvent& event) const;
    void contentChanged();
    void endPress();
    void fire();
    [[nodiscard]] bool showsBorder() const;

    std::string title_ = "Button";
    std::string keyEquivalent_;
    std::shared_ptr<NSAttributedString> attributedTitle_;
    std::shared_ptr<NSImage> image_;
    std::shared_ptr<NSImage> alternateImage_;
    std::shared_ptr<NSColor> tint_;
    std::shared_ptr<NSButtonCell> cell_;
    std::shared_ptr<HoverWatch> hoverWatch_;
    std::shared_ptr<NSTrackingArea> hoverArea_;
    NSImageScaling imageScaling_ = NSImageScaling::proportionallyDown;
    NSBezelStyle bezelStyle_ = NSBezelStyle::rounded;
    NSButtonType type_ = NSButtonType::momentaryPushIn;
    NSControlStateValue state_ = NSControlStateValue::off;
    bool bordered_ = true;
    bool pressed_ = false;
};

}  // namespace zqcore::platform
