#include "Platform/Crypto/CryptoKit.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <array>
#include <string>

#include "Platform/Crypto/Linux/EvpHandles.h"

namespace zqcore::platform {
namespace {

using Bytes = CryptoKit::Bytes;

constexpr std::size_t kLongestDigest = 64;
constexpr std::size_t kLongestBlock = 128;

struct Algorithm {
    const char* name;
    std::size_t block;
};
constexpr std::array<Algorithm, 5> kAlgorithms{
    {{"MD5", 64}, {"SHA1", 64}, {"SHA256", 64}, {"SHA384", 128}, {"SHA512", 128}}};

// Looking an algorithm up costs more than a short digest, so each is fetched once for the process and, since
// other statics may still use it, never freed.
template <HashFunction Function>
const EVP_MD* fetched() {
    static const EVP_MD* const digest = [] {
        keepLibcryptoToTheEnd();
        return EVP_MD_fetch(nullptr, kAlgorithms[static_cast<std::size_t>(Function)].name, nullptr);
    }();
    return digest;
}

const EVP_MD* algorithm(HashFunction function) {
    switch (function) {
        case HashFunction::md5:
            return fetched<HashFunction::md5>();
        case HashFunction::sha1:
            return fetched<HashFunction::sha1>();
        case HashFunction::sha256:
            return fetched<HashFunction::sha256>();
        case HashFunction::sha384:
            return fetched<HashFunction::sha384>();
        case HashFunction::sha512:
            return fetched<HashFunction::sha512>();
    }
    return nullptr;
}

// One context for each function: a context that changes its algorithm gives up its state and makes a new one.
EVP_MD_CTX* contextFor(HashFunction function) {
    return threadContext<DigestContext, kAlgorithms.size()>(static_cast<std::size_t>(function),
                                                            EVP_MD_CTX_new);
}

/// The digest of `first` and `second` in a row.
bool digestOf(EVP_MD_CTX* context, const EVP_MD* digest, Bytes first, Bytes second, std::uint8_t* output) {
    return EVP_DigestInit_ex2(context, digest, nullptr) == 1 &&
           EVP_DigestUpdate(context, first.data(), first.size()) == 1 &&
           EVP_DigestUpdate(context, second.data(), second.size()) == 1 &&
           EVP_DigestFinal_ex(context, output, nullptr) == 1;
}

bool hashInto(HashFunction function, Bytes bytes, std::uint8_t* output) {
    auto* context = contextFor(function);
    const auto* digest = algorithm(function);
    return context && digest && EVP_DigestInit_ex2(context, digest, nullptr) == 1 &&
           EVP_DigestUpdate(context, bytes.data(), bytes.size()) == 1 &&
           EVP_DigestFinal_ex(context, output, nullptr) == 1;
}

/// HMAC from two digests. The library's own HMAC takes twice as long for short texts, since it copies and
/// frees a context for each key.
bool codeInto(HashFunction function, Bytes bytes, Bytes key, std::uint8_t* output) {
    auto* context = contextFor(function);
    const auto* digest = algorithm(function);
    if (!context || !digest) return false;
    const std::size_t block = kAlgorithms[static_cast<std::size_t>(function)].block;
    const std::size_t length = digestLength(function);
    SecretBytes<kLongestBlock> padded;
    const auto pad = padded.bytes().first(block);
    if (key.size() > block) {
        if (!hashInto(function, key, pad.data())) return false;
    } else {
        std::ranges::copy(key, pad.begin());
    }
    for (auto& byte : pad) byte ^= 0x36U;
    SecretBytes<kLongestDigest> inner;
    if (!digestOf(context, digest, pad, bytes, inner.bytes().data())) return false;
    for (auto& byte : pad) byte ^= 0x36U ^ 0x5CU;
    return digestOf(context, digest, pad, inner.bytes().first(length), output);
}

/// A buffer of the digest's length that `produce` fills.
template <class Produce>
Data digestResult(HashFunction function, Produce produce) {
    const std::size_t length = digestLength(function);
    std::string bytes;
    // The size handed to the callable may be the whole capacity.
    bytes.resize_and_overwrite(length, [&](char* output, std::size_t) {
        return produce(reinterpret_cast<std::uint8_t*>(output)) ? length : 0;
    });
    return Data(std::move(bytes));
}

}  // namespace

Data CryptoKit::hash(HashFunction function, Bytes bytes) {
    return digestResult(function, [&](std::uint8_t* output) { return hashInto(function, bytes, output); });
}

bool CryptoKit::hashSecret(HashFunction function, Bytes secret, std::span<std::uint8_t> digest) {
    if (digest.size() != digestLength(function)) return false;
    const bool done = hashInto(function, secret, digest.data());
    // The context still holds the last block; resetting it clears that.
    if (auto* context = contextFor(function)) EVP_MD_CTX_reset(context);
    return done;
}

Data CryptoKit::authenticationCode(HashFunction function, Bytes bytes, Bytes key) {
    auto result =
        digestResult(function, [&](std::uint8_t* output) { return codeInto(function, bytes, key, output); });
    if (auto* context = contextFor(function)) EVP_MD_CTX_reset(context);
    return result;
}

void wipe(std::span<std::uint8_t> bytes) noexcept { OPENSSL_cleanse(bytes.data(), bytes.size()); }

}  // namespace zqcore::platform
