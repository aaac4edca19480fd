#include "Classes/Core/Extension/NSFileManagerExtension.h"

#include <map>
#include <set>
#include <utility>

#include "Classes/Core/Extension/StringExtension.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/JSON/NSJSONSerialization.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/Text/Utf8.h"
#include "Platform/Foundation/UTType.h"

namespace zqcore {

namespace {

template <class... Pieces>
void logError(const Pieces&... pieces) {
    ZQLogError([&] {
        std::string line;
        (line.append(pieces), ...);
        return line;
    });
}

std::expected<std::string, NSError> textOfFile(const NSFileManager& manager, std::string_view path) {
    auto data = manager.contentsAtPath(path);
    if (!data) return std::unexpected(data.error());
    if (!isValidUTF8(data->view())) {
        constexpr long kWrongEncoding = 261;  // NSFileReadInapplicableStringEncodingError
        return std::unexpected(NSError(NSCocoaErrorDomain, kWrongEncoding,
                                       "The file \"" + lastPathComponent(path) +
                                           "\" couldn't be opened using text encoding Unicode (UTF-8)."));
    }
    return std::move(*data).take();
}

// Device and inode, by which a folder is known however it was reached.
using FolderIdentity = std::pair<std::uint64_t, std::uint64_t>;

// What a walk keeps of the folders it meets: those it stands in, so that a circle of links ends, and, where
// no filter looks at the way they were reached, the sizes of those it has left, so that a folder with many
// links to it is read once.
struct FolderWalk {
    std::set<FolderIdentity> open;
    std::map<FolderIdentity, std::int64_t> known;
};

std::int64_t sizeOfFolder(const NSFileManager& manager, std::string_view path, const FolderSizeFilter& filter,
                          FolderWalk& walk);

std::int64_t sizeOfEntries(const NSFileManager& manager, std::string_view path,
                           const FolderSizeFilter& filter, FolderWalk& walk) {
    const auto names = manager.contentsOfDirectoryAtPath(path);
    if (!names) {
        logError("NSFileManager zq_folderSize(atPath:) 获取文件夹大小异常: ", names.error().description());
        return 0;
    }
    std::int64_t size = 0;
    for (const std::string& name : *names) {
        const std::string entry = stringByAppendingPathComponent(path, name);
        if (filter && !filter(entry)) continue;
        bool isFolder = false;
        const bool exists = manager.fileExistsAtPath(entry, isFolder);
        size += exists && isFolder ? sizeOfFolder(manager, entry, filter, walk) : zq_fileSize(manager, entry);
    }
    return size;
}

std::int64_t sizeOfFolder(const NSFileManager& manager, std::string_view path, const FolderSizeFilter& filter,
                          FolderWalk& walk) {
    bool isDirectory = false;
    if (!manager.fileExistsAtPath(path, isDirectory) || !isDirectory) return 0;
    // The point makes it the folder itself, where the path is a link to it.
    const auto attributes = manager.attributesOfItemAtPath(std::string(path) + "/.");
    if (!attributes) return sizeOfEntries(manager, path, filter, walk);
    const FolderIdentity identity{attributes->systemNumber, attributes->systemFileNumber};
    if (const auto known = walk.known.find(identity); known != walk.known.end()) return known->second;
    if (!walk.open.insert(identity).second) return 0;
    const std::int64_t size = sizeOfEntries(manager, path, filter, walk);
    walk.open.erase(identity);
    if (!filter) walk.known.emplace(identity, size);
    return size;
}

}  // namespace

bool zq_fileExists(const NSFileManager& manager, std::string_view path) {
    bool isDirectory = false;
    if (!manager.fileExistsAtPath(path, isDirectory)) return false;
    if (isDirectory) logError("文件存在，但该路径是文件夹类型 ", path);
    return !isDirectory;
}

bool zq_directoryExists(const NSFileManager& manager, std::string_view path) {
    bool isDirectory = false;
    if (!manager.fileExistsAtPath(path, isDirectory)) return false;
    if (!isDirectory) logError("文件存在，但该路径是文件类型 ", path);
    return isDirectory;
}

bool zq_createDirectoryIfNotExist(const NSFileManager& manager, std::string_view path) {
    bool isDirectory = false;
    if (manager.fileExistsAtPath(path, isDirectory)) {
        if (!isDirectory) logError("指定路径存在文件 ", path);
        return isDirectory;
    }
    const auto made = manager.createDirectoryAtPath(path, /*withIntermediateDirectories=*/true);
    if (!made) logError("创建文件夹失败 path:", path, "; error: ", made.error().description());
    return made.has_value();
}

bool zq_fileUTType(const NSFileManager&, const NSURL& url,
                   const std::vector<std::string>& isConformsToUTTypes) {
    if (url.absoluteString().empty() || isConformsToUTTypes.empty()) return false;
    const auto type = typeIdentifierForURL(url);
    if (!type) {
        logError("获取文件 UTI 类型错误; error=", type.error().description());
        return false;
    }
    if (type->empty()) {
        logError("获取文件 UTI 类型为空; url=", url.description());
        return false;
    }
    for (const std::string& wanted : isConformsToUTTypes) {
        if (UTTypeConformsTo(*type, wanted)) return true;
    }
    return false;
}

std::optional<Value::Dictionary> zq_dictionary(const NSFileManager& manager, std::string_view fromJsonFile) {
    if (fromJsonFile.empty()) {
        logError("文件路径为空 ", fromJsonFile);
        return std::nullopt;
    }
    if (!manager.fileExistsAtPath(fromJsonFile)) {
        logError("找不到 JSON 文件 ", fromJsonFile);
        return std::nullopt;
    }
    const auto data = manager.contentsAtPath(fromJsonFile);
    if (!data) {
        logError("读取 JSON 数据失败 ", fromJsonFile);
        return std::nullopt;
    }
    auto object = NSJSONSerialization::JSONObject(data->view(), NSJSONReadingMutableContainers);
    if (!object) {
        logError("JSON 数据序列化失败 ", fromJsonFile);
        return std::nullopt;
    }
    Value::Dictionary* dictionary = object->asDictionary();
    if (!dictionary) {
        logError("JSON 数据序列化结果不是 NSDictionary ", object->description());
        return std::nullopt;
    }
    return std::move(*dictionary);
}

std::optional<std::string> zq_string(const NSFileManager& manager, std::string_view fromFile) {
    if (fromFile.empty()) {
        logError("文件路径为空 ", fromFile);
        return std::nullopt;
    }
    if (!manager.fileExistsAtPath(fromFile)) {
        logError("找不到文件 ", fromFile);
        return std::nullopt;
    }
    auto text = textOfFile(manager, fromFile);
    if (!text) {
        logError("文件读取失败: path=", fromFile, "; error=", text.error().description());
        return std::nullopt;
    }
    return std::move(*text);
}

std::optional<std::string> zq_suitablePath(const NSFileManager& manager, std::string_view forPath) {
    if (forPath.empty()) {
        logError("文件路径为空 ", forPath);
        return std::nullopt;
    }
    if (!manager.fileExistsAtPath(forPath)) return std::string(forPath);
    std::string base = stringByDeletingPathExtension(forPath);
    std::string extension = pathExtension(forPath);
    // Letters and digits only, with at least one letter: "x1.2" has no extension but a number in its name.
    if (!zq_matchRegex(extension, "^(?=.*[a-zA-Z])[0-9a-zA-Z]+$")) {
        base = forPath;
        extension.clear();
    }
    for (std::uint64_t number = 1;; ++number) {
        std::string candidate = base + "(" + std::to_string(number) + ")";
        if (!extension.empty()) candidate += "." + extension;
        if (!manager.fileExistsAtPath(candidate)) return candidate;
    }
}

std::int64_t zq_fileSize(const NSFileManager& manager, std::string_view path) {
    if (!manager.fileExistsAtPath(path)) return 0;
    const auto attributes = manager.attributesOfItemAtPath(path);
    return attributes ? static_cast<std::int64_t>(attributes->size) : 0;
}

std::int64_t zq_folderSize(const NSFileManager& manager, std::string_view path,
                           const FolderSizeFilter& filter) {
    FolderWalk walk;
    return sizeOfFolder(manager, path, filter, walk);
}

}  // namespace zqcore
