#include "Classes/Core/Extension/NSFileManagerExtension.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "TestKit/LogCapture.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

using testkit::LogCapture;
using testkit::ScratchFolder;

class FileTools : public testing::Test {
  protected:
    const NSFileManager& manager_ = NSFileManager::defaultManager();
    ScratchFolder folder_;
    LogCapture log_;
};

TEST_F(FileTools, TellsFilesFromFolders) {
    const std::string file = folder_.write("a.txt", "text");
    const std::string missing = folder_ / "missing";
    EXPECT_TRUE(zq_fileExists(manager_, file));
    EXPECT_TRUE(zq_directoryExists(manager_, folder_.path()));
    EXPECT_FALSE(zq_fileExists(manager_, missing));
    EXPECT_FALSE(zq_directoryExists(manager_, missing));
    EXPECT_TRUE(log_.silent());
    EXPECT_FALSE(zq_fileExists(manager_, folder_.path()));
    EXPECT_FALSE(zq_directoryExists(manager_, file));
    EXPECT_EQ(log_.messages(LogCapture::error),
              (std::vector<std::string>{"文件存在，但该路径是文件夹类型 " + folder_.path(),
                                        "文件存在，但该路径是文件类型 " + file}));
}

TEST_F(FileTools, MakesAFolderUnlessAFileIsInTheWay) {
    EXPECT_TRUE(zq_createDirectoryIfNotExist(manager_, folder_ / "a/b/c"));
    EXPECT_TRUE(zq_createDirectoryIfNotExist(manager_, folder_ / "a/b/c"));
    EXPECT_TRUE(std::filesystem::is_directory(folder_ / "a/b/c"));
    EXPECT_TRUE(log_.silent());
    const std::string file = folder_.write("file", "");
    EXPECT_FALSE(zq_createDirectoryIfNotExist(manager_, file));
    EXPECT_TRUE(log_.has(LogCapture::error, "指定路径存在文件 " + file));
    EXPECT_FALSE(zq_createDirectoryIfNotExist(manager_, file + "/below"));
    EXPECT_TRUE(
        log_.contains("创建文件夹失败 path:" + file + "/below; error: Error Domain=NSCocoaErrorDomain"));
}

TEST_F(FileTools, KnowsTheTypeOfAFileByItsExtension) {
    const auto conforms = [&](std::string_view name, std::vector<std::string> types) {
        return zq_fileUTType(manager_, NSURL::fileURLWithPath(folder_ / name), types);
    };
    folder_.write("picture 图.PNG", "");
    folder_.write("a.unknown-kind", "");
    folder_.write("tool", "", 0755);
    std::filesystem::create_symlink(folder_ / "tool", folder_ / "link.png");
    EXPECT_TRUE(conforms("picture 图.PNG", {"public.movie", "public.image"}));
    for (const char* type : {"public.png", "public.image", "PUBLIC.Data", "public.item", "public.content"}) {
        EXPECT_TRUE(conforms("picture 图.PNG", {type})) << type;
    }
    EXPECT_FALSE(conforms("picture 图.PNG", {"public.jpeg", "public.text"}));
    EXPECT_TRUE(conforms("a.unknown-kind", {"public.data"}));
    EXPECT_FALSE(conforms("a.unknown-kind", {"public.text"}));
    EXPECT_TRUE(conforms("tool", {"public.executable"}));
    EXPECT_TRUE(conforms("", {"public.folder"}));
    EXPECT_FALSE(conforms("link.png", {"public.image"}));
    EXPECT_FALSE(conforms("picture 图.PNG", {}));
    EXPECT_FALSE(zq_fileUTType(manager_, NSURL(""), {"public.item"}));
    EXPECT_TRUE(log_.silent());
    EXPECT_FALSE(conforms("missing.png", {"public.image"}));
    EXPECT_FALSE(zq_fileUTType(manager_, NSURL("https://example.com/a.png"), {"public.image"}));
    EXPECT_EQ(log_.messages(LogCapture::error).size(), 2U);
    EXPECT_TRUE(log_.contains("获取文件 UTI 类型错误; error=Error Domain=NSCocoaErrorDomain Code=260"));
}

TEST_F(FileTools, ReadsAnObjectFromAFileOrTellsWhyNot) {
    const std::string good = folder_.write("good.json", R"({"a":{"b":[1,true]}})");
    const auto dictionary = zq_dictionary(manager_, good);
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(dictionary->find("a")->asDictionary()->find("b")->asArray()->at(1), Value(true));
    EXPECT_TRUE(log_.silent());

    const std::string broken = folder_.write("broken.json", R"({"a":1,})");
    const std::string array = folder_.write("array.json", "[]");
    struct Case {
        std::string path;
        std::string line;
    };
    const Case cases[] = {
        {"", "文件路径为空 "},
        {folder_ / "none", "找不到 JSON 文件 " + (folder_ / "none")},
        {folder_.path(), "读取 JSON 数据失败 " + folder_.path()},
        {broken, "JSON 数据序列化失败 " + broken},
        {array, "JSON 数据序列化结果不是 NSDictionary " + Value(Value::Array{}).description()}};
    for (const auto& [path, line] : cases) {
        log_.clear();
        EXPECT_FALSE(zq_dictionary(manager_, path));
        EXPECT_EQ(log_.messages(LogCapture::error), std::vector<std::string>{line});
    }
}

TEST_F(FileTools, ReadsTextOrTellsWhyNot) {
    EXPECT_EQ(zq_string(manager_, folder_.write("a", "\xEF\xBB\xBF文")), "\xEF\xBB\xBF文")
        << "the mark stays";
    EXPECT_EQ(zq_string(manager_, folder_.write("b", "")), "");
    EXPECT_TRUE(log_.silent());
    EXPECT_FALSE(zq_string(manager_, ""));
    EXPECT_TRUE(log_.has(LogCapture::error, "文件路径为空 "));
    EXPECT_FALSE(zq_string(manager_, folder_ / "none"));
    EXPECT_TRUE(log_.has(LogCapture::error, "找不到文件 " + (folder_ / "none")));
    const std::string binary = folder_.write("c", "good\xC0\xAF");
    EXPECT_FALSE(zq_string(manager_, binary));
    EXPECT_TRUE(log_.contains("文件读取失败: path=" + binary + "; error=Error Domain=NSCocoaErrorDomain"));
}

TEST_F(FileTools, FindsAFreeName) {
    struct Case {
        std::vector<std::string> taken;
        std::string path;
        std::string free;
    };
    const Case cases[] = {{{}, "/new.txt", "/new.txt"},
                          {{"/a.txt"}, "/a.txt", "/a(1).txt"},
                          {{"/b.txt", "/b(1).txt"}, "/b.txt", "/b(2).txt"},
                          {{"/x1.2"}, "/x1.2", "/x1.2(1)"},
                          {{"/a.b-c"}, "/a.b-c", "/a.b-c(1)"},
                          {{"/plain"}, "/plain", "/plain(1)"},
                          {{"/.profile"}, "/.profile", "/.profile(1)"},
                          {{"/v.7z"}, "/v.7z", "/v(1).7z"},
                          {{"/d.x/file"}, "/d.x/", "/d(1).x"}};
    for (const auto& [taken, path, free] : cases) {
        for (const std::string& name : taken) folder_.write(name, "");
        EXPECT_EQ(zq_suitablePath(manager_, folder_.path() + path), folder_.path() + free) << path;
    }
    EXPECT_TRUE(log_.silent());
    EXPECT_FALSE(zq_suitablePath(manager_, ""));
    EXPECT_TRUE(log_.has(LogCapture::error, "文件路径为空 "));
}

TEST_F(FileTools, AddsUpSizes) {
    const std::string file = folder_.write("top/a", "12345");
    folder_.write("top/sub/b", "123");
    folder_.write("top/sub/deep/c", "12");
    folder_.write("outside/d", "1234567");
    EXPECT_EQ(zq_fileSize(manager_, file), 5);
    EXPECT_EQ(zq_fileSize(manager_, folder_ / "none"), 0);
    EXPECT_EQ(zq_folderSize(manager_, file), 0);
    EXPECT_EQ(zq_folderSize(manager_, folder_ / "none"), 0);
    EXPECT_EQ(zq_folderSize(manager_, folder_ / "top"), 10);

    std::vector<std::string> seen;
    const auto withoutDeep = [&](const std::string& path) {
        seen.push_back(path);
        return path != folder_ / "top/sub/deep";
    };
    EXPECT_EQ(zq_folderSize(manager_, folder_ / "top", withoutDeep), 8);
    std::ranges::sort(seen);
    EXPECT_EQ(seen, (std::vector<std::string>{folder_ / "top/a", folder_ / "top/sub", folder_ / "top/sub/b",
                                              folder_ / "top/sub/deep"}))
        << "full paths, and nothing of a folder that was refused";

    std::filesystem::create_directory_symlink(folder_ / "top", folder_ / "top/sub/circle");
    std::filesystem::create_directory_symlink(folder_ / "outside", folder_ / "top/other");
    EXPECT_EQ(zq_folderSize(manager_, folder_ / "top"), 17) << "a circle ends, a linked folder counts";
    std::filesystem::create_directory_symlink(folder_ / "outside", folder_ / "top/again");
    const auto all = [](const std::string&) { return true; };
    EXPECT_EQ(zq_folderSize(manager_, folder_ / "top"), 24) << "once for each link";
    EXPECT_EQ(zq_folderSize(manager_, folder_ / "top", all), 24);
    EXPECT_TRUE(log_.silent());
}

}  // namespace
}  // namespace zqcore
