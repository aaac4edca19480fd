// Peer: libcrypto called directly, algorithms fetched once and contexts kept, into a fresh buffer as any
// caller needs one.
#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>

#include <cstdint>
#include <memory>
#include <string>

#include "Classes/Core/Utility/Crypto/ZQCrypto.h"

namespace zqcore {
namespace {

using Bytes = std::unique_ptr<unsigned char[]>;

Data plain(const benchmark::State& state) {
    return Data(std::string(static_cast<std::size_t>(state.range(0)), 'x'));
}
const Data& key() {
    static const Data bytes(std::string("a key of some thirty-two bytes.."));
    return bytes;
}

void finish(benchmark::State& state) { state.SetBytesProcessed(state.iterations() * state.range(0)); }

void BM_SHA256_Ours(benchmark::State& state) {
    const auto data = plain(state);
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::sha256(data));
    finish(state);
}
BENCHMARK(BM_SHA256_Ours)->Arg(64)->Arg(4096)->Arg(4 << 20);

void BM_SHA256_Libcrypto(benchmark::State& state) {
    const auto data = plain(state);
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
    finish(state);
}
BENCHMARK(BM_SHA256_Libcrypto)->Arg(64)->Arg(4096)->Arg(4 << 20);

void BM_HMACSHA256_Ours(benchmark::State& state) {
    const auto data = plain(state);
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::hmacSHA256(data, key()));
    finish(state);
}
BENCHMARK(BM_HMACSHA256_Ours)->Arg(64)->Arg(4096)->Arg(4 << 20);

void BM_HMACSHA256_Libcrypto(benchmark::State& state) {
    const auto data = plain(state);
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
    finish(state);
}
BENCHMARK(BM_HMACSHA256_Libcrypto)->Arg(64)->Arg(4096)->Arg(4 << 20);

void BM_AESEncrypt_Ours(benchmark::State& state) {
    const auto data = plain(state);
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::aesCBCEncrypt(data, key()));
    finish(state);
}
BENCHMARK(BM_AESEncrypt_Ours)->Arg(64)->Arg(4096)->Arg(4 << 20);

void BM_AESDecrypt_Ours(benchmark::State& state) {
    const auto data = ZQCrypto::aesCBCEncrypt(plain(state), key())->data();
    for (auto _ : state) benchmark::DoNotOptimize(ZQCrypto::aesCBCDecrypt(data, key()));
    finish(state);
}
BENCHMARK(BM_AESDecrypt_Ours)->Arg(64)->Arg(4096)->Arg(4 << 20);

/// The same scheme: the digest that key and vector come from, and the cipher.
void cryptByLibcrypto(benchmark::State& state, const Data& data, bool encrypt) {
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
    finish(state);
}

void BM_AESEncrypt_Libcrypto(benchmark::State& state) { cryptByLibcrypto(state, plain(state), true); }
BENCHMARK(BM_AESEncrypt_Libcrypto)->Arg(64)->Arg(4096)->Arg(4 << 20);

void BM_AESDecrypt_Libcrypto(benchmark::State& state) {
    cryptByLibcrypto(state, ZQCrypto::aesCBCEncrypt(plain(state), key())->data(), false);
}
BENCHMARK(BM_AESDecrypt_Libcrypto)->Arg(64)->Arg(4096)->Arg(4 << 20);

}  // namespace
}  // namespace zqcore
