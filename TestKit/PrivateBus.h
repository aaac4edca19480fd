#pragma once

#include <filesystem>
#include <list>
#include <memory>
#include <string>

#include "TestKit/ChildProcess.h"
#include "TestKit/EnvironmentVariable.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::testkit {

/// A session bus of the test's own: a dbus-daemon in a fresh folder, and the environment that leads to it
/// (DBUS_SESSION_BUS_ADDRESS, XDG_DATA_DIRS, XDG_DATA_HOME), as it was before at its end.
/// Threads: one, and the environment is the process's, so make it before others read it. Lifetime: a value on
/// the test's stack; its end ends the daemon and every process that it or a desktop entry of this bus
/// started, each by its number. Failure: `running` tells whether the daemon came up.
class PrivateBus final {
  public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    [[nodiscard]] bool running() const noexcept { return daemon_ != nullptr; }
    [[nodiscard]] const std::string& address() const noexcept { return address_; }
    /// The folder of this bus: temporary, removed at the end. "data" in it is on XDG_DATA_DIRS.
    [[nodiscard]] const std::filesystem::path& directory() const noexcept { return directory_; }

    /// Makes `name` startable by the bus, by the command line `command`. Known at once.
    void addService(const std::string& name, const std::string& command);
    /// Writes the desktop entry "NAME.desktop" in XDG_DATA_HOME, which makes `name` an installed application.
    /// More keys may follow the command, each on a line.
    void addDesktopEntry(const std::string& name, const std::string& command);

    /// Ends the daemon: every connection to it is lost.
    void stop();
    /// Starts a new daemon at the same address; its unique names begin again.
    void start();

  private:
    void endStartedProcesses() const;

    ScratchFolder folder_;
    std::filesystem::path directory_ = folder_.path();
    std::string address_ = "unix:path=" + folder_ / "bus";
    std::list<EnvironmentVariable> variables_;
    std::unique_ptr<ChildProcess> daemon_;
};

/// Takes the session bus out of the environment while it lives.
class NoBus final {
  public:
  private:
    EnvironmentVariable address_{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus"};
};

}  // namespace zqcore::testkit
