#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

enum CCOperation : std::uint32_t { kCCEncrypt = 0, kCCDecrypt = 1 };
enum CCAlgorithm : std::uint32_t { kCCAlgorithmAES = 0 };
enum CCOptions : std::uint32_t { kCCOptionPKCS7Padding = 1 };

/// Zero or one of the platform's negative numbers.
using CCCryptorStatus = std::int32_t;
inline constexpr CCCryptorStatus kCCSuccess = 0;
inline constexpr CCCryptorStatus kCCParamError = -4300;
inline constexpr CCCryptorStatus kCCBufferTooSmall = -4301;
inline constexpr CCCryptorStatus kCCAlignmentError = -4303;
inline constexpr CCCryptorStatus kCCDecodeError = -4304;
inline constexpr CCCryptorStatus kCCUnimplemented = -4305;
inline constexpr CCCryptorStatus kCCUnspecifiedError = -4308;
inline constexpr CCCryptorStatus kCCKeySizeError = -4310;

inline constexpr std::size_t kCCBlockSizeAES128 = 16;
inline constexpr std::size_t kCCKeySizeAES256 = 32;

/// Encrypts or decrypts in one call: AES with a key of 256 bits in CBC mode (NIST SP 800-38A) and the padding
/// of RFC 5652 section 6.3. `dataOut` must not overlap `dataIn` and needs room for the padded length when
/// encrypting, for the input's length when decrypting; `dataOutMoved` is set to the bytes produced.
/// Threads: any, at the same time. The key schedule is wiped before the call returns.
/// Failure: the status, and no bytes are to be used. -4303 for cipher text of no whole blocks, -4304 for bad
/// padding, which is what a wrong key commonly ends in.
[[nodiscard]] ZQ_EXPORT CCCryptorStatus CCCrypt(CCOperation operation, CCAlgorithm algorithm,
                                                CCOptions options, std::span<const std::uint8_t> key,
                                                std::span<const std::uint8_t> initialVector,
                                                std::span<const std::uint8_t> dataIn,
                                                std::span<std::uint8_t> dataOut, std::size_t& dataOutMoved);

}  // namespace zqcore::platform
