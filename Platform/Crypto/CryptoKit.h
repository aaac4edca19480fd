#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The digests that the platform knows.
enum class HashFunction : std::uint8_t { md5, sha1, sha256, sha384, sha512 };

/// How many bytes a digest of `function` has (RFC 1321, FIPS 180-4).
[[nodiscard]] constexpr std::size_t digestLength(HashFunction function) noexcept {
    constexpr std::size_t lengths[] = {16, 20, 32, 48, 64};
    return lengths[static_cast<std::size_t>(function)];
}

/// Digests and message authentication codes.
/// Threads: any, at the same time; each keeps contexts of its own, so that a call allocates nothing but its
/// result. Failure: an empty result, and only where the cryptographic library can't serve at all (MD5 may be
/// forbidden by the machine's policy).
class ZQ_EXPORT CryptoKit final {
  public:
    using Bytes = std::span<const std::uint8_t>;

    CryptoKit() = delete;

    /// The digest of `bytes`, in one pass.
    [[nodiscard]] static Data hash(HashFunction function, Bytes bytes);

    /// The same for bytes that must leave no trace: the digest goes to `digest`, which has exactly its length
    /// and which the caller wipes, and the working state is cleared. False if it failed.
    [[nodiscard]] static bool hashSecret(HashFunction function, Bytes secret, std::span<std::uint8_t> digest);

    /// HMAC (RFC 2104) of `bytes`. The key may have any length, also none. What was derived from it is wiped.
    [[nodiscard]] static Data authenticationCode(HashFunction function, Bytes bytes, Bytes key);
};

/// Overwrites `bytes` with zeros in a way that no optimiser removes.
ZQ_EXPORT void wipe(std::span<std::uint8_t> bytes) noexcept;

/// A buffer for key material, wiped when it goes.
template <std::size_t Size>
class SecretBytes final {
  public:
    SecretBytes() = default;
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;
    ~SecretBytes() { wipe(bytes_); }

    [[nodiscard]] std::span<std::uint8_t, Size> bytes() noexcept { return bytes_; }

  private:
    std::uint8_t bytes_[Size] = {};
};

}  // namespace zqcore::platform
