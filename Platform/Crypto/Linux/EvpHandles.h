#pragma once

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <utility>

namespace zqcore::platform {

struct EvpRelease {
    void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
    void operator()(EVP_CIPHER_CTX* context) const noexcept { EVP_CIPHER_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, EvpRelease>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, EvpRelease>;

/// Keeps libcrypto whole until the very end of the process, where handlers and destructors may still use it.
/// To be called before anything is fetched.
inline void keepLibcryptoToTheEnd() { OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr); }

/// The calling thread's context number `which` of `count`, made by `make` when first asked for; null if there
/// is no memory for it. Contexts end with the thread, and one asked for even later is made anew and stays.
template <class Handle, std::size_t count, class Make>
[[nodiscard]] typename Handle::pointer threadContext(std::size_t which, Make make) {
    thread_local constinit std::array<typename Handle::pointer, count> contexts{};
    struct Release {
        ~Release() {
            for (auto& context : contexts) Handle(std::exchange(context, nullptr));
        }
    };
    thread_local const Release release;
    static_cast<void>(release);
    auto& context = contexts[which];
    if (!context) context = make();
    return context;
}

}  // namespace zqcore::platform
