#include "TestKit/PrivateBus.h"

#include <signal.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <system_error>

namespace zqcore::testkit {
namespace {

namespace fs = std::filesystem;

/// A session's usual rules: whoever reaches it may own, send and receive; limits as large as the
/// protocol's. The folder keeps other users out, unless a test opens it.
[[nodiscard]] std::string configuration(const fs::path& directory) {
    return "<busconfig><type>session</type><keep_umask/>"
           "<listen>unix:path=" +
           (directory / "bus").string() + "</listen><auth>EXTERNAL</auth><servicedir>" +
           (directory / "data/dbus-1/services").string() +
           "</servicedir><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
           "<allow eavesdrop=\"true\"/><allow own=\"*\"/><allow user=\"*\"/></policy>"
           "<limit name=\"max_incoming_bytes\">1000000000</limit>"
           "<limit name=\"max_outgoing_bytes\">1000000000</limit>"
           "<limit name=\"max_message_size\">1000000000</limit>"
           "<limit name=\"service_start_timeout\">30000</limit></busconfig>\n";
}

}  // namespace

PrivateBus::PrivateBus() {
    fs::create_directories(directory_ / "data/dbus-1/services");
    fs::create_directories(directory_ / "home/applications");
    std::ofstream(directory_ / "bus.conf") << configuration(directory_);
    variables_.emplace_back("DBUS_SESSION_BUS_ADDRESS", address_);
    variables_.emplace_back("XDG_DATA_DIRS", folder_ / "data");
    variables_.emplace_back("XDG_DATA_HOME", folder_ / "home");
    start();
}

PrivateBus::~PrivateBus() { stop(); }

void PrivateBus::start() {
    if (daemon_) return;
    std::error_code ignored;
    fs::remove(directory_ / "bus", ignored);
    // As root the daemon complains of a limit on its standard error; the folder keeps what it says.
    auto daemon = std::make_unique<ChildProcess>(std::vector<std::string>{
        "sh", "-c", "cd \"$0\" && exec dbus-daemon \"$@\" 2>>daemon.log", directory_.string(),
        "--config-file=bus.conf", "--nofork", "--nopidfile", "--nosyslog", "--print-address=1"});
    // The address is printed when the daemon listens.
    if (daemon->readLine()) daemon_ = std::move(daemon);
}

void PrivateBus::stop() {
    if (!daemon_) return;
    // The daemon first: it can't start anything after that.
    daemon_.reset();
    endStartedProcesses();
}

void PrivateBus::addService(const std::string& name, const std::string& command) {
    std::ofstream(directory_ / "data/dbus-1/services" / (name + ".service"))
        << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
    if (!daemon_) return;
    ChildProcess reload({"dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                         "/org/freedesktop/DBus", "org.freedesktop.DBus.ReloadConfig"});
    reload.wait();
}

void PrivateBus::addDesktopEntry(const std::string& name, const std::string& command) {
    std::ofstream(directory_ / "home/applications" / (name + ".desktop"))
        << "[Desktop Entry]\nType=Application\nName=" << name << "\nExec=" << command << "\n";
}

void PrivateBus::endStartedProcesses() const {
    // A process that the daemon started carries the daemon's address under this name, and one that was
    // started for a desktop entry of ours the entry's path.
    const std::string marks[] = {"DBUS_STARTER_ADDRESS=" + address_,
                                 "GIO_LAUNCHED_DESKTOP_FILE=" + directory_.string() + "/"};
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/proc", ignored)) {
        const std::string name = entry.path().filename();
        pid_t pid = 0;
        const auto read = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (read.ec != std::errc() || read.ptr != name.data() + name.size()) continue;
        const std::string environment = contentOf(entry.path() / "environ");
        const bool started = std::ranges::any_of(
            marks, [&](const std::string& mark) { return environment.find(mark) != std::string::npos; });
        if (started) ::kill(pid, SIGKILL);
    }
}

}  // namespace zqcore::testkit
