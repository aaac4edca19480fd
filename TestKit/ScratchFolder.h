#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace zqcore::testkit {

/// A folder for files and scripts that a test writes, below the temporary one and gone with all in it at the
/// end.
class ScratchFolder final {
  public:
    ScratchFolder() {
        std::string name = std::filesystem::temp_directory_path().string() + "/zqcore-XXXXXX";
        path_ = ::mkdtemp(name.data());
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    [[nodiscard]] std::string operator/(std::string_view name) const {
        return path_ + "/" + std::string(name);
    }

    /// Writes a file, and the folders above it.
    std::string write(std::string_view name, std::string_view content, unsigned mode = 0644) const {
        auto file = *this / name;
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream(file, std::ios::binary | std::ios::trunc) << content;
        ::chmod(file.c_str(), static_cast<mode_t>(mode));
        return file;
    }
    /// Writes a shell script that can be run.
    std::string script(std::string_view name, std::string_view body) const {
        return write(name, "#!/bin/sh\n" + std::string(body) + "\n", 0755);
    }

  private:
    std::string path_;
};

inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace zqcore::testkit
