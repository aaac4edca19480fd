#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Digests, message authentication codes, and a cipher of one text in and one text out.
///
///     const auto cipherText = ZQCrypto::aesCBCEncrypt("text", "key");            // optional
///     const auto plainText = ZQCrypto::aesCBCDecrypt(cipherText->base64(), "key");
///     plainText->utf8();                                                        // "text"
///
/// The cipher is AES-256-CBC with PKCS#7 padding. Key and initialisation vector are bytes 0 to 31 and 32 to
/// 47 of the SHA-384 of the caller's key, which may have any length. No salt, no randomness, no header and no
/// authentication: equal input gives equal output. Programs that exchange such texts rely on exactly this.
///
/// Texts count as their UTF-8 bytes; a text that isn't UTF-8 gives an absent result.
/// Threads: pure functions, any thread. Failure: an absent result; a cipher that fails also logs one line at
/// error level. Digests and HMACs have no failure of their own.
class ZQ_EXPORT ZQCrypto final {
  public:
    /// The bytes of a result, and their forms as text, which are made anew on each call. Immutable.
    class ZQ_EXPORT Result final {
      public:
        explicit Result(Data data) noexcept : data_(std::move(data)) {}

        [[nodiscard]] const Data& data() const noexcept { return data_; }
        /// The bytes as text; absent if they aren't UTF-8.
        [[nodiscard]] std::optional<std::string> utf8() const;
        /// RFC 4648 section 4, with `=` padding and no line breaks.
        [[nodiscard]] std::string base64() const;
        /// Two digits a byte.
        [[nodiscard]] std::string hexLower() const;
        [[nodiscard]] std::string hexUpper() const;

      private:
        Data data_;
    };

    ZQCrypto() = delete;

    // Digests: 16, 20, 32, 48 and 64 bytes.
    [[nodiscard]] static std::optional<Result> md5(std::string_view string);
    [[nodiscard]] static Result md5(const Data& data);
    [[nodiscard]] static std::optional<Result> sha1(std::string_view string);
    [[nodiscard]] static Result sha1(const Data& data);
    [[nodiscard]] static std::optional<Result> sha256(std::string_view string);
    [[nodiscard]] static Result sha256(const Data& data);
    [[nodiscard]] static std::optional<Result> sha384(std::string_view string);
    /// Present on every path, as is that of `sha512`.
    [[nodiscard]] static std::optional<Result> sha384(const Data& data);
    [[nodiscard]] static std::optional<Result> sha512(std::string_view string);
    [[nodiscard]] static std::optional<Result> sha512(const Data& data);

    // RFC 2104. A key may have any length, also none; one longer than the digest's block is hashed first.
    [[nodiscard]] static std::optional<Result> hmacMD5(std::string_view string, std::string_view keyString);
    [[nodiscard]] static Result hmacMD5(const Data& data, const Data& keyData);
    [[nodiscard]] static std::optional<Result> hmacSHA1(std::string_view string, std::string_view keyString);
    [[nodiscard]] static Result hmacSHA1(const Data& data, const Data& keyData);
    [[nodiscard]] static std::optional<Result> hmacSHA256(std::string_view string,
                                                          std::string_view keyString);
    [[nodiscard]] static Result hmacSHA256(const Data& data, const Data& keyData);
    [[nodiscard]] static std::optional<Result> hmacSHA384(std::string_view string,
                                                          std::string_view keyString);
    [[nodiscard]] static Result hmacSHA384(const Data& data, const Data& keyData);
    [[nodiscard]] static std::optional<Result> hmacSHA512(std::string_view string,
                                                          std::string_view keyString);
    [[nodiscard]] static Result hmacSHA512(const Data& data, const Data& keyData);

    /// The raw cipher text; `base64()` of it is what travels. Empty input gives an absent result, silently.
    [[nodiscard]] static std::optional<Result> aesCBCEncrypt(std::string_view string,
                                                             std::string_view keyString);
    [[nodiscard]] static std::optional<Result> aesCBCEncrypt(const Data& data, const Data& keyData);

    /// The plain bytes; `utf8()` of them is the text. `base64` may hold blanks and line ends. Text that is no
    /// base64 and empty input give an absent result, silently. A wrong key commonly gives an absent result,
    /// and sometimes wrong bytes, since nothing authenticates them.
    [[nodiscard]] static std::optional<Result> aesCBCDecrypt(std::string_view base64,
                                                             std::string_view keyString);
    [[nodiscard]] static std::optional<Result> aesCBCDecrypt(const Data& data, const Data& keyData);
};

/// `hexLower` of the text's MD5; absent if the text isn't UTF-8. Any thread.
[[nodiscard]] ZQ_EXPORT std::optional<std::string> zq_md5HexLower(std::string_view string);
/// `hexLower` of the text's SHA-256; absent if the text isn't UTF-8. Any thread.
[[nodiscard]] ZQ_EXPORT std::optional<std::string> zq_sha256HexLower(std::string_view string);

}  // namespace zqcore
