#pragma once

#include <map>
#include <string>
#include <utility>

#include "Platform/Base/Value.h"
#include "Platform/Foundation/NSSearchPath.h"

namespace zqcore::testkit {

/// Gives the process another main bundle while it lives: another information dictionary, and if wanted
/// another place. Threads: made and ended while nobody else asks for the bundle. Failure: none.
class FakeBundle final {
  public:
    /// A bundle with the dictionary `info`; without a path it lies where the running program does.
    explicit FakeBundle(platform::Value::Dictionary info, std::string path = {});
    /// A bundle of that identifier, its name the last part of it.
    [[nodiscard]] static FakeBundle named(const std::string& identifier);
    ~FakeBundle();
    FakeBundle(const FakeBundle&) = delete;
    FakeBundle& operator=(const FakeBundle&) = delete;
};

/// Answers for the user's folders in any shape while it lives, "/Users/ann" for one. A folder that isn't told
/// is none. Threads and failure as above.
class FakeSearchPaths final : public platform::SearchPaths {
  public:
    using Folders = std::map<platform::NSSearchPathDirectory, std::string>;

    explicit FakeSearchPaths(std::string home, Folders folders = {});
    /// The platform's own shape below `home`: Library, Library/Caches and so on; `identifier` is the last
    /// part of the script directory.
    [[nodiscard]] static Folders platformFolders(const std::string& home, const std::string& identifier);
    ~FakeSearchPaths() override;
    FakeSearchPaths(const FakeSearchPaths&) = delete;
    FakeSearchPaths& operator=(const FakeSearchPaths&) = delete;

    /// Not while another thread asks.
    void setFolder(platform::NSSearchPathDirectory directory, std::string path) {
        folders_[directory] = std::move(path);
    }
    [[nodiscard]] std::string homeDirectory() const override { return home_; }
    [[nodiscard]] std::string temporaryDirectory() const override { return "/var/folders/t/"; }
    [[nodiscard]] std::string userDirectory(platform::NSSearchPathDirectory directory) const override;

  private:
    std::string home_;
    Folders folders_;
};

}  // namespace zqcore::testkit
