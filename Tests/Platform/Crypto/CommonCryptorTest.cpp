#include "Platform/Crypto/CommonCryptor.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace zqcore {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Call {
    CCOperation operation = kCCDecrypt;
    std::size_t key = 32, vector = 16, input = 16, room = 32;
    CCOptions options = kCCOptionPKCS7Padding;
    CCCryptorStatus status = kCCSuccess;
};

TEST(CommonCryptorTest, TellsWhatIsWrongByThePlatformsNumbers) {
    const Call kCalls[] = {
        {.input = 15, .status = kCCAlignmentError},
        {.input = 0, .status = kCCAlignmentError},
        {.status = kCCDecodeError},
        {.input = 32, .room = 31, .status = kCCBufferTooSmall},
        {.operation = kCCEncrypt, .input = 16, .room = 31, .status = kCCBufferTooSmall},
        {.operation = kCCEncrypt, .input = 0, .room = 16},
        {.operation = kCCEncrypt, .key = 16, .status = kCCKeySizeError},
        {.operation = kCCEncrypt, .vector = 12, .status = kCCParamError},
        {.operation = kCCEncrypt, .options = CCOptions{0}, .status = kCCUnimplemented},
    };
    int index = 0;
    for (const auto& call : kCalls) {
        Bytes key(call.key, 1), vector(call.vector, 2), input(call.input, 3), output(call.room, 4);
        std::size_t moved = 99;
        EXPECT_EQ(CCCrypt(call.operation, kCCAlgorithmAES, call.options, key, vector, input, output, moved),
                  call.status)
            << "call " << index;
        EXPECT_EQ(moved, call.status == kCCSuccess ? 16U : 0U) << "call " << index;
        ++index;
    }
}

TEST(CommonCryptorTest, LeavesNoPlainBytesBehind) {
    Bytes key(32, 1), vector(16, 2), output(48, 4);
    // The first two blocks decrypt to something; only the padding of the last one is bad.
    std::size_t moved = 0;
    ASSERT_EQ(
        CCCrypt(kCCDecrypt, kCCAlgorithmAES, kCCOptionPKCS7Padding, key, vector, Bytes(48, 3), output, moved),
        kCCDecodeError);
    EXPECT_EQ(output, Bytes(48, 0));
}

}  // namespace
}  // namespace zqcore
