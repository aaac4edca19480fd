#include "Platform/Foundation/NSURL.h"

#include <gtest/gtest.h>

#include "TestKit/ScratchFolder.h"

namespace zqcore::platform {
namespace {

TEST(NSURLTest, PathsComeBackFromFileURLs) {
    const struct {
        std::string path, text;
    } cases[] = {
        {"/no/where", "file:///no/where"},
        {"/a b/%20/\u4E2D", "file:///a%20b/%2520/%E4%B8%AD"},
        {"/a?b#c;d", "file:///a%3Fb%23c%3Bd"},
        {"/a&b=c+d,e:f@g!h$i'(j)*", "file:///a&b=c+d,e:f@g!h$i'(j)*"},
    };
    for (const auto& [path, text] : cases) {
        EXPECT_EQ(NSURL::fileURLWithPath(path).description(), text);
        EXPECT_EQ(NSURL::fileURLWithPath(path).path(), path);
    }
}

TEST(NSURLTest, AFolderHasASlashThatItsPathHasNot) {
    const testkit::ScratchFolder folder;
    const auto url = NSURL::fileURLWithPath(folder.path());
    EXPECT_TRUE(url.description().ends_with('/'));
    EXPECT_EQ(url.path(), folder.path());
    EXPECT_EQ(NSURL::fileURLWithPath("/").description(), "file:///");
    EXPECT_EQ(NSURL::fileURLWithPath("/").path(), "/");
}

TEST(NSURLTest, OtherTextsHaveThePathThatTheyHave) {
    EXPECT_EQ(NSURL("file://localhost/a%20b//").path(), "/a b");
    EXPECT_EQ(NSURL("http://host").path(), "");
    EXPECT_EQ(NSURL("file:///a%2").path(), "/a%2");
    EXPECT_EQ(NSURL("file:///a%zz").path(), "/a%zz");
    EXPECT_EQ(NSURL("").path(), "");
}

}  // namespace
}  // namespace zqcore::platform
