#include "TestKit/ScratchFolder.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace zqcore::testkit {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
    const char* parent = std::getenv("TMPDIR");
    path_ = std::string(parent && *parent ? parent : "/tmp") + "/zq-XXXXXX";
    if (!::mkdtemp(path_.data())) {
        std::perror(path_.c_str());
        std::abort();
    }
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    for (fs::recursive_directory_iterator entry(path_, fs::directory_options::skip_permission_denied, error),
         end;
         !error && entry != end; entry.increment(error)) {
        std::error_code ignored;
        if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
            fs::permissions(entry->path(), fs::perms::owner_all, fs::perm_options::add, ignored);
        }
    }
    fs::remove_all(path_, error);
}

std::string ScratchFolder::write(std::string_view name, std::string_view content, unsigned mode) const {
    auto file = *this / name;
    fs::create_directories(fs::path(file).parent_path());
    std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
    ::chmod(file.c_str(), static_cast<mode_t>(mode));
    return file;
}

std::string ScratchFolder::script(std::string_view name, std::string_view body) const {
    return write(name, "#!/bin/sh\n" + std::string(body) + "\n", 0755);
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace zqcore::testkit
