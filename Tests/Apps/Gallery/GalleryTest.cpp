#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Platform/Graphics/ImageCoding.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/ScratchFolder.h"

namespace {

using namespace zqcore;
using namespace zqcore::testkit;

struct Ended {
    int code = 0;
    std::vector<std::string> lines;
};

Ended gallery(std::vector<std::string> words) {
    words.insert(words.begin(), ZQ_TEST_APPS "/gallery");
    ChildProcess process(words);
    Ended ended;
    while (auto line = process.readLine()) ended.lines.push_back(*line);
    ended.code = process.wait();
    return ended;
}

/// How many colours a picture has, up to `most`.
std::size_t colours(const platform::PixelBuffer& pixels, std::size_t most) {
    std::set<std::uint32_t> seen;
    for (int y = 0; y < pixels.height(); ++y) {
        for (int x = 0; x < pixels.width() && seen.size() < most; ++x) seen.insert(pixels.row(y)[x]);
    }
    return seen.size();
}

bool same(const platform::PixelBuffer& a, const platform::PixelBuffer& b) {
    for (int y = 0; y < a.height(); ++y) {
        if (!std::equal(a.row(y), a.row(y) + a.width(), b.row(y))) return false;
    }
    return true;
}

TEST(GalleryTest, WritesEachPageLightAndDarkAtBothScales) {
    ::unsetenv("DISPLAY");
    const auto list = gallery({"--list"});
    ASSERT_EQ(list.code, 0);
    ASSERT_GE(list.lines.size(), 4U);

    const ScratchFolder folder;
    const auto written = gallery({"--headless", folder / "new/pictures"});
    ASSERT_EQ(written.code, 0);
    EXPECT_EQ(written.lines.size(), list.lines.size() * 4);

    std::map<std::string, platform::DecodedImage> pictures;
    for (const auto& path : written.lines)
        pictures[std::filesystem::path(path).stem()] = platform::decodeImage(contentOf(path));
    for (const auto& line : list.lines) {
        const std::string page = line.substr(0, line.find(' '));
        for (const int scale : {1, 2}) {
            const std::string ending = "@" + std::to_string(scale) + "x";
            const auto light = pictures[page + "-light" + ending].pixels;
            const auto dark = pictures[page + "-dark" + ending].pixels;
            ASSERT_TRUE(light && dark) << page << ending;
            for (const auto& picture : {light, dark}) {
                EXPECT_EQ(picture->width(), 760 * scale) << page;
                EXPECT_EQ(picture->height(), 520 * scale) << page;
                EXPECT_EQ(colours(*picture, 16), 16U) << page << " is all but empty";
            }
            EXPECT_FALSE(same(*light, *dark)) << page;
        }
    }
}

TEST(GalleryTest, TellsATipByTheClock) {
    const auto told = gallery({"--tell-tip"});
    EXPECT_EQ(told.code, 0);
    ASSERT_EQ(told.lines.size(), 7U);
    EXPECT_TRUE(told.lines[2].starts_with("  1.250 s  the tip is up")) << "a second after the pointer's rest";
    EXPECT_EQ(told.lines[3], "  1.250 s    line \"复制译文\", caps [⇧] [⌘] [C]");
    EXPECT_EQ(told.lines[4], "  1.250 s    line \"Copy the original\"");
    EXPECT_EQ(told.lines[6], "  3.250 s  the tip is gone") << "at once with the pointer";
}

TEST(GalleryTest, TellsByItsExitCodeWhatWentWrong) {
    ::unsetenv("DISPLAY");
    EXPECT_EQ(gallery({"--scale", "3"}).code, 2);
    EXPECT_EQ(gallery({}).code, 3) << "no display";
    EXPECT_EQ(gallery({"--page", "nothing"}).code, 2);
    EXPECT_EQ(gallery({"--for", "0"}).code, 2);
    EXPECT_EQ(gallery({"--headless"}).code, 2);
    const ScratchFolder folder;
    const auto file = folder.write("file", "no folder");
    EXPECT_EQ(gallery({"--headless", file, "--page", "layers"}).code, 5);
    EXPECT_EQ(gallery({"--help"}).code, 0);
}

}  // namespace
