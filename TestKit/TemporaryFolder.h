#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace zqcore::testkit {

/// A folder of its own below the temporary one, gone with everything in it at the end.
class TemporaryFolder final {
  public:
    TemporaryFolder() {
        std::string name = std::filesystem::temp_directory_path().string() + "/zqcore-XXXXXX";
        path_ = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

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
