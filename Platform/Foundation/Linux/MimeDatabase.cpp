#include "Platform/Foundation/Linux/MimeDatabase.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>

namespace zqcore::platform {

namespace {

std::string environmentOr(const char* name, const std::string& fallback) {
    const char* value = std::getenv(name);
    return value && *value ? value : fallback;
}

// XDG base directories 0.8, the user's first.
std::vector<std::string> dataFolders() {
    std::vector<std::string> folders{
        environmentOr("XDG_DATA_HOME", environmentOr("HOME", "") + "/.local/share")};
    const std::string system = environmentOr("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    for (std::size_t start = 0; start <= system.size();) {
        const std::size_t end = std::min(system.find(':', start), system.size());
        if (end > start) folders.push_back(system.substr(start, end - start));
        start = end + 1;
    }
    return folders;
}

bool isPlain(std::string_view text) { return text.find_first_of("*?[") == std::string_view::npos; }

}  // namespace

const MimeDatabase& MimeDatabase::shared() {
    static const auto& database = *new MimeDatabase(dataFolders());
    return database;
}

MimeDatabase::MimeDatabase(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        readGlobs(folder + "/mime/globs2");
        readSubclasses(folder + "/mime/subclasses");
    }
}

// Lines of the form WEIGHT:TYPE:GLOB[:FLAGS]; of use here are the globs "*.EXTENSION".
void MimeDatabase::readGlobs(const std::string& path) {
    std::ifstream file(path);
    std::string text;
    while (std::getline(file, text)) {
        const std::string_view line(text);
        const std::size_t first = line.find(':');
        const std::size_t second = first == line.npos ? line.npos : line.find(':', first + 1);
        if (second == line.npos || line.starts_with('#')) continue;
        int weight = 0;
        std::from_chars(line.data(), line.data() + first, weight);
        const std::string_view type = line.substr(first + 1, second - first - 1);
        std::string_view glob = line.substr(second + 1);
        // With the flag "cs" the letter case counts, so it isn't what a name in any case means.
        if (glob.find(':') != glob.npos || !glob.starts_with("*.") || !isPlain(glob.substr(2))) continue;
        glob.remove_prefix(2);
        std::string extension(glob);
        std::ranges::transform(extension, extension.begin(),
                               [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
        const auto [entry, isNew] = byExtension_.try_emplace(extension, Glob{weight, std::string(type)});
        if (!isNew && weight > entry->second.weight) entry->second = {weight, std::string(type)};
    }
}

// Lines of the form CHILD PARENT.
void MimeDatabase::readSubclasses(const std::string& path) {
    std::ifstream file(path);
    std::string child;
    std::string parent;
    while (file >> child >> parent) parents_.emplace(child, parent);
}

std::optional<std::string> MimeDatabase::typeForExtension(std::string_view extension) const {
    const auto found = byExtension_.find(extension);
    return found == byExtension_.end() ? std::nullopt : std::optional(found->second.type);
}

std::vector<std::string> MimeDatabase::ancestors(const std::string& type) const {
    std::vector<std::string> result;
    const auto addParents = [&](const std::string& child) {
        const auto [begin, end] = parents_.equal_range(child);
        for (auto entry = begin; entry != end; ++entry) {
            // A database may hold a circle.
            if (entry->second != type && std::ranges::find(result, entry->second) == result.end()) {
                result.push_back(entry->second);
            }
        }
    };
    addParents(type);
    for (std::size_t i = 0; i < result.size(); ++i) addParents(std::string(result[i]));
    if (type.starts_with("text/") && type != "text/plain" &&
        std::ranges::find(result, "text/plain") == result.end()) {
        result.emplace_back("text/plain");
    }
    return result;
}

}  // namespace zqcore::platform
