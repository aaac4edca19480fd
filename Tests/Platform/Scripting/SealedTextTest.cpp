#include "Platform/Scripting/Linux/SealedText.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <string_view>

namespace zqcore::platform {
namespace {

TEST(SealedTextTest, OnlySealedFilesWithASendableTextAreRead) {
    const auto file = [](std::string_view bytes, int seals) {
        FileDescriptor made(::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING));
        EXPECT_EQ(::write(made.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        EXPECT_EQ(::fcntl(made.get(), F_ADD_SEALS, seals), 0);
        return made;
    };
    constexpr int kAll = F_SEAL_WRITE | F_SEAL_SHRINK | F_SEAL_GROW;
    EXPECT_EQ(readSealedText(makeSealedText("你好")), "你好");
    EXPECT_EQ(readSealedText(file("", kAll)), "");
    for (const int seals :
         {0, F_SEAL_WRITE, kAll & ~F_SEAL_WRITE, kAll & ~F_SEAL_SHRINK, kAll & ~F_SEAL_GROW})
        EXPECT_EQ(readSealedText(file("text", seals)), std::unexpected("the file isn't sealed")) << seals;
    EXPECT_FALSE(readSealedText(file(std::string_view("a\0b", 3), kAll)));
    EXPECT_FALSE(readSealedText(file("\xFF", kAll)));

    FileDescriptor large(::memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    ASSERT_EQ(::ftruncate(large.get(), static_cast<off_t>(kLargestText) + 1), 0);
    ASSERT_EQ(::fcntl(large.get(), F_ADD_SEALS, kAll), 0);
    EXPECT_EQ(readSealedText(large), std::unexpected("the text is too large"));

    std::array<int, 2> pipe{};
    ASSERT_EQ(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const FileDescriptor ends[] = {FileDescriptor(pipe[0]), FileDescriptor(pipe[1])};
    const FileDescriptor none;
    const FileDescriptor folder(::open("/", O_RDONLY | O_CLOEXEC));
    for (const FileDescriptor* other : {&ends[0], &none, &folder})
        EXPECT_EQ(readSealedText(*other), std::unexpected("the file isn't sealed")) << "and nothing blocks";
}

}  // namespace
}  // namespace zqcore::platform
