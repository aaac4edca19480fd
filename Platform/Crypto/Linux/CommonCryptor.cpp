#include "Platform/Crypto/CommonCryptor.h"

#include <algorithm>
#include <optional>

#include "Platform/Crypto/CryptoKit.h"
#include "Platform/Crypto/Linux/EvpHandles.h"

namespace zqcore::platform {
namespace {

// The library counts in int; whole blocks at a time keep the stream in step.
constexpr std::size_t kLargestStep = std::size_t{1} << 30U;

const EVP_CIPHER* cipher() {
    static const EVP_CIPHER* const fetched = [] {
        keepLibcryptoToTheEnd();
        return EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr);
    }();
    return fetched;
}

/// The bytes and the place they go to; advances both.
bool update(EVP_CIPHER_CTX* context, std::span<const std::uint8_t> input, std::uint8_t*& output) {
    while (!input.empty()) {
        const auto step = std::min(input.size(), kLargestStep);
        int produced = 0;
        if (EVP_CipherUpdate(context, output, &produced, input.data(), static_cast<int>(step)) != 1) {
            return false;
        }
        output += produced;
        input = input.subspan(step);
    }
    return true;
}

/// How many bytes the plain text has without its padding; absent if that is no padding. Every byte of the
/// last block is looked at, so that the time doesn't tell how much of it was right.
std::optional<std::size_t> unpaddedLength(std::span<const std::uint8_t> plain) {
    const auto block = plain.last<kCCBlockSizeAES128>();
    const unsigned count = block.back();
    unsigned wrong = count < 1 || count > kCCBlockSizeAES128 ? 1 : 0;
    for (unsigned i = 0; i < kCCBlockSizeAES128; ++i) {
        const unsigned belongs = i + count >= kCCBlockSizeAES128 ? 0xFFU : 0U;
        wrong |= (block[i] ^ count) & belongs;
    }
    if (wrong != 0) return std::nullopt;
    return plain.size() - count;
}

CCCryptorStatus encrypt(EVP_CIPHER_CTX* context, std::span<const std::uint8_t> dataIn, std::uint8_t* dataOut,
                        std::size_t& dataOutMoved) {
    auto* output = dataOut;
    int produced = 0;
    if (!update(context, dataIn, output) || EVP_CipherFinal_ex(context, output, &produced) != 1) {
        return kCCUnspecifiedError;
    }
    dataOutMoved = static_cast<std::size_t>(output + produced - dataOut);
    return kCCSuccess;
}

/// The padding is judged here, since the library would leave its complaint in the thread's error queue, which
/// belongs to whoever else uses it. So the blocks go by the call that does nothing but decrypt them: the
/// streaming one keeps the last block back, to look for padding in it.
CCCryptorStatus decrypt(EVP_CIPHER_CTX* context, std::span<const std::uint8_t> dataIn, std::uint8_t* dataOut,
                        std::size_t& dataOutMoved) {
    auto* output = dataOut;
    for (auto input = dataIn; !input.empty();) {
        const auto step = std::min(input.size(), kLargestStep);
        if (EVP_Cipher(context, output, input.data(), static_cast<unsigned>(step)) <= 0) {
            return kCCUnspecifiedError;
        }
        output += step;
        input = input.subspan(step);
    }
    const auto length = unpaddedLength({dataOut, dataIn.size()});
    if (!length) return kCCDecodeError;
    dataOutMoved = *length;
    return kCCSuccess;
}

}  // namespace

CCCryptorStatus CCCrypt(CCOperation operation, CCAlgorithm algorithm, CCOptions options,
                        std::span<const std::uint8_t> key, std::span<const std::uint8_t> initialVector,
                        std::span<const std::uint8_t> dataIn, std::span<std::uint8_t> dataOut,
                        std::size_t& dataOutMoved) {
    dataOutMoved = 0;
    if (algorithm != kCCAlgorithmAES || options != kCCOptionPKCS7Padding) return kCCUnimplemented;
    if (key.size() != kCCKeySizeAES256) return kCCKeySizeError;
    if (initialVector.size() != kCCBlockSizeAES128) return kCCParamError;
    std::size_t room = dataIn.size();
    if (operation == kCCEncrypt) {
        room = (dataIn.size() / kCCBlockSizeAES128 + 1) * kCCBlockSizeAES128;
    } else if (dataIn.empty() || dataIn.size() % kCCBlockSizeAES128 != 0) {
        return kCCAlignmentError;
    }
    if (dataOut.size() < room) return kCCBufferTooSmall;
    auto* context = threadContext<CipherContext, 1>(0, EVP_CIPHER_CTX_new);
    if (!context || !cipher()) return kCCUnspecifiedError;

    CCCryptorStatus status = kCCUnspecifiedError;
    if (EVP_CipherInit_ex2(context, cipher(), key.data(), initialVector.data(), operation == kCCEncrypt,
                           nullptr) == 1) {
        status = (operation == kCCEncrypt ? encrypt : decrypt)(context, dataIn, dataOut.data(), dataOutMoved);
    }
    EVP_CIPHER_CTX_reset(context);
    if (status != kCCSuccess) wipe(dataOut.first(room));
    return status;
}

}  // namespace zqcore::platform
