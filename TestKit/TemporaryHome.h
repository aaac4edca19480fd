#pragma once

#include <string>
#include <vector>

namespace zqcore::testkit {

/// A home of its own for a test: HOME, the XDG directories and TMPDIR lie in a new folder, and the process
/// counts as not sandboxed. Threads: made and ended while no other thread reads the environment. Lifetime: at
/// its end the folder is removed with all in it and the environment is as before. Failure: ends the process,
/// since the test would go on in a real home.
class TemporaryHome final {
  public:
    TemporaryHome();
    ~TemporaryHome();
    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

    /// The home, without a slash at its end.
    [[nodiscard]] const std::string& path() const noexcept { return home_; }

  private:
    void set(const char* name, const std::string* value);

    struct Former {
        std::string name;
        std::string value;
        bool wasSet;
    };
    std::string root_;
    std::string home_;
    std::vector<Former> former_;
};

/// A folder under the temporary directory that is removed at its end with all in it.
class TemporaryFolder final {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::string& path() const noexcept { return path_; }
    [[nodiscard]] std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    /// Writes a file below the folder, the folders on the way included, and gives its path.
    std::string write(const std::string& name, const std::string& content) const;

  private:
    std::string path_;
};

}  // namespace zqcore::testkit
