#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Linux/PipeSignalHeld.h"

namespace zqcore::platform {

struct X11Deleter {
    void operator()(void* memory) const noexcept { std::free(memory); }
    void operator()(xcb_connection_t* connection) const noexcept { xcb_disconnect(connection); }
};
template <class T>
using X11Reply = std::unique_ptr<T, X11Deleter>;
using X11Event = X11Reply<xcb_generic_event_t>;

/// The names that this client and the window manager talk in: ICCCM 2.0 and Extended Window Manager
/// Hints 1.5.
struct X11Atoms {
    xcb_atom_t utf8String, resourceManager;
    xcb_atom_t wmProtocols, wmDeleteWindow, wmState, wmClass, motifHints, frameExtents;
    xcb_atom_t supported, supportingCheck, activeWindow, clientListStacking, currentDesktop, workArea;
    xcb_atom_t name, pid, desktop, opacity, userTime, ping, restackWindow;
    xcb_atom_t state, stateAbove, stateBelow, stateSkipTaskbar, stateSkipPager;
    xcb_atom_t type, typeNormal, typeUtility, typeDialog, typeTooltip, typePopupMenu, typeNotification,
        typeSplash;
    xcb_atom_t compositor;  ///< its owner is the compositing manager of our screen
};

/// A connection to an X server: its atoms and extensions, its properties, what waits to be read.
/// Threads: main thread. Lifetime: of the display. Failure: a request that fails has no reply; once the
/// server is gone every request does nothing and `isLost` is true.
class X11Connection final {
  public:
    /// Connects to a display by name, an empty one meaning the environment's. Null with a reason in `reason`
    /// if there is none, or one whose pixels or extensions are too old.
    static std::unique_ptr<X11Connection> open(const std::string& name, std::string& reason);
    ~X11Connection();
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    [[nodiscard]] xcb_connection_t* get() const noexcept { return connection_.get(); }
    [[nodiscard]] xcb_window_t root() const noexcept { return screen_->root; }
    [[nodiscard]] const xcb_screen_t& screen() const noexcept { return *screen_; }
    [[nodiscard]] const X11Atoms& atoms() const noexcept { return atoms_; }
    /// The visual of windows with an alpha channel, or the root's where the server has none.
    [[nodiscard]] xcb_visualid_t visual() const noexcept { return visual_; }
    [[nodiscard]] std::uint8_t depth() const noexcept { return depth_; }
    [[nodiscard]] xcb_colormap_t colormap() const noexcept { return colormap_; }
    [[nodiscard]] bool isLost() const noexcept { return xcb_connection_has_error(get()) != 0; }
    /// Why, in words.
    [[nodiscard]] std::string_view lossReason() const noexcept;

    // First events of the extensions; all of them are there.
    [[nodiscard]] std::uint8_t randrEvent() const noexcept { return randrEvent_; }
    [[nodiscard]] std::uint8_t fixesEvent() const noexcept { return fixesEvent_; }
    [[nodiscard]] std::uint8_t inputOpcode() const noexcept { return inputOpcode_; }
    [[nodiscard]] bool hasComposite() const noexcept { return hasComposite_; }

    // Who else is there.
    [[nodiscard]] bool hasWindowManager();
    /// Whether the window manager knows a hint.
    [[nodiscard]] bool supports(xcb_atom_t hint);
    /// Whether a window's alpha channel shows.
    [[nodiscard]] bool blends() const noexcept { return hasCompositor_ && depth_ == 32; }
    /// Asks anew; true if it came or went.
    bool updateCompositor();
    void forgetWindowManager() { managerKnown_ = false; }

    // Properties.
    [[nodiscard]] std::vector<std::uint32_t> numbers(xcb_window_t window, xcb_atom_t property,
                                                     xcb_atom_t type) const;
    [[nodiscard]] std::string text(xcb_window_t window, xcb_atom_t property) const;
    void setNumbers(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                    std::initializer_list<std::uint32_t> values) const;
    void setText(xcb_window_t window, xcb_atom_t property, xcb_atom_t type, std::string_view text) const;
    /// A client message about `window` to whoever manages the root window.
    void askManager(xcb_window_t window, xcb_atom_t type, const std::uint32_t (&data)[5]) const;

    /// The next event that has arrived; null without one.
    [[nodiscard]] X11Event nextEvent();
    /// Called when the last `Use` ends and events were read meanwhile, or the server was lost.
    void setPendingHandler(std::function<void()> handler) { pending_ = std::move(handler); }

    /// Stands round every use of the connection; at its end the requests are sent. The client library looks
    /// whether the server is there before it writes, but one that goes in between raises SIGPIPE. It is held
    /// back here and only here, since both the mask and the disposition would be inherited by child
    /// processes.
    class Use final {
      public:
        explicit Use(X11Connection& connection);
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

      private:
        X11Connection& connection_;
        std::optional<PipeSignalHeld> held_;
    };

  private:
    X11Connection() = default;
    bool findScreen(int number, std::string& reason);
    bool findExtensions(std::string& reason);
    void findAtoms(int number);

    std::unique_ptr<xcb_connection_t, X11Deleter> connection_;
    const xcb_screen_t* screen_ = nullptr;
    X11Atoms atoms_{};
    xcb_visualid_t visual_ = 0;
    xcb_colormap_t colormap_ = 0;
    std::uint8_t depth_ = 0;
    std::uint8_t randrEvent_ = 0;
    std::uint8_t fixesEvent_ = 0;
    std::uint8_t inputOpcode_ = 0;
    bool hasComposite_ = false;
    bool hasCompositor_ = false;
    bool managerKnown_ = false;
    bool hasManager_ = false;
    std::vector<std::uint32_t> supported_;
    std::deque<X11Event> read_;
    std::function<void()> pending_;
    int uses_ = 0;
};

}  // namespace zqcore::platform
