#include "Platform/Foundation/NSProcessInfo.h"

#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <utility>

#include "Platform/Foundation/Linux/FileSupport.h"
#include "Platform/Foundation/MachineFacts.h"

namespace zqcore::platform {

namespace {

struct TerminationWishes {
    std::mutex mutex;
    std::vector<std::string> reasons;
    std::atomic<int> suddenCount{0};
};

TerminationWishes& terminationWishes() {
    static TerminationWishes& shared = *new TerminationWishes;
    return shared;
}

}  // namespace

const NSProcessInfo& NSProcessInfo::processInfo() noexcept {
    static const NSProcessInfo info;
    return info;
}

std::map<std::string, std::string> NSProcessInfo::environment() const {
    std::map<std::string, std::string> variables;
    for (char** entry = ::environ; entry && *entry; ++entry) {
        const std::string_view text(*entry);
        const std::size_t equals = text.find('=');
        if (equals != std::string_view::npos)
            variables.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    return variables;
}

std::optional<std::string> NSProcessInfo::environment(const std::string& name) const {
    if (const char* value = std::getenv(name.c_str())) return value;
    return std::nullopt;
}

std::vector<std::string> NSProcessInfo::arguments() const {
    std::vector<std::string> words;
    const auto line = posix::readFile("/proc/self/cmdline");
    for (std::size_t start = 0; line && start < line->size();) {
        const std::size_t end = line->find('\0', start);
        words.push_back(line->substr(start, end - start));
        if (end == std::string::npos) break;
        start = end + 1;
    }
    return words;
}

std::string NSProcessInfo::processName() const {
    char path[4096];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0) return {};
    std::string_view name(path, static_cast<std::size_t>(length));
    name.remove_prefix(name.rfind('/') + 1);
    // The kernel's own mark on a program whose file was replaced while it runs.
    constexpr std::string_view replaced = " (deleted)";
    if (name.ends_with(replaced)) name.remove_suffix(replaced.size());
    return std::string(name);
}

std::int32_t NSProcessInfo::processIdentifier() const noexcept { return ::getpid(); }

NSOperatingSystemVersion NSProcessInfo::operatingSystemVersion() const {
    return MachineFacts::current().operatingSystemVersion();
}

void NSProcessInfo::disableAutomaticTermination(std::string reason) const {
    TerminationWishes& wishes = terminationWishes();
    const std::lock_guard lock(wishes.mutex);
    wishes.reasons.push_back(std::move(reason));
}

std::vector<std::string> NSProcessInfo::automaticTerminationReasons() const {
    TerminationWishes& wishes = terminationWishes();
    const std::lock_guard lock(wishes.mutex);
    return wishes.reasons;
}

void NSProcessInfo::disableSuddenTermination() const noexcept { ++terminationWishes().suddenCount; }

int NSProcessInfo::suddenTerminationDisableCount() const noexcept { return terminationWishes().suddenCount; }

}  // namespace zqcore::platform
