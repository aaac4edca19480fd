#include "Platform/Foundation/NSFileManager.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

const NSFileManager& files() { return NSFileManager::defaultManager(); }

template <class T>
long codeOf(const std::expected<T, NSError>& result) {
    return result ? 0 : result.error().code();
}

class NSFileManagerTest : public testing::Test {
  protected:
    std::string content(const std::string& path) {
        auto data = files().contentsAtPath(path);
        return data ? std::string(data->view()) : "missing";
    }
    testkit::ScratchFolder folder;
};

TEST_F(NSFileManagerTest, SeesThroughLinks) {
    const std::string file = folder.write("file", "x");
    ::symlink(file.c_str(), (folder / "link").c_str());
    ::symlink("nowhere", (folder / "dangling").c_str());
    bool isDirectory = true;
    EXPECT_TRUE(files().fileExistsAtPath(folder / "link", isDirectory));
    EXPECT_FALSE(isDirectory);
    EXPECT_TRUE(files().fileExistsAtPath(folder.path(), isDirectory));
    EXPECT_TRUE(isDirectory);
    EXPECT_FALSE(files().fileExistsAtPath(folder / "dangling"));
    EXPECT_FALSE(files().fileExistsAtPath(""));

    const auto attributes = files().attributesOfItemAtPath(folder / "link");
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes->type, NSFileAttributes::Type::symbolicLink) << "a final link isn't followed";
}

// The system would take "file\0more" for "file".
TEST_F(NSFileManagerTest, APathWithANulNamesNothing) {
    const std::string file = folder.write("file", "x");
    const std::string cut = file + std::string("\0more", 5);
    EXPECT_FALSE(files().fileExistsAtPath(cut));
    EXPECT_EQ(codeOf(files().attributesOfItemAtPath(cut)), 260);
    EXPECT_EQ(codeOf(files().contentsAtPath(cut)), 260);
    EXPECT_EQ(codeOf(files().contentsOfDirectoryAtPath(folder.path() + std::string("\0x", 2))), 260);
    const std::string fresh = folder / std::string("new\0x", 5);
    EXPECT_EQ(codeOf(files().createDirectoryAtPath(fresh, true)), 4);
    EXPECT_EQ(codeOf(files().copyItemAtPath(file, fresh)), 4);
    EXPECT_EQ(codeOf(files().moveItemAtPath(file, fresh)), 4);
    EXPECT_EQ(codeOf(files().writeAtomically("y", cut)), 4);
    EXPECT_EQ(codeOf(files().removeItemAtPath(cut)), 4);
    EXPECT_FALSE(files().fileExistsAtPath(folder / "new"));
    EXPECT_EQ(content(file), "x") << "untouched";
}

TEST_F(NSFileManagerTest, MakesFolders) {
    const std::string file = folder.write("file", "x");
    EXPECT_EQ(codeOf(files().createDirectoryAtPath(folder / "a/b", false)), 4) << "no parent";
    EXPECT_EQ(codeOf(files().createDirectoryAtPath(folder / "a/b/c/", true)), 0);
    EXPECT_EQ(codeOf(files().createDirectoryAtPath(folder / "a/b/c", true)), 0) << "already there";
    EXPECT_EQ(codeOf(files().createDirectoryAtPath(folder / "a", false)), 516);
    EXPECT_EQ(codeOf(files().createDirectoryAtPath(file, false)), 516);
    EXPECT_EQ(codeOf(files().createDirectoryAtPath(file, true)), 516) << "a file in the way";
    EXPECT_NE(codeOf(files().createDirectoryAtPath(file + "/below", true)), 0);
    EXPECT_NE(codeOf(files().createDirectoryAtPath("", true)), 0);
}

TEST_F(NSFileManagerTest, RemovesLinksNotTheirTargets) {
    folder.write("tree/deep/file", "x");
    ::symlink((folder / "tree").c_str(), (folder / "link").c_str());
    EXPECT_EQ(codeOf(files().removeItemAtPath(folder / "link/")), 0);
    EXPECT_TRUE(files().fileExistsAtPath(folder / "tree/deep/file"));
    EXPECT_EQ(codeOf(files().removeItemAtPath(folder / "tree")), 0);
    EXPECT_FALSE(files().fileExistsAtPath(folder / "tree"));
    EXPECT_EQ(codeOf(files().removeItemAtPath(folder / "tree")), 4);
}

TEST_F(NSFileManagerTest, CopiesWholeTrees) {
    folder.write("tree/deep/file", "x");
    ::symlink("deep", (folder / "tree/link").c_str());
    ::chmod((folder / "tree/deep/file").c_str(), 0750);
    EXPECT_EQ(codeOf(files().copyItemAtPath(folder / "tree", folder / "copy")), 0);
    EXPECT_EQ(content(folder / "copy/deep/file"), "x");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "copy/link"));
    EXPECT_EQ(files().attributesOfItemAtPath(folder / "copy/deep/file")->posixPermissions, 0750U);

    EXPECT_EQ(codeOf(files().copyItemAtPath(folder / "tree", folder / "copy")), 516);
    EXPECT_EQ(codeOf(files().copyItemAtPath(folder / "missing", folder / "new")), 260);
    EXPECT_EQ(codeOf(files().copyItemAtPath(folder / "tree", folder / "tree/deep/again")), 512)
        << "into itself, which would never end";
    EXPECT_FALSE(files().fileExistsAtPath(folder / "tree/deep/again"));
}

TEST_F(NSFileManagerTest, MovesNeverOntoAnything) {
    folder.write("a", "a");
    folder.write("b", "b");
    EXPECT_EQ(codeOf(files().moveItemAtPath(folder / "a", folder / "b")), 516);
    EXPECT_EQ(content(folder / "b"), "b");
    EXPECT_EQ(codeOf(files().moveItemAtPath(folder / "a", folder / "c")), 0);
    EXPECT_EQ(content(folder / "c"), "a");
    EXPECT_EQ(codeOf(files().moveItemAtPath(folder / "a", folder / "d")), 4);
}

TEST_F(NSFileManagerTest, ListsAndReads) {
    folder.write("sub/inner", "x");
    folder.write(".dot", "");
    auto names = files().contentsOfDirectoryAtPath(folder.path());
    ASSERT_TRUE(names);
    std::sort(names->begin(), names->end());
    EXPECT_EQ(*names, (std::vector<std::string>{".dot", "sub"}));
    EXPECT_EQ(codeOf(files().contentsOfDirectoryAtPath(folder / "missing")), 260);
    EXPECT_EQ(codeOf(files().contentsAtPath(folder / "missing")), 260);
    EXPECT_EQ(codeOf(files().contentsAtPath(folder.path())), 512) << "a folder has no content";
    ::mkfifo((folder / "pipe").c_str(), 0600);
    EXPECT_EQ(codeOf(files().contentsAtPath(folder / "pipe")), 512) << "at once, though nobody writes";
    EXPECT_FALSE(content("/proc/self/status").empty()) << "a file that tells no size";
    EXPECT_EQ(codeOf(files().attributesOfItemAtPath(folder / "missing")), 260);
}

TEST_F(NSFileManagerTest, ReplacesContentInOneStep) {
    const std::string file = folder.write("file", "old");
    ::chmod(file.c_str(), 0640);
    EXPECT_EQ(codeOf(files().writeAtomically("new", file)), 0);
    EXPECT_EQ(content(file), "new");
    EXPECT_EQ(files().attributesOfItemAtPath(file)->posixPermissions, 0640U);
    EXPECT_EQ(codeOf(files().writeAtomically("x", folder / "missing/file")), 4);
    folder.write("taken/file", "");
    EXPECT_NE(codeOf(files().writeAtomically("x", folder / "taken")), 0) << "onto a folder";
    EXPECT_EQ(files().contentsOfDirectoryAtPath(folder.path())->size(), 2U) << "nothing temporary is left";
}

}  // namespace
}  // namespace zqcore
