#include "Classes/Core/Utility/ZQPathFetcher.h"

#include <cstdio>

#include "Classes/Core/Utility/ZQInfo.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/NSSearchPath.h"

namespace zqcore {

namespace {

std::optional<std::string> firstUserDirectory(NSSearchPathDirectory directory) {
    auto found = NSSearchPathForDirectoriesInDomains(directory, NSUserDomainMask, true);
    if (found.empty()) return std::nullopt;
    return std::move(found.front());
}

std::string firstUserDirectoryOrEmpty(NSSearchPathDirectory directory) {
    return firstUserDirectory(directory).value_or("");
}

// The logger's own directory is made here, so these lines can't go through the logger.
void printLine(const std::string& line) {
    std::fprintf(stdout, "%s\n", line.c_str());
    std::fflush(stdout);
}

/// `path`, made on disk; it stands even if it can't be made.
std::string made(std::string path) {
    fetcherCreateDirectoryIfNotExist(path);
    return path;
}

std::string madeDirectory(std::string_view base, std::string_view component) {
    return made(stringByAppendingPathComponent(base, component));
}

/// Paths are asked for to the very end of the process, when other statics write their last.
const std::string& immortal(std::string path) { return *new std::string(std::move(path)); }

}  // namespace

bool fetcherCreateDirectoryIfNotExist(const std::string& path) {
    const auto& manager = NSFileManager::defaultManager();
    bool isDirectory = false;
    if (manager.fileExistsAtPath(path, isDirectory)) {
        if (isDirectory) return true;
        printLine("指定路径存在文件 " + path);
        return false;
    }
    const auto made = manager.createDirectoryAtPath(path, /*withIntermediateDirectories=*/true);
    if (made) return true;
    printLine("创建文件夹失败 path:" + path + "; error: " + made.error().description());
    return false;
}

class ZQPathFetcher::ZQPathFetcherDifferentPath {
  public:
    virtual ~ZQPathFetcherDifferentPath() = default;
    [[nodiscard]] virtual std::string sandboxDirectory() const = 0;
    [[nodiscard]] virtual std::string documentsDirectory() const = 0;
    [[nodiscard]] virtual std::string libraryDirectory() const = 0;
    [[nodiscard]] virtual std::string cachesDirectory() const = 0;
};

/// The system's own directories, which are private to a sandboxed application.
class ZQPathFetcher::Sandbox final : public ZQPathFetcherDifferentPath {
  public:
    std::string sandboxDirectory() const override { return NSHomeDirectory(); }
    std::string documentsDirectory() const override {
        return firstUserDirectoryOrEmpty(NSSearchPathDirectory::documents);
    }
    std::string libraryDirectory() const override {
        return firstUserDirectoryOrEmpty(NSSearchPathDirectory::library);
    }
    std::string cachesDirectory() const override {
        return firstUserDirectoryOrEmpty(NSSearchPathDirectory::caches);
    }
};

/// A private tree of the same shape for an application without a sandbox.
class ZQPathFetcher::Virtual final : public ZQPathFetcherDifferentPath {
  public:
    std::string sandboxDirectory() const override {
        static const std::string& path =
            immortal(made(ZQPathFetcher::sandboxDirectory(ZQInfo::appIdentifier())));
        return path;
    }
    std::string documentsDirectory() const override {
        static const std::string& path = immortal(madeDirectory(sandboxDirectory(), "Documents"));
        return path;
    }
    std::string libraryDirectory() const override {
        static const std::string& path = immortal(madeDirectory(sandboxDirectory(), "Library"));
        return path;
    }
    std::string cachesDirectory() const override {
        static const std::string& path = immortal(madeDirectory(sandboxDirectory(), "Library/Caches"));
        return path;
    }
};

const ZQPathFetcher::ZQPathFetcherDifferentPath& ZQPathFetcher::fetcher() {
    static const ZQPathFetcherDifferentPath& chosen = *[]() -> ZQPathFetcherDifferentPath* {
        if (ZQInfo::appSandboxed()) return new Sandbox;
        return new Virtual;
    }();
    return chosen;
}

std::string ZQPathFetcher::bundleDirectory() { return NSBundle::mainBundle()->bundlePath(); }

std::string ZQPathFetcher::sandboxDirectory() { return fetcher().sandboxDirectory(); }
std::string ZQPathFetcher::sandboxDirectory(std::string_view identifier) {
    return stringByAppendingPathComponent(
        stringByAppendingPathComponent(applicationSupportDirectory(), "/" + std::string(identifier)),
        "/VirtualSandbox");
}
std::string ZQPathFetcher::documentsDirectory() { return fetcher().documentsDirectory(); }
std::string ZQPathFetcher::libraryDirectory() { return fetcher().libraryDirectory(); }
std::string ZQPathFetcher::cachesDirectory() { return fetcher().cachesDirectory(); }

std::string ZQPathFetcher::temporaryDirectory() { return NSTemporaryDirectory(); }

std::string ZQPathFetcher::userDefaultsPlistFilePath() {
    static const std::string& path =
        immortal(stringByAppendingPathComponent(firstUserDirectoryOrEmpty(NSSearchPathDirectory::library),
                                                "/Preferences/" + ZQInfo::appIdentifier() + ".plist"));
    return path;
}

std::optional<std::string> ZQPathFetcher::applicationScriptsDirectory() {
    const auto name = parseUserName(NSHomeDirectory());
    auto path = originalApplicationScriptsDirectory();
    if (!path) {
        const std::string identifier = ZQInfo::appIdentifier();
        if (!name || identifier.empty()) return std::nullopt;
        return "/Users/" + *name + "/Library/Application Scripts/" + identifier;
    }
    if (!name) return path;
    auto components = componentsSeparatedBySlash(*path);
    if (components.size() < 3 || components[2] == *name || components[1] != "Users") return path;
    components[2] = *name;
    std::string corrected;
    for (std::size_t i = 0; i < components.size(); ++i) {
        if (i > 0) corrected += '/';
        corrected += components[i];
    }
    return corrected;
}

std::optional<std::string> ZQPathFetcher::originalApplicationScriptsDirectory() {
    return firstUserDirectory(NSSearchPathDirectory::applicationScripts);
}

std::optional<std::string> ZQPathFetcher::userName() { return parseUserName(NSHomeDirectory()); }

std::optional<std::string> ZQPathFetcher::scriptsDirectoryUserName() {
    return parseUserName(originalApplicationScriptsDirectory());
}

std::string ZQPathFetcher::applicationSupportDirectory() {
    return firstUserDirectoryOrEmpty(NSSearchPathDirectory::applicationSupport);
}

std::string ZQPathFetcher::downloadsDirectory() {
    return firstUserDirectoryOrEmpty(NSSearchPathDirectory::downloads);
}

std::string ZQPathFetcher::desktopDirectory() {
    return firstUserDirectoryOrEmpty(NSSearchPathDirectory::desktop);
}

std::string ZQPathFetcher::zqcoreDocumentsDirectory() {
    static const std::string& path = immortal(madeDirectory(documentsDirectory(), "/ZQCore"));
    return path;
}

std::string ZQPathFetcher::zqcoreLogsDirectory() {
    static const std::string& path = immortal(madeDirectory(documentsDirectory(), "/ZQCoreLogs"));
    return path;
}

std::string ZQPathFetcher::zqcoreCachesDirectory() {
    static const std::string& path = immortal(madeDirectory(cachesDirectory(), "/ZQCore"));
    return path;
}

std::optional<std::string> ZQPathFetcher::parseUserName(std::optional<std::string_view> path) {
    if (!path) return std::nullopt;
    const auto components = componentsSeparatedBySlash(*path);
    if (components.size() < 3 || components[1] != "Users" || components[2].empty()) return std::nullopt;
    return std::string(components[2]);
}

}  // namespace zqcore
