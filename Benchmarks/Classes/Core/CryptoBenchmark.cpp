// Peer: libcrypto called directly, algorithms fetched once and contexts kept, into a fresh buffer as any
// caller needs one.
#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "Classes/Core/Utility/Crypto/ZQCrypto.h"

namespace zqcore {
namespace {

using Bytes = std::unique_ptr<unsigned char[]>;

Data plain(std::size_t size) { return Data(std::string(size, 'x')); }
const Data& key() {
    static const Data bytes(std::string("a key of some thirty-two bytes.."));
    return bytes;
}

void finish(benchmark::State& state, std::size_t size) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

void sha256Ours(benchmark::State& state, std::size_t size) {
    const auto data = plain(size);
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::sha256(data));
    finish(state, size);
}

void sha256Libcrypto(benchmark::State& state, std::size_t size) {
    const auto data = plain(size);
    EVP_MD* const digest = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    EVP_MD_CTX* const context = EVP_MD_CTX_new();
    for (auto _ : state) {
        Bytes output(new unsigned char[32]);
        EVP_DigestInit_ex2(context, digest, nullptr);
        EVP_DigestUpdate(context, data.bytes().data(), data.size());
        EVP_DigestFinal_ex(context, output.get(), nullptr);
        benchmark::DoNotOptimize(output);
    }
    EVP_MD_CTX_free(context);
    EVP_MD_free(digest);
    finish(state, size);
}

void hmacOurs(benchmark::State& state, std::size_t size) {
    const auto data = plain(size);
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::hmacSHA256(data, key()));
    finish(state, size);
}

void hmacLibcrypto(benchmark::State& state, std::size_t size) {
    const auto data = plain(size);
    EVP_MAC* const mac = EVP_MAC_fetch(nullptr, "HMAC", nullptr);
    EVP_MAC_CTX* const context = EVP_MAC_CTX_new(mac);
    char name[] = "SHA256";
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name, 0),
                                     OSSL_PARAM_construct_end()};
    EVP_MAC_CTX_set_params(context, parameters);
    for (auto _ : state) {
        Bytes output(new unsigned char[32]);
        std::size_t length = 0;
        EVP_MAC_init(context, key().bytes().data(), key().size(), nullptr);
        EVP_MAC_update(context, data.bytes().data(), data.size());
        EVP_MAC_final(context, output.get(), &length, 32);
        benchmark::DoNotOptimize(output);
    }
    EVP_MAC_CTX_free(context);
    EVP_MAC_free(mac);
    finish(state, size);
}

void encryptOurs(benchmark::State& state, std::size_t size) {
    const auto data = plain(size);
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::aesCBCEncrypt(data, key()));
    finish(state, size);
}

void decryptOurs(benchmark::State& state, std::size_t size) {
    const auto data = ZQCrypto::aesCBCEncrypt(plain(size), key())->data();
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::aesCBCDecrypt(data, key()));
    finish(state, size);
}

/// The same scheme: the digest that key and vector come from, and the cipher.
void cryptByLibcrypto(benchmark::State& state, std::size_t size, const Data& data, bool encrypt) {
    EVP_MD* const digest = EVP_MD_fetch(nullptr, "SHA384", nullptr);
    EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-CBC", nullptr);
    EVP_MD_CTX* const digestContext = EVP_MD_CTX_new();
    EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
    for (auto _ : state) {
        Bytes output(new unsigned char[data.size() + 16]);
        unsigned char derived[48];
        EVP_DigestInit_ex2(digestContext, digest, nullptr);
        EVP_DigestUpdate(digestContext, key().bytes().data(), key().size());
        EVP_DigestFinal_ex(digestContext, derived, nullptr);
        int updated = 0;
        int finished = 0;
        EVP_CipherInit_ex2(context, cipher, derived, derived + 32, encrypt, nullptr);
        EVP_CipherUpdate(context, output.get(), &updated, data.bytes().data(), static_cast<int>(data.size()));
        EVP_CipherFinal_ex(context, output.get() + updated, &finished);
        benchmark::DoNotOptimize(output);
    }
    EVP_CIPHER_CTX_free(context);
    EVP_MD_CTX_free(digestContext);
    EVP_CIPHER_free(cipher);
    EVP_MD_free(digest);
    finish(state, size);
}

void encryptLibcrypto(benchmark::State& state, std::size_t size) {
    cryptByLibcrypto(state, size, plain(size), true);
}

void decryptLibcrypto(benchmark::State& state, std::size_t size) {
    cryptByLibcrypto(state, size, ZQCrypto::aesCBCEncrypt(plain(size), key())->data(), false);
}

const bool registered = [] {
    using Run = void (*)(benchmark::State&, std::size_t);
    const struct {
        const char* group;
        Run ours, libcrypto;
    } kRuns[] = {{"crypto/sha256", sha256Ours, sha256Libcrypto},
                 {"crypto/hmac", hmacOurs, hmacLibcrypto},
                 {"crypto/encrypt", encryptOurs, encryptLibcrypto},
                 {"crypto/decrypt", decryptOurs, decryptLibcrypto}};
    constexpr std::pair<const char*, std::size_t> kSizes[] = {{"64", 64}, {"4k", 4096}, {"4mb", 4 << 20}};
    for (const auto& [group, ours, libcrypto] : kRuns) {
        for (const auto& [name, size] : kSizes) {
            const auto full = std::string(group) + "/" + name;
            benchmark::RegisterBenchmark((full + "/ours").c_str(), ours, size);
            benchmark::RegisterBenchmark((full + "/libcrypto").c_str(), libcrypto, size);
        }
    }
    return true;
}();

}  // namespace
}  // namespace zqcore
