#include "Platform/Scripting/NSRunningApplication.h"

#include <unistd.h>

#include <filesystem>
#include <string>

namespace zqcore::platform {

std::shared_ptr<NSRunningApplication> NSRunningApplication::currentApplication() {
    return runningApplicationWithProcessIdentifier(::getpid());
}

std::shared_ptr<NSRunningApplication> NSRunningApplication::runningApplicationWithProcessIdentifier(
    std::int32_t processIdentifier) {
    if (processIdentifier <= 0) return nullptr;
    const std::filesystem::path process = "/proc/" + std::to_string(processIdentifier);
    std::error_code error;
    if (!std::filesystem::is_directory(process, error)) return nullptr;
    const auto program = std::filesystem::read_symlink(process / "exe", error);
    return makeObject<NSRunningApplication>(
        processIdentifier, error ? std::nullopt : std::optional(NSURL::fileURLWithPath(program.string())));
}

}  // namespace zqcore::platform
