#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TestKit/ChildProcess.h"

namespace zqcore::testkit {

/// An X server of the test's own without a screen of glass, on a display number that was free, and a client
/// of it that looks at pixels, moves pointer and keys, and has windows as another application would.
/// Units: the server's pixels, y-down. Time: every call waits until the server has done it. Threads: one.
/// Lifetime: a value on the test's stack; its end ends the server by its number. Failure: `running` is false
/// where the server isn't installed or didn't come up.
class XvfbServer final {
  public:
    explicit XvfbServer(int width = 800, int height = 600);
    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    [[nodiscard]] bool running() const noexcept;
    /// Its name, as ":7".
    [[nodiscard]] const std::string& display() const noexcept { return display_; }
    /// Ends the server: every connection to it is lost.
    void stop();
    /// Runs a program of this server's to its end, with DISPLAY set; its exit code.
    int run(const std::vector<std::string>& arguments) const;

    /// Runs the main loop until `done`, looking again after every event, and for what the server does without
    /// telling us every few moments; false if it doesn't come in ten seconds.
    static bool waitFor(const std::function<bool()>& done);
    /// What the screen shows, without alpha.
    [[nodiscard]] std::uint32_t pixel(int x, int y) const;

    // Input as from a hand. Buttons and keys as the server counts them: 1 left, 4 and 5 the wheel.
    void movePointer(int x, int y) const;
    void pressButton(int button) const;
    void releaseButton(int button) const;
    void click(int button) const;
    void pressKey(int key) const;
    void releaseKey(int key) const;

    /// A plain window of another application, in front of all and visible.
    std::uint32_t addWindow(int x, int y, int width, int height, std::uint32_t color) const;
    void removeWindow(std::uint32_t window) const;
    /// How many button presses its windows got.
    [[nodiscard]] int pressesHeard() const;
    void focus(std::uint32_t window) const;
    [[nodiscard]] std::uint32_t focusedWindow() const;
    /// A client message of WM_PROTOCOLS, as a window manager sends when the user closes a window.
    void requestClose(std::uint32_t window) const;
    /// A property of numbers of the root window or another one, as a window manager writes them.
    void setProperty(std::uint32_t window, const std::string& name, const std::string& type,
                     const std::vector<std::uint32_t>& values) const;
    [[nodiscard]] std::uint32_t root() const noexcept;
    [[nodiscard]] std::vector<std::uint32_t> property(std::uint32_t window, const std::string& name) const;
    void setText(std::uint32_t window, const std::string& name, const std::string& text) const;
    /// Starts a program of this server's, ended with the result; null where it isn't installed.
    [[nodiscard]] std::unique_ptr<ChildProcess> start(const std::vector<std::string>& arguments) const;
    /// Owns the selection by which a compositing manager tells that it is there, or gives it up.
    void pretendCompositor(bool there) const;

  private:
    struct Client;
    void fake(std::uint8_t type, int detail, int x, int y) const;

    std::string display_;
    std::unique_ptr<Client> client_;
};

}  // namespace zqcore::testkit
