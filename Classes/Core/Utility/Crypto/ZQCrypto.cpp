#include "Classes/Core/Utility/Crypto/ZQCrypto.h"

#include <cstdint>
#include <source_location>
#include <span>

#include "Classes/Core/Utility/ZQConvert.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Classes/Log/Log/ZQManagerForLog.h"
#include "Platform/Crypto/CommonCryptor.h"
#include "Platform/Crypto/CryptoKit.h"
#include "Platform/Foundation/Text/Utf8.h"
#include "Platform/Lumberjack/DDLog.h"

namespace zqcore {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Result = ZQCrypto::Result;

Bytes bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::optional<Result> hashed(HashFunction function, std::string_view string) {
    if (!isValidUTF8(string)) return std::nullopt;
    return Result(CryptoKit::hash(function, bytesOf(string)));
}

Result hashed(HashFunction function, const Data& data) {
    return Result(CryptoKit::hash(function, data.bytes()));
}

std::optional<Result> authenticated(HashFunction function, std::string_view string,
                                    std::string_view keyString) {
    if (!isValidUTF8(string) || !isValidUTF8(keyString)) return std::nullopt;
    return Result(CryptoKit::authenticationCode(function, bytesOf(string), bytesOf(keyString)));
}

Result authenticated(HashFunction function, const Data& data, const Data& keyData) {
    return Result(CryptoKit::authenticationCode(function, data.bytes(), keyData.bytes()));
}

/// One line at error level that carries the failed operation's own name, not that of the helper it runs in.
void logFailure(CCOperation operation, CCCryptorStatus status,
                const std::source_location& where = std::source_location::current()) {
    const auto level = logging::level();
    if ((level & logging::kFlagError) == 0) return;
    const bool encrypts = operation == kCCEncrypt;
    ZQManagerForLog::sharedDDLog()->log(
        ZQDefaultLogAsyncEnabled.load(std::memory_order_relaxed) != 0, level, logging::kFlagError, 0,
        where.file_name(), encrypts ? "aesCBCEncrypt(data:keyData:)" : "aesCBCDecrypt(data:keyData:)",
        where.line(), nullptr, (encrypts ? "Encrypt Error! " : "Decrypt Error! ") + std::to_string(status));
}

std::optional<Result> crypt(CCOperation operation, Bytes input, Bytes key) {
    if (input.empty()) return std::nullopt;
    constexpr std::size_t kDerivedLength = kCCKeySizeAES256 + kCCBlockSizeAES128;
    static_assert(kDerivedLength == digestLength(HashFunction::sha384));
    SecretBytes<kDerivedLength> derived;
    if (!CryptoKit::hashSecret(HashFunction::sha384, key, derived.bytes())) return std::nullopt;

    std::string output;
    CCCryptorStatus status = kCCSuccess;
    // Overwritten in place: clearing the buffer first would cost as much as decrypting into it.
    output.resize_and_overwrite(input.size() + kCCBlockSizeAES128, [&](char* buffer, std::size_t size) {
        std::size_t moved = 0;
        status =
            CCCrypt(operation, kCCAlgorithmAES, kCCOptionPKCS7Padding,
                    derived.bytes().first<kCCKeySizeAES256>(), derived.bytes().last<kCCBlockSizeAES128>(),
                    input, {reinterpret_cast<std::uint8_t*>(buffer), size}, moved);
        return moved;
    });
    if (status == kCCSuccess) return Result(Data(std::move(output)));
    logFailure(operation, status);
    return std::nullopt;
}

}  // namespace

std::optional<std::string> Result::utf8() const { return ZQConvert::utf8StringFromData(data_); }
std::string Result::base64() const { return ZQConvert::base64StringFromData(data_); }
std::string Result::hexLower() const { return ZQConvert::hexStringFromData(data_, true); }
std::string Result::hexUpper() const { return ZQConvert::hexStringFromData(data_, false); }

std::optional<Result> ZQCrypto::md5(std::string_view string) { return hashed(HashFunction::md5, string); }
Result ZQCrypto::md5(const Data& data) { return hashed(HashFunction::md5, data); }
std::optional<Result> ZQCrypto::sha1(std::string_view string) { return hashed(HashFunction::sha1, string); }
Result ZQCrypto::sha1(const Data& data) { return hashed(HashFunction::sha1, data); }
std::optional<Result> ZQCrypto::sha256(std::string_view string) {
    return hashed(HashFunction::sha256, string);
}
Result ZQCrypto::sha256(const Data& data) { return hashed(HashFunction::sha256, data); }
std::optional<Result> ZQCrypto::sha384(std::string_view string) {
    return hashed(HashFunction::sha384, string);
}
std::optional<Result> ZQCrypto::sha384(const Data& data) { return hashed(HashFunction::sha384, data); }
std::optional<Result> ZQCrypto::sha512(std::string_view string) {
    return hashed(HashFunction::sha512, string);
}
std::optional<Result> ZQCrypto::sha512(const Data& data) { return hashed(HashFunction::sha512, data); }

std::optional<Result> ZQCrypto::hmacMD5(std::string_view string, std::string_view keyString) {
    return authenticated(HashFunction::md5, string, keyString);
}
Result ZQCrypto::hmacMD5(const Data& data, const Data& keyData) {
    return authenticated(HashFunction::md5, data, keyData);
}
std::optional<Result> ZQCrypto::hmacSHA1(std::string_view string, std::string_view keyString) {
    return authenticated(HashFunction::sha1, string, keyString);
}
Result ZQCrypto::hmacSHA1(const Data& data, const Data& keyData) {
    return authenticated(HashFunction::sha1, data, keyData);
}
std::optional<Result> ZQCrypto::hmacSHA256(std::string_view string, std::string_view keyString) {
    return authenticated(HashFunction::sha256, string, keyString);
}
Result ZQCrypto::hmacSHA256(const Data& data, const Data& keyData) {
    return authenticated(HashFunction::sha256, data, keyData);
}
std::optional<Result> ZQCrypto::hmacSHA384(std::string_view string, std::string_view keyString) {
    return authenticated(HashFunction::sha384, string, keyString);
}
Result ZQCrypto::hmacSHA384(const Data& data, const Data& keyData) {
    return authenticated(HashFunction::sha384, data, keyData);
}
std::optional<Result> ZQCrypto::hmacSHA512(std::string_view string, std::string_view keyString) {
    return authenticated(HashFunction::sha512, string, keyString);
}
Result ZQCrypto::hmacSHA512(const Data& data, const Data& keyData) {
    return authenticated(HashFunction::sha512, data, keyData);
}

std::optional<Result> ZQCrypto::aesCBCEncrypt(std::string_view string, std::string_view keyString) {
    if (!isValidUTF8(string) || !isValidUTF8(keyString)) return std::nullopt;
    return crypt(kCCEncrypt, bytesOf(string), bytesOf(keyString));
}

std::optional<Result> ZQCrypto::aesCBCEncrypt(const Data& data, const Data& keyData) {
    return crypt(kCCEncrypt, data.bytes(), keyData.bytes());
}

std::optional<Result> ZQCrypto::aesCBCDecrypt(std::string_view base64, std::string_view keyString) {
    const auto cipherText = ZQConvert::dataFromBase64String(base64);
    if (!cipherText || !isValidUTF8(keyString)) return std::nullopt;
    return crypt(kCCDecrypt, cipherText->bytes(), bytesOf(keyString));
}

std::optional<Result> ZQCrypto::aesCBCDecrypt(const Data& data, const Data& keyData) {
    return crypt(kCCDecrypt, data.bytes(), keyData.bytes());
}

std::optional<std::string> zq_md5HexLower(std::string_view string) {
    const auto result = ZQCrypto::md5(string);
    return result ? std::optional(result->hexLower()) : std::nullopt;
}

std::optional<std::string> zq_sha256HexLower(std::string_view string) {
    const auto result = ZQCrypto::sha256(string);
    return result ? std::optional(result->hexLower()) : std::nullopt;
}

}  // namespace zqcore
