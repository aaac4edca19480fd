// docs/examples/crypto.cpp
#include <cstdio>

#include "Classes/Core/Utility/Crypto/ZQCrypto.h"

int main() {
    using namespace zqcore;
    std::puts(zq_md5HexLower("abc")->c_str());                       // => 900150983cd24fb0d6963f7d28e17f72
    std::puts(ZQCrypto::hmacSHA1("text", "key")->base64().c_str());  // => Np4pWetJRQM4shJ0j3fY3tdIR7s=
    const auto cipherText = ZQCrypto::aesCBCEncrypt("good morning", "key")->base64();
    std::puts(ZQCrypto::aesCBCDecrypt(cipherText, "key")->utf8()->c_str());  // => good morning
}
