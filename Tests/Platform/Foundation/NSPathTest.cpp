#include "Platform/Foundation/NSPath.h"

#include <gtest/gtest.h>

namespace zqcore {
namespace {

TEST(NSPathTest, TakesPathsApart) {
    struct Case {
        std::string_view path, last, deletingLast, extension, deletingExtension;
    };
    constexpr Case cases[] = {
        {"/tmp/a.tiff", "a.tiff", "/tmp", "tiff", "/tmp/a"},
        {"/tmp/lock/", "lock", "/tmp", "", "/tmp/lock"},
        {"/tmp/", "tmp", "/", "", "/tmp"},
        {"/tmp", "tmp", "/", "", "/tmp"},
        {"/", "/", "/", "", "/"},
        {"//", "/", "/", "", "/"},
        {"", "", "", "", ""},
        {"a.tiff", "a.tiff", "", "tiff", "a"},
        {"a///", "a", "", "", "a"},
        {"a//b/c", "c", "a/b", "", "a/b/c"},
        {"b.bundle/", "b.bundle", "", "bundle", "b"},
        {"s..tiff", "s..tiff", "", "tiff", "s."},
        {".tiff", ".tiff", "", "", ".tiff"},
        {".a.tiff", ".a.tiff", "", "tiff", ".a"},
        {"a.", "a.", "", "", "a."},
        {"..", "..", "", "", ".."},
        {"a.b/c", "c", "a.b", "", "a.b/c"},
        {"n.a b", "n.a b", "", "", "n.a b"},
        {"/d/.profile", ".profile", "/d", "", "/d/.profile"},
        {"/d/a.txt/", "a.txt", "/d", "txt", "/d/a"},
    };
    for (const auto& [path, last, deletingLast, extension, deletingExtension] : cases) {
        EXPECT_EQ(lastPathComponent(path), last) << path;
        EXPECT_EQ(stringByDeletingLastPathComponent(path), deletingLast) << path;
        EXPECT_EQ(pathExtension(path), extension) << path;
        EXPECT_EQ(stringByDeletingPathExtension(path), deletingExtension) << path;
    }
}

TEST(NSPathTest, JoinsPathsWithOneSlash) {
    struct Case {
        std::string_view path, component, joined;
    };
    constexpr Case cases[] = {
        {"/tmp", "x", "/tmp/x"},
        {"/tmp/", "/x", "/tmp/x"},
        {"/", "x", "/x"},
        {"", "x", "x"},
        {"", "/x", "/x"},
        {"a", "", "a"},
        {"a", "/", "a"},
        {"a/", "b/", "a/b"},
        {"/a", "../b", "/a/../b"},
        {"", "", ""},
        {"/", "", "/"},
        {"a//b", "//c//d//", "a/b/c/d"},
    };
    for (const auto& [path, component, joined] : cases) {
        EXPECT_EQ(stringByAppendingPathComponent(path, component), joined) << path << " + " << component;
    }
}

}  // namespace
}  // namespace zqcore
