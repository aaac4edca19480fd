#pragma once

#include <openssl/evp.h>

#include <memory>

namespace zqcore::platform {

struct EvpRelease {
    void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
    void operator()(EVP_CIPHER_CTX* context) const noexcept { EVP_CIPHER_CTX_free(context); }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, EvpRelease>;
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, EvpRelease>;

}  // namespace zqcore::platform
