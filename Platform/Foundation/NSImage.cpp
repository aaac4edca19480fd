#include "Platform/Foundation/NSImage.h"

#include <array>

#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"

namespace zqcore::platform {

namespace {

constexpr std::array<std::string_view, 7> kExtensions{"png", "tiff", "tif", "jpg", "jpeg", "gif", "svg"};

std::vector<NSImage::File> found(const std::string& base, std::string_view extension) {
    constexpr std::array<std::string_view, 3> marks{"", "@2x", "@3x"};
    std::vector<NSImage::File> files;
    for (std::size_t i = 0; i < marks.size(); ++i) {
        std::string path = base;
        path.append(marks[i]).append(".").append(extension);
        bool isDirectory = false;
        if (NSFileManager::defaultManager().fileExistsAtPath(path, isDirectory) && !isDirectory) {
            files.push_back({std::move(path), static_cast<int>(i) + 1});
        }
    }
    return files;
}

}  // namespace

std::shared_ptr<NSImage> NSImage::imageNamed(std::string_view name) {
    return NSBundle::mainBundle()->imageForResource(name);
}

std::shared_ptr<NSImage> NSImage::imageInFolder(const std::string& folder, std::string_view name) {
    if (name.empty() || name.find('\0') != std::string_view::npos) return nullptr;
    const std::string base = stringByAppendingPathComponent(folder, name);
    const std::string own = pathExtension(base);
    for (const std::string_view extension : kExtensions) {
        auto files = found(own == extension ? stringByDeletingPathExtension(base) : base, extension);
        if (!files.empty()) return makeObject<NSImage>(std::string(name), std::move(files));
    }
    return nullptr;
}

const NSImage::File& NSImage::bestFile(double scale) const noexcept {
    for (const auto& file : files_) {
        if (file.scale >= scale) return file;
    }
    return files_.back();
}

std::optional<Data> NSImage::encodedBytes(const File& file) {
    auto bytes = NSFileManager::defaultManager().contentsAtPath(file.path);
    if (!bytes) return std::nullopt;
    return *std::move(bytes);
}

NSImage::NSImage(std::string name, std::vector<File> files)
    : name_(std::move(name)), files_(std::move(files)), isTemplate_(name_.ends_with("Template")) {}

}  // namespace zqcore::platform
