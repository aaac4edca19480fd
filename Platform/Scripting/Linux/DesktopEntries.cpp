#include "Platform/Scripting/Linux/DesktopEntries.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "Platform/Foundation/NSFileManager.h"

namespace zqcore::platform {
namespace {

std::string_view environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

template <class Action>
void forEachPart(std::string_view list, Action action) {
    while (!list.empty()) {
        const auto end = list.find(':');
        // The base directories have to be absolute; others are to be ignored.
        if (const auto part = list.substr(0, end); part.starts_with('/')) action(part);
        if (end == std::string_view::npos) return;
        list.remove_prefix(end + 1);
    }
}

std::vector<std::string> dataDirectories() {
    std::vector<std::string> directories;
    if (const auto own = environment("XDG_DATA_HOME"); own.starts_with('/')) {
        directories.emplace_back(own);
    } else if (const auto home = environment("HOME"); !home.empty()) {
        directories.push_back(std::string(home) + "/.local/share");
    }
    auto shared = environment("XDG_DATA_DIRS");
    if (shared.empty()) shared = "/usr/local/share:/usr/share";
    forEachPart(shared, [&](std::string_view part) { directories.emplace_back(part); });
    return directories;
}

bool isOfType(const std::string& path, mode_t type) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & S_IFMT) == type;
}

/// IDENTIFIER.desktop in a folder, or below it where a hyphen of the identifier stands for a folder.
std::optional<std::string> entryBelow(const std::string& folder, std::string_view identifier) {
    auto path = folder + '/' + std::string(identifier) + ".desktop";
    if (isOfType(path, S_IFREG)) return path;
    for (auto hyphen = identifier.find('-'); hyphen != std::string_view::npos;
         hyphen = identifier.find('-', hyphen + 1)) {
        if (hyphen == 0) continue;
        const auto inner = folder + '/' + std::string(identifier.substr(0, hyphen));
        if (!isOfType(inner, S_IFDIR)) continue;
        if (auto found = entryBelow(inner, identifier.substr(hyphen + 1))) return found;
    }
    return std::nullopt;
}

bool isExecutable(const std::string& path) {
    return isOfType(path, S_IFREG) && ::access(path.c_str(), X_OK) == 0;
}

bool programExists(std::string_view program) {
    if (program.find('/') != std::string_view::npos) return isExecutable(std::string(program));
    bool found = false;
    forEachPart(environment("PATH"), [&](std::string_view folder) {
        found = found || isExecutable(std::string(folder) + '/' + std::string(program));
    });
    return found;
}

struct Entry {
    bool hidden = false;
    std::string tryExec;
};

Entry readEntry(std::string_view text) {
    Entry entry;
    bool inGroup = false;
    while (!text.empty()) {
        auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        while (line.ends_with(' ') || line.ends_with('\r')) line.remove_suffix(1);
        if (line.starts_with('[')) {
            inGroup = line == "[Desktop Entry]";
            continue;
        }
        const auto equals = line.find('=');
        if (!inGroup || equals == std::string_view::npos) continue;
        auto key = line.substr(0, equals);
        auto value = line.substr(equals + 1);
        while (key.ends_with(' ')) key.remove_suffix(1);
        while (value.starts_with(' ')) value.remove_prefix(1);
        if (key == "Hidden") entry.hidden = value == "true";
        if (key == "TryExec") entry.tryExec = value;
    }
    return entry;
}

}  // namespace

std::optional<std::string> findDesktopEntry(std::string_view identifier) {
    if (identifier.empty() || identifier.starts_with('.') || identifier.find('/') != std::string_view::npos ||
        identifier.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    for (const auto& directory : dataDirectories()) {
        auto path = entryBelow(directory + "/applications", identifier);
        if (!path) continue;
        const auto text = NSFileManager::defaultManager().contentsAtPath(*path);
        if (!text) continue;
        const auto entry = readEntry(text->view());
        // Hidden says that the user removed it, which also covers the entries of the system.
        if (entry.hidden) return std::nullopt;
        if (!entry.tryExec.empty() && !programExists(entry.tryExec)) continue;
        return path;
    }
    return std::nullopt;
}

}  // namespace zqcore::platform
