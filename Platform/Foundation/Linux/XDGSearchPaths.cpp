#include <pwd.h>
#include <unistd.h>

#include <vector>

#include "Platform/Foundation/Linux/FileSupport.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NSSearchPath.h"

namespace zqcore::platform {

namespace {

std::string homeOfUserDatabase() {
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found) return {};
    return entry.pw_dir ? entry.pw_dir : "";
}

/// The value of a variable that holds a path. The base directory specification has relative ones ignored.
std::string absolutePath(const char* variable) {
    auto value = NSProcessInfo::processInfo().environment(variable);
    if (!value || !value->starts_with('/')) return {};
    return stringByAppendingPathComponent(*value, "");
}

/// One entry of user-dirs.dirs, a file of lines such as XDG_DESKTOP_DIR="$HOME/Desktop" in the shell's
/// quoting; empty if it isn't there or of another form.
std::string userDirsEntry(std::string_view file, std::string_view key, const std::string& home) {
    for (std::size_t start = 0; start < file.size();) {
        const std::size_t end = std::min(file.find('\n', start), file.size());
        std::string_view line = file.substr(start, end - start);
        start = end + 1;
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(key) || !line.substr(key.size()).starts_with("=\"")) continue;
        line.remove_prefix(key.size() + 2);
        std::string path;
        constexpr std::string_view homeWord = "$HOME";
        if (line.starts_with(homeWord)) {
            path = home;
            line.remove_prefix(homeWord.size());
        }
        for (std::size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
            if (line[i] == '\\' && i + 1 < line.size()) ++i;
            path += line[i];
        }
        if (path.starts_with('/')) return stringByAppendingPathComponent(path, "");
    }
    return {};
}

class XDGSearchPaths final : public SearchPaths {
  public:
    std::string homeDirectory() const override {
        const std::string home = absolutePath("HOME");
        return home.empty() ? homeOfUserDatabase() : home;
    }

    std::string temporaryDirectory() const override {
        const std::string folder = absolutePath("TMPDIR");
        if (folder.empty()) return "/tmp/";
        return folder == "/" ? folder : folder + "/";
    }

    std::string userDirectory(NSSearchPathDirectory directory) const override {
        switch (directory) {
            case NSSearchPathDirectory::library:
                return base("XDG_CONFIG_HOME", ".config");
            case NSSearchPathDirectory::documents:
                return user("XDG_DOCUMENTS_DIR", "Documents");
            case NSSearchPathDirectory::desktop:
                return user("XDG_DESKTOP_DIR", "Desktop");
            case NSSearchPathDirectory::downloads:
                return user("XDG_DOWNLOAD_DIR", "Downloads");
            case NSSearchPathDirectory::caches:
                return base("XDG_CACHE_HOME", ".cache");
            case NSSearchPathDirectory::applicationSupport:
                return base("XDG_DATA_HOME", ".local/share");
            case NSSearchPathDirectory::applicationScripts: {
                const std::string data = base("XDG_DATA_HOME", ".local/share");
                const std::string identifier = NSBundle::mainBundle()->bundleIdentifier();
                if (data.empty() || identifier.empty()) return {};
                return data + "/Application Scripts/" + identifier;
            }
        }
        return {};
    }

  private:
    std::string base(const char* variable, std::string_view belowHome) const {
        std::string path = absolutePath(variable);
        if (!path.empty()) return path;
        const std::string home = homeDirectory();
        return home.empty() ? home : stringByAppendingPathComponent(home, belowHome);
    }

    std::string user(std::string_view key, std::string_view belowHome) const {
        const std::string home = homeDirectory();
        if (home.empty()) return {};
        const std::string configuration = base("XDG_CONFIG_HOME", ".config");
        if (const auto file = posix::readFile(configuration + "/user-dirs.dirs")) {
            std::string path = userDirsEntry(*file, key, home);
            if (!path.empty()) return path;
        }
        return stringByAppendingPathComponent(home, belowHome);
    }
};

}  // namespace

const SearchPaths& SearchPaths::system() noexcept {
    // Never ended: threads may still ask while the process goes.
    static const auto& paths = *new XDGSearchPaths;
    return paths;
}

}  // namespace zqcore::platform
