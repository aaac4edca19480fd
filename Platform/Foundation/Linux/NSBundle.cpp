#include "Platform/Foundation/NSBundle.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <mutex>

#include "Platform/Base/NSLog.h"
#include "Platform/Foundation/Linux/FileSupport.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/PropertyList.h"

// An application may define these two by compiling its Info.plist in.
extern "C" {
__attribute__((weak, visibility("default"))) extern const char zq_info_plist_begin[];
__attribute__((weak, visibility("default"))) extern const char zq_info_plist_end[];
}

namespace zqcore::platform {

namespace {

// Where an installed program or library finds its shared resources, from its own folder: PREFIX/bin and
// PREFIX/lib, PREFIX/lib/TRIPLET.
constexpr std::array<std::string_view, 2> kSharedResources{"/../share/ZQCore", "/../../share/ZQCore"};

std::string executablePath() {
    char path[4096];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : std::string();
}

/// Tells one state of a file from every other.
struct FileMark {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec changed{};
    bool operator==(const FileMark& other) const {
        return device == other.device && inode == other.inode && size == other.size &&
               changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
    }
};

std::optional<FileMark> markOf(const std::string& path) {
    struct stat facts {};
    if (::stat(path.c_str(), &facts) != 0) return std::nullopt;
    return FileMark{facts.st_dev, facts.st_ino, facts.st_size, facts.st_ctim};
}

using Dictionary = std::shared_ptr<const Value::Dictionary>;

Dictionary parsed(std::string_view bytes, std::string_view origin) {
    auto value = PropertyList::read(bytes);
    if (value && value->asDictionary()) {
        return std::make_shared<const Value::Dictionary>(std::move(*value->asDictionary()));
    }
    NSLog(std::string(origin) + ": " + (value ? "no dictionary" : value.error().description()));
    return std::make_shared<const Value::Dictionary>();
}

std::mutex mainMutex;
// Not ended with the other statics: the last log lines of a process still ask for its name.
std::shared_ptr<NSBundle>& substitute() {
    static auto& bundle = *new std::shared_ptr<NSBundle>;
    return bundle;
}

}  // namespace

struct NSBundle::Information {
    std::vector<std::string> candidates;
    bool compiledIn = false;
    Dictionary fixed;

    std::mutex mutex;
    std::string path;
    std::optional<FileMark> mark;
    Dictionary read = std::make_shared<const Value::Dictionary>();

    Dictionary current() {
        if (fixed) return fixed;
        const std::lock_guard lock(mutex);
        for (const auto& candidate : candidates) {
            const auto now = markOf(candidate);
            if (!now) continue;
            if (mark == now && path == candidate) return read;
            const auto bytes = posix::readFile(candidate);
            read = bytes ? parsed(*bytes, candidate) : std::make_shared<const Value::Dictionary>();
            path = candidate;
            mark = now;
            return read;
        }
        path.clear();
        mark.reset();
        if (compiledIn && zq_info_plist_begin && zq_info_plist_end) {
            static const Dictionary& own = *new Dictionary(parsed(
                {zq_info_plist_begin, static_cast<std::size_t>(zq_info_plist_end - zq_info_plist_begin)},
                "compiled-in Info.plist"));
            return own;
        }
        return std::make_shared<const Value::Dictionary>();
    }
};

NSBundle::NSBundle(const std::string& folder, bool isMain) : information_(std::make_unique<Information>()) {
    const std::string parent = stringByDeletingLastPathComponent(folder);
    auto& candidates = information_->candidates;
    std::string contents;
    if (lastPathComponent(parent) == "Contents") contents = parent;
    if (NSFileManager::defaultManager().fileExistsAtPath(folder + "/Contents/Info.plist")) {
        contents = folder + "/Contents";
    }
    if (!contents.empty()) {
        path_ = stringByDeletingLastPathComponent(contents);
        candidates = {contents + "/Info.plist"};
        resources_ = {contents + "/Resources"};
    } else {
        path_ = folder;
        candidates = {folder + "/Info.plist", parent + "/Resources/Info.plist"};
        resources_ = {folder};
        for (const auto shared : kSharedResources) resources_.push_back(folder + std::string(shared));
    }
    information_->compiledIn = isMain;
}

NSBundle::~NSBundle() = default;

std::shared_ptr<NSBundle> NSBundle::mainBundle() {
    {
        const std::lock_guard lock(mainMutex);
        if (substitute()) return substitute();
    }
    static const auto& bundle = *new std::shared_ptr<NSBundle>(
        new NSBundle(stringByDeletingLastPathComponent(executablePath()), /*isMain=*/true));
    return bundle;
}

std::shared_ptr<NSBundle> NSBundle::bundleForClass(const void* symbol) {
    Dl_info module{};
    std::error_code error;
    std::string path;
    if (::dladdr(symbol, &module) != 0 && module.dli_fname) {
        // The name is as the loader got it, for the executable even as its caller typed it.
        path = std::filesystem::canonical(module.dli_fname, error).native();
    }
    const std::string executable = executablePath();
    const bool isMain = path.empty() || path == executable;
    return std::shared_ptr<NSBundle>(
        new NSBundle(stringByDeletingLastPathComponent(isMain ? executable : path), isMain));
}

std::shared_ptr<NSBundle> NSBundle::bundleWithURL(std::string_view path) {
    bool isDirectory = false;
    if (!NSFileManager::defaultManager().fileExistsAtPath(path, isDirectory) || !isDirectory) return nullptr;
    std::shared_ptr<NSBundle> bundle(
        new NSBundle(stringByAppendingPathComponent(path, ""), /*isMain=*/false));
    // A bundle that is opened by its path owns what lies in it, not what lies beside it.
    bundle->resources_.resize(1);
    bundle->information_->candidates.resize(1);
    return bundle;
}

std::shared_ptr<const Value::Dictionary> NSBundle::infoDictionary() const { return information_->current(); }

std::string NSBundle::bundleIdentifier() const {
    const auto info = infoDictionary();
    const Value* value = info->find("CFBundleIdentifier");
    return value && value->asString() ? *value->asString() : std::string();
}

std::optional<std::string> NSBundle::pathForResource(std::string_view name,
                                                     std::string_view extension) const {
    if (name.empty()) return std::nullopt;
    for (const auto& folder : resources_) {
        std::string path = stringByAppendingPathComponent(folder, name);
        if (!extension.empty()) path.append(".").append(extension);
        if (NSFileManager::defaultManager().fileExistsAtPath(path)) return path;
    }
    return std::nullopt;
}

std::shared_ptr<NSImage> NSBundle::imageForResource(std::string_view name) const {
    for (const auto& folder : resources_) {
        if (auto image = NSImage::imageInFolder(folder, name)) return image;
    }
    return nullptr;
}

std::shared_ptr<NSBundle> NSBundle::makeForTesting(const std::string& path, Value::Dictionary info) {
    std::shared_ptr<NSBundle> bundle(new NSBundle(path, /*isMain=*/true));
    bundle->information_->fixed = std::make_shared<const Value::Dictionary>(std::move(info));
    return bundle;
}

void NSBundle::setMainBundleForTesting(std::shared_ptr<NSBundle> bundle) {
    const std::lock_guard lock(mainMutex);
    substitute() = std::move(bundle);
}

}  // namespace zqcore::platform
