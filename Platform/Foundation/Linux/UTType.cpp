#include "Platform/Foundation/UTType.h"

#include <algorithm>
#include <optional>
#include <set>
#include <vector>

#include "Platform/Foundation/Linux/MimeDatabase.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/UTTypeTable.h"

namespace zqcore::platform {

namespace {

// A dynamic type carries in its own name what is known: "dyn.mime." and a MIME type, or "dyn.ext." and an
// extension. So it means the same in every process.
constexpr std::string_view kDynamicMime = "dyn.mime.";
constexpr std::string_view kDynamicExtension = "dyn.ext.";

std::string lowered(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return result;
}

template <class Visit>
bool anyWord(std::string_view list, Visit visit) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(' '), list.size());
        if (visit(list.substr(0, end))) return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

bool hasWord(std::string_view list, std::string_view word) {
    return anyWord(list, [word](std::string_view entry) { return entry == word; });
}

template <class Matches>
const UTTypeEntry* findType(Matches matches) {
    const auto types = knownTypes();
    const auto found = std::ranges::find_if(types, matches);
    return found == types.end() ? nullptr : &*found;
}

const UTTypeEntry* typeForMime(std::string_view mime) {
    return findType([mime](const UTTypeEntry& type) { return hasWord(type.mimeTypes, mime); });
}

// The kinds of a MIME type by its own kinship, and by the first half of its name.
std::vector<std::string> parentsOfMime(const std::string& mime) {
    std::vector<std::string> parents;
    for (const std::string& ancestor : MimeDatabase::shared().ancestors(mime)) {
        if (const UTTypeEntry* type = typeForMime(ancestor)) parents.emplace_back(type->identifier);
    }
    constexpr std::pair<std::string_view, std::string_view> kFamilies[] = {
        {"text/", "public.text"},   {"image/", "public.image"}, {"audio/", "public.audio"},
        {"video/", "public.movie"}, {"font/", "public.font"},   {"message/", "public.message"}};
    for (const auto& [prefix, family] : kFamilies) {
        if (mime.starts_with(prefix)) parents.emplace_back(family);
    }
    parents.emplace_back("public.data");
    return parents;
}

std::vector<std::string> parentsOf(const std::string& identifier) {
    if (identifier.starts_with(kDynamicMime)) return parentsOfMime(identifier.substr(kDynamicMime.size()));
    if (identifier.starts_with("dyn.")) return {"public.data"};
    std::vector<std::string> parents;
    if (const auto* type =
            findType([&](const UTTypeEntry& entry) { return entry.identifier == identifier; })) {
        anyWord(type->parents, [&](std::string_view parent) {
            parents.emplace_back(parent);
            return false;
        });
    }
    return parents;
}

NSError noSuchFile(const NSURL& url) {
    return {NSCocoaErrorDomain, NSFileReadNoSuchFileError,
            "The file \"" + url.absoluteString() + "\" couldn't be opened because there is no such file."};
}

}  // namespace

std::string typeIdentifierForExtension(std::string_view extension) {
    const std::string name = lowered(extension);
    if (name.empty()) return "public.data";
    if (const auto* type =
            findType([&](const UTTypeEntry& entry) { return hasWord(entry.extensions, name); })) {
        return std::string(type->identifier);
    }
    const std::optional<std::string> mime = MimeDatabase::shared().typeForExtension(name);
    if (!mime) return std::string(kDynamicExtension) + name;
    const UTTypeEntry* type = typeForMime(*mime);
    return type ? std::string(type->identifier) : std::string(kDynamicMime) + lowered(*mime);
}

std::expected<std::string, NSError> typeIdentifierForURL(const NSURL& url) {
    const std::string path =
        url.isFileURL() || url.absoluteString().starts_with('/') ? url.path() : std::string();
    if (path.empty()) return std::unexpected(noSuchFile(url));
    const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(path);
    if (!attributes) return std::unexpected(attributes.error());
    switch (attributes->type) {
        case NSFileAttributes::Type::directory:
            return "public.folder";
        case NSFileAttributes::Type::symbolicLink:
            return "public.symlink";
        case NSFileAttributes::Type::other:
            return "public.item";
        case NSFileAttributes::Type::regular:
            break;
    }
    const std::string extension = pathExtension(path);
    constexpr std::uint32_t kAnyExecute = 0111;
    if (extension.empty() && (attributes->posixPermissions & kAnyExecute) != 0)
        return "public.unix-executable";
    return typeIdentifierForExtension(extension);
}

bool UTTypeConformsTo(std::string_view identifier, std::string_view conformsTo) {
    const std::string wanted = lowered(conformsTo);
    std::vector<std::string> open{lowered(identifier)};
    std::set<std::string> seen;
    if (wanted.empty()) return false;
    while (!open.empty()) {
        const std::string type = std::move(open.back());
        open.pop_back();
        if (type == wanted) return true;
        if (!seen.insert(type).second) continue;
        for (std::string& parent : parentsOf(type)) open.push_back(lowered(parent));
    }
    return false;
}

}  // namespace zqcore::platform
