#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zqcore::platform {

/// What the shared MIME database (freedesktop.org, version 0.21) says of file names and of kinship.
/// Threads: immutable once made. Failure: a database that isn't installed knows nothing.
class MimeDatabase final {
  public:
    /// Read from the data folders of the system and the user at the first use, and kept.
    [[nodiscard]] static const MimeDatabase& shared();
    /// Read from the folders given; the first has the last word.
    explicit MimeDatabase(const std::vector<std::string>& folders);

    /// The type of files that end in a point and `extension`, which is in lower case.
    [[nodiscard]] std::optional<std::string> typeForExtension(std::string_view extension) const;
    /// The types that `type` is a kind of, nearest first, itself not among them. Every "text/" is a kind of
    /// "text/plain".
    [[nodiscard]] std::vector<std::string> ancestors(const std::string& type) const;

  private:
    void readGlobs(const std::string& path);
    void readSubclasses(const std::string& path);

    struct Glob {
        int weight;
        std::string type;
    };
    std::map<std::string, Glob, std::less<>> byExtension_;
    std::multimap<std::string, std::string, std::less<>> parents_;
};

}  // namespace zqcore::platform
