#include "Platform/Foundation/NSSearchPath.h"

#include <atomic>

namespace zqcore::platform {

namespace {

std::atomic<const SearchPaths*> installed{nullptr};

}  // namespace

const SearchPaths& SearchPaths::current() noexcept {
    if (const auto* paths = installed.load(std::memory_order_acquire)) return *paths;
    return system();
}

void SearchPaths::installForTesting(const SearchPaths* paths) noexcept {
    installed.store(paths, std::memory_order_release);
}

std::string NSHomeDirectory() { return SearchPaths::current().homeDirectory(); }

std::string NSTemporaryDirectory() { return SearchPaths::current().temporaryDirectory(); }

std::vector<std::string> NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory directory,
                                                             unsigned domainMask, bool /*expandTilde*/) {
    if ((domainMask & NSUserDomainMask) == 0) return {};
    std::string path = SearchPaths::current().userDirectory(directory);
    if (path.empty()) return {};
    return {std::move(path)};
}

}  // namespace zqcore::platform
