#include "TestKit/TemporaryHome.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace zqcore::testkit {

namespace {

namespace fs = std::filesystem;

std::string newFolder(const std::string& parent) {
    std::string form = parent + "/zq-XXXXXX";
    if (!::mkdtemp(form.data())) {
        std::perror(form.c_str());
        std::abort();
    }
    return form;
}

void removeFolder(const std::string& path) {
    std::error_code error;
    // What a test made unreadable has to go as well.
    for (fs::recursive_directory_iterator entry(path, fs::directory_options::skip_permission_denied, error),
         end;
         !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
    }
    fs::remove_all(path, error);
}

}  // namespace

TemporaryHome::TemporaryHome() : root_(newFolder("/tmp")), home_(root_ + "/home") {
    const std::pair<const char*, std::string> folders[] = {
        {"HOME", home_},
        {"XDG_CONFIG_HOME", home_ + "/.config"},
        {"XDG_DATA_HOME", home_ + "/.local/share"},
        {"XDG_STATE_HOME", home_ + "/.local/state"},
        {"XDG_CACHE_HOME", home_ + "/.cache"},
        {"XDG_RUNTIME_DIR", root_ + "/run"},
        {"TMPDIR", root_ + "/tmp"},
    };
    for (const auto& [name, folder] : folders) {
        fs::create_directories(folder);
        set(name, &folder);
    }
    fs::permissions(root_ + "/run", fs::perms::owner_all);
    set("APP_SANDBOX_CONTAINER_ID", nullptr);
}

TemporaryHome::~TemporaryHome() {
    for (const auto& [name, value, wasSet] : former_) {
        if (wasSet) {
            ::setenv(name.c_str(), value.c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    removeFolder(root_);
}

void TemporaryHome::set(const char* name, const std::string* value) {
    const char* before = std::getenv(name);
    former_.push_back({name, before ? before : "", before != nullptr});
    if (value) {
        ::setenv(name, value->c_str(), 1);
    } else {
        ::unsetenv(name);
    }
}

TemporaryFolder::TemporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    path_ = newFolder(folder && *folder ? folder : "/tmp");
}

TemporaryFolder::~TemporaryFolder() { removeFolder(path_); }

std::string TemporaryFolder::write(const std::string& name, const std::string& content) const {
    const fs::path path = fs::path(path_) / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path.native();
}

}  // namespace zqcore::testkit
