#include "TestKit/TemporaryHome.h"

#include <filesystem>
#include <utility>

namespace zqcore::testkit {

TemporaryHome::TemporaryHome() {
    const std::pair<const char*, std::string> folders[] = {
        {"HOME", home_},
        {"XDG_CONFIG_HOME", home_ + "/.config"},
        {"XDG_DATA_HOME", home_ + "/.local/share"},
        {"XDG_STATE_HOME", home_ + "/.local/state"},
        {"XDG_CACHE_HOME", home_ + "/.cache"},
        {"XDG_RUNTIME_DIR", root_ / "run"},
        {"TMPDIR", root_ / "tmp"},
    };
    for (const auto& [name, folder] : folders) {
        std::filesystem::create_directories(folder);
        variables_.emplace_back(name, folder);
    }
    std::filesystem::permissions(root_ / "run", std::filesystem::perms::owner_all);
    variables_.emplace_back("APP_SANDBOX_CONTAINER_ID");
}

}  // namespace zqcore::testkit
