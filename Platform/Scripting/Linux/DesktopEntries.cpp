#include "Platform/Scripting/Linux/DesktopEntries.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <utility>

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

/// A value of the type string: its escapes \s, \n, \t, \r and \\ undone.
std::string unescaped(std::string_view value) {
    constexpr std::string_view kLetters = "sntr\\";
    constexpr std::string_view kMeanings = " \n\t\r\\";
    std::string text;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const auto letter =
            value[i] == '\\' && i + 1 < value.size() ? kLetters.find(value[i + 1]) : kLetters.npos;
        if (letter != kLetters.npos) ++i;
        text += letter != kLetters.npos ? kMeanings[letter] : value[i];
    }
    return text;
}

struct EntryKeys {
    DesktopEntry entry;
    bool hidden = false;
    std::string tryExec;
};

void takeKey(EntryKeys& keys, std::string_view key, std::string_view value) {
    if (key == "Hidden") keys.hidden = value == "true";
    if (key == "TryExec") keys.tryExec = unescaped(value);
    if (key == "Exec") keys.entry.exec = unescaped(value);
    if (key == "Name") keys.entry.name = unescaped(value);
    if (key == "Icon") keys.entry.icon = unescaped(value);
    if (key == "Path") keys.entry.workingFolder = unescaped(value);
}

EntryKeys readEntry(std::string_view text) {
    EntryKeys keys;
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
        takeKey(keys, key, value);
    }
    return keys;
}

}  // namespace

std::optional<DesktopEntry> findDesktopEntry(std::string_view identifier) {
    if (identifier.empty() || identifier.starts_with('.') || identifier.find('/') != std::string_view::npos ||
        identifier.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    for (const auto& directory : dataDirectories()) {
        auto path = entryBelow(directory + "/applications", identifier);
        if (!path) continue;
        const auto text = NSFileManager::defaultManager().contentsAtPath(*path);
        if (!text) continue;
        auto keys = readEntry(text->view());
        // Hidden says that the user removed it, which also covers the entries of the system.
        if (keys.hidden) return std::nullopt;
        if (!keys.tryExec.empty() && !programExists(keys.tryExec)) continue;
        keys.entry.path = *std::move(path);
        return std::move(keys.entry);
    }
    return std::nullopt;
}

std::vector<std::string> commandLine(const DesktopEntry& entry) {
    std::vector<std::string> arguments;
    std::string argument;
    bool begun = false;
    bool quoted = false;
    const auto add = [&](std::string_view part) {
        argument += part;
        begun = begun || !part.empty();
    };
    const auto end = [&] {
        if (std::exchange(begun, false)) arguments.push_back(std::exchange(argument, {}));
    };
    const std::string_view exec = entry.exec;
    for (std::size_t i = 0; i < exec.size(); ++i) {
        const char next = i + 1 < exec.size() ? exec[i + 1] : '\0';
        if (exec[i] == '"') {
            quoted = !quoted;
            begun = true;
        } else if (quoted) {
            const bool escaped = exec[i] == '\\' && next != '\0' && std::strchr("\"`$\\", next);
            argument += escaped ? exec[++i] : exec[i];
        } else if (std::strchr(" \t\n", exec[i])) {
            end();
        } else if (exec[i] != '%') {
            add(exec.substr(i, 1));
        } else {
            ++i;
            if (next == '%') add("%");
            if (next == 'c') add(entry.name);
            if (next == 'k') add(entry.path);
            if (next == 'i' && !entry.icon.empty()) {
                end();
                arguments.insert(arguments.end(), {"--icon", entry.icon});
            }
            // The rest stand for files, of which there are none, or for nothing any more.
            if (next == '\0' || !std::strchr("%ckifFuUdDnNvm", next)) return {};
        }
    }
    if (quoted) return {};
    end();
    return arguments;
}

}  // namespace zqcore::platform
