#pragma once

#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/AppKit/Display.h"

namespace zqcore::platform {

/// A display in memory: the windows' stack, a pointer, buttons, keys and a wheel that the program itself
/// moves, windows of other applications, screens, spaces, activity and appearance. It draws into pictures.
/// Tests, servers and picture makers use it; what it reports comes from within the steering call. Units:
/// points in y-up screen space. Threads: main thread. Lifetime: as every display. Failure: unknown numbers do
/// nothing; a picture that can't be written gives false.
class ZQ_EXPORT HeadlessDisplay final : public Display {
  public:
    /// One screen of 1440 by 900 at scale 1 with a menu bar of 24 points.
    HeadlessDisplay();
    /// The first is the primary one. None at all counts as the one above.
    explicit HeadlessDisplay(std::vector<DisplayScreen> screens);
    ~HeadlessDisplay() override;

    // Steering: the desktop.
    void setScreens(std::vector<DisplayScreen> screens);
    void setAppearance(DisplayAppearance appearance);
    /// Another application comes to the front, or ours does.
    void setApplicationActive(bool active);
    [[nodiscard]] bool isApplicationActive() const noexcept { return active_; }
    /// Windows belong to the space that was active when they were shown; 1 at first.
    void setActiveSpace(int space);
    void setKeyText(unsigned short keyCode, std::string text);
    /// Tears the connection, as a display that goes away.
    void lose(std::string_view reason);

    /// A window of another application, in front of its level.
    struct ForeignWindow {
        CGRect frame;
        int level = 0;
        bool ignoresMouse = false;
        bool isKeyWindow = false;  ///< of its application; keeps ours behind it while that one is active
        std::string ownerName = "Other";
        int ownerProcess = 4242;
        std::optional<std::string> name;
        std::uint32_t color = 0xFFD0D0D0;  ///< premultiplied, alpha on top
    };
    DisplayWindowNumber addForeignWindow(const ForeignWindow& window);

    // Steering: pointer, wheel and keys. Buttons: 0 left, 1 right, 2 and up the others.
    void movePointer(CGPoint location);
    void pressButton(int button = 0, int clickCount = 1);
    void releaseButton(int button = 0);
    /// Moves there, presses and releases.
    void click(CGPoint location, int button = 0);
    /// A wheel step, or with a phase a piece of a gesture; positive y moves the content down.
    void scroll(CGFloat deltaX, CGFloat deltaY, NSEventPhase phase = NSEventPhase::none);
    void pressKey(unsigned short keyCode, std::string characters = {}, bool isARepeat = false);
    void releaseKey(unsigned short keyCode, std::string characters = {});
    /// The modifiers that are down from now on; tells a change.
    void setModifierFlags(NSEventModifierFlags flags);
    /// A click on the frame that the desktop draws: asks the window to close, or moves it.
    void requestClose(DisplayWindowNumber window);
    void dragWindow(DisplayWindowNumber window, const CGRect& frame);

    // Looking.
    /// The numbers of the visible windows, back to front, foreign ones included.
    [[nodiscard]] std::vector<DisplayWindowNumber> stack() const;
    [[nodiscard]] DisplayWindowNumber focusedWindow() const noexcept { return focused_; }
    [[nodiscard]] bool reportsOutsideEvents() const noexcept { return reportsOutside_; }
    /// What a window presented last; absent before the first time.
    [[nodiscard]] std::optional<DisplayPicture> windowPicture(DisplayWindowNumber window) const;
    /// How often a window was presented.
    [[nodiscard]] int presentCount(DisplayWindowNumber window) const;
    /// Which part it presented last; absent for the whole.
    [[nodiscard]] std::optional<DisplaySurface::Part> changedPart(DisplayWindowNumber window) const;
    [[nodiscard]] DisplayWindowState windowState(DisplayWindowNumber window) const;
    /// All that a screen shows, on a plain ground, at its scale; absent without that screen.
    [[nodiscard]] std::optional<DisplayPicture> screenshot(std::size_t screen = 0) const;
    /// Writes a PNG file (8 bits, straight alpha). False if it can't be written.
    static bool writePNG(const DisplayPicture& picture, const std::string& path);

    // Display.
    void setHandler(DisplayHandler* handler) override { handler_ = handler; }
    [[nodiscard]] bool isLost() const override { return lost_; }
    [[nodiscard]] std::vector<DisplayScreen> screens() const override { return screens_; }
    [[nodiscard]] DisplayAppearance appearance() const override { return appearance_; }
    [[nodiscard]] std::string keyText(unsigned short keyCode) const override;
    DisplayWindowNumber openWindow(const DisplayWindowState& state) override;
    void updateWindow(DisplayWindowNumber window, const DisplayWindowState& state) override;
    void closeWindow(DisplayWindowNumber window) override;
    void orderFront(DisplayWindowNumber window, bool regardless) override;
    void order(DisplayWindowNumber window, bool above, DisplayWindowNumber other) override;
    void hideWindow(DisplayWindowNumber window) override;
    void focusWindow(DisplayWindowNumber window) override;
    [[nodiscard]] bool isOnActiveSpace(DisplayWindowNumber window) const override;
    void present(DisplayWindowNumber window, const DisplaySurface& surface) override;
    void activateApplication() override;
    void deactivateApplication() override;
    [[nodiscard]] CGPoint pointerLocation() const override { return pointer_; }
    [[nodiscard]] unsigned pressedButtons() const override { return buttons_; }
    void setReportsOutsideEvents(bool reports) override { reportsOutside_ = reports && !lost_; }
    [[nodiscard]] DisplayWindowNumber windowAt(CGPoint point) const override;
    [[nodiscard]] std::vector<DisplayWindowInfo> windowList(bool onScreenOnly) const override;
    [[nodiscard]] std::optional<DisplayPicture> capture(
        const CGRect& rect, const std::vector<DisplayWindowNumber>& windows) const override;

  private:
    struct Window;
    using Stack = std::list<Window>;  // back to front; hidden windows too

    [[nodiscard]] Stack::iterator find(DisplayWindowNumber number);
    [[nodiscard]] Stack::const_iterator find(DisplayWindowNumber number) const;
    [[nodiscard]] const Window* topmostAt(CGPoint point) const;
    [[nodiscard]] bool isShown(const Window& window) const;
    void placeInLevel(Stack::iterator window, bool behindForeignKey);
    void show(Window& window);
    void send(DisplayEvent event);
    void sendKey(NSEventType type, unsigned short keyCode, std::string characters, bool isARepeat);
    void compose(DisplayPicture& picture, CGPoint origin,
                 const std::vector<const Window*>& backToFront) const;

    DisplayHandler* handler_ = nullptr;
    std::vector<DisplayScreen> screens_;
    Stack stack_;
    std::map<unsigned short, std::string> keyTexts_;
    DisplayWindowNumber lastNumber_ = 0;
    DisplayWindowNumber focused_ = 0;
    DisplayWindowNumber grab_ = 0;  // while a button is down: who got the first down
    CGPoint pointer_;
    unsigned buttons_ = 0;
    NSEventModifierFlags modifiers_ = 0;
    DisplayAppearance appearance_ = DisplayAppearance::light;
    int activeSpace_ = 1;
    bool active_ = true;
    bool reportsOutside_ = false;
    bool lost_ = false;
};

}  // namespace zqcore::platform
