#pragma once

#include <string>
#include <string_view>

namespace zqcore::testkit {

/// A folder for files and scripts that a test writes, below the temporary one (TMPDIR). Threads: any, each
/// with files of its own. Lifetime: at its end it goes with all in it, also what a test made unreadable.
/// Failure: ends the process where no folder can be made, since the test would write somewhere else.
class ScratchFolder final {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// The folder, without a slash at its end.
    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    [[nodiscard]] std::string operator/(std::string_view name) const {
        return path_ + "/" + std::string(name);
    }

    /// Writes a file, and the folders above it; its path.
    std::string write(std::string_view name, std::string_view content, unsigned mode = 0644) const;
    /// Writes a shell script that can be run.
    std::string script(std::string_view name, std::string_view body) const;

  private:
    std::string path_;
};

/// All that is in a file, of the kernel's own ones too; empty if it can't be read.
[[nodiscard]] std::string contentOf(const std::string& path);

}  // namespace zqcore::testkit
