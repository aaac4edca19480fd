// The first byte tells how many of the next ones are the key; the rest is cipher text, as bytes and as
// base64.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Classes/Core/Utility/Crypto/ZQCrypto.h"
#include "Classes/Log/Log/ZQLog.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zqcore;
    // Most inputs fail, and each failure would be a line in a log file.
    logging::ready = true;
    ZQDefaultLogLevel = 0;
    if (size == 0) return 0;
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t keyLength = std::min<std::size_t>(data[0], input.size());
    const std::string key = input.substr(0, keyLength);
    const Data cipherText(input.substr(keyLength));

    const auto plain = ZQCrypto::aesCBCDecrypt(cipherText, Data(key));
    // Padding is told exactly, so what decrypts encrypts back to the same bytes.
    if (plain && !plain->data().empty() &&
        ZQCrypto::aesCBCEncrypt(plain->data(), Data(key))->data() != cipherText) {
        std::abort();
    }
    static_cast<void>(ZQCrypto::aesCBCDecrypt(cipherText.view(), key));
    if (const auto encrypted = ZQCrypto::aesCBCEncrypt(cipherText, Data(key))) {
        const auto back = ZQCrypto::aesCBCDecrypt(encrypted->data(), Data(key));
        if (!back || back->data() != cipherText) std::abort();
    }
    return 0;
}
