#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Classes/Core/Utility/Crypto/ZQCrypto.h"
#include "Classes/Core/Utility/ZQConvert.h"

namespace zq {

using namespace zqcore;

namespace {

using Result = ZQCrypto::Result;

struct Algorithm {
    std::string_view name;
    std::optional<Result> (*digest)(const Data& data);
    Result (*hmac)(const Data& data, const Data& keyData);
};
constexpr Algorithm kAlgorithms[] = {
    {"md5", [](const Data& data) { return std::optional(ZQCrypto::md5(data)); }, ZQCrypto::hmacMD5},
    {"sha1", [](const Data& data) { return std::optional(ZQCrypto::sha1(data)); }, ZQCrypto::hmacSHA1},
    {"sha256", [](const Data& data) { return std::optional(ZQCrypto::sha256(data)); }, ZQCrypto::hmacSHA256},
    {"sha384", [](const Data& data) { return ZQCrypto::sha384(data); }, ZQCrypto::hmacSHA384},
    {"sha512", [](const Data& data) { return ZQCrypto::sha512(data); }, ZQCrypto::hmacSHA512},
};

constexpr const char* kUsualVariable = "ZQ_KEY";

/// The algorithm of --algorithm, sha256 without it; null, with a message, for one that there isn't.
const Algorithm* algorithmOf(const Arguments& parsed) {
    const std::string name = parsed.value("algorithm").value_or("sha256");
    const auto* const found = std::ranges::find(kAlgorithms, std::string_view(name), &Algorithm::name);
    if (found != std::end(kAlgorithms)) return found;
    complain("--algorithm is md5, sha1, sha256, sha384 or sha512, not \"" + name + "\"");
    return nullptr;
}

/// The key, which never stands on the command line, where every process could read it. Absent with a message
/// and `code` set.
std::optional<Data> keyOf(const Arguments& parsed, int& code) {
    code = kUsage;
    const auto file = parsed.value("key-file");
    const auto variable = parsed.value("key-env");
    if (file && variable) {
        complain("--key-file and --key-env exclude each other");
        return std::nullopt;
    }
    if (file) {
        if (*file == "-" && parsed.words()[0] == "-") {
            complain("standard input can't be both the text and the key");
            return std::nullopt;
        }
        auto content = readContent(*file);
        if (!content) code = kUnreadable;
        return content ? std::optional(Data(withoutLineEnd(std::move(*content)))) : std::nullopt;
    }
    const std::string name = variable.value_or(kUsualVariable);
    // Whoever writes "ZQ_KEY=$KEY" with a misspelt name has no key either.
    if (const char* value = std::getenv(name.c_str()); value && *value) return Data(std::string(value));
    complain("there is no key: give --key-file FILE, or set the environment variable " + name);
    return std::nullopt;
}

int finishWithCode(const Algorithm& algorithm, const Result& result, bool raw) {
    if (raw) return finishWithBytes(result.hexLower(), true);
    return finishWith(Value(Value::Dictionary{
        {"algorithm", algorithm.name}, {"hex", result.hexLower()}, {"base64", result.base64()}}));
}

int digest(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"algorithm"}, {"raw", false}}, {"TEXT"});
    const Algorithm* algorithm = parsed ? algorithmOf(*parsed) : nullptr;
    if (!algorithm) return kUsage;
    auto bytes = readArgument(parsed->words()[0]);
    if (!bytes) return kUnreadable;
    const auto result = algorithm->digest(Data(std::move(*bytes)));
    return result ? finishWithCode(*algorithm, *result, parsed->has("raw"))
                  : complain("no digest could be made", kUnreadable);
}

int hmac(std::span<const std::string> arguments) {
    const auto parsed =
        Arguments::parse(arguments, {{"algorithm"}, {"key-file"}, {"key-env"}, {"raw", false}}, {"TEXT"});
    const Algorithm* algorithm = parsed ? algorithmOf(*parsed) : nullptr;
    if (!algorithm) return kUsage;
    int code = kUsage;
    const auto key = keyOf(*parsed, code);
    if (!key) return code;
    auto bytes = readArgument(parsed->words()[0]);
    if (!bytes) return kUnreadable;
    return finishWithCode(*algorithm, algorithm->hmac(Data(std::move(*bytes)), *key), parsed->has("raw"));
}

int encrypt(const Arguments& parsed, const Data& text, const Data& key) {
    const auto result = ZQCrypto::aesCBCEncrypt(text, key);
    if (!result) return complain("there is nothing to encrypt", kUnreadable);
    if (parsed.has("raw")) return finishWithBytes(result->base64(), true);
    return finishWith(Value(Value::Dictionary{{"base64", result->base64()}}));
}

int decrypt(const Arguments& parsed, const Data& text, const Data& key) {
    const auto cipherText = ZQConvert::dataFromBase64String(text.view());
    if (!cipherText) return complain("the text is no base64", kUnreadable);
    const auto result = ZQCrypto::aesCBCDecrypt(*cipherText, key);
    if (!result) return complain("the text can't be decrypted with this key", kUnreadable);
    if (parsed.has("raw")) return finishWithBytes(result->data().view(), false);
    const auto plain = result->utf8();
    return finishWith(
        Value(Value::Dictionary{{"text", plain ? Value(*plain) : Value()}, {"base64", result->base64()}}));
}

int cipher(std::span<const std::string> arguments,
           int (*run)(const Arguments& parsed, const Data& text, const Data& key)) {
    const auto parsed = Arguments::parse(arguments, {{"key-file"}, {"key-env"}, {"raw", false}}, {"TEXT"});
    if (!parsed) return kUsage;
    int code = kUsage;
    const auto key = keyOf(*parsed, code);
    if (!key) return code;
    auto bytes = readArgument(parsed->words()[0]);
    return bytes ? run(*parsed, Data(std::move(*bytes)), *key) : kUnreadable;
}

int run(std::span<const std::string> arguments) {
    const std::string action = arguments.empty() ? "" : arguments[0];
    if (action == "digest") return digest(arguments.subspan(1));
    if (action == "hmac") return hmac(arguments.subspan(1));
    if (action == "encrypt") return cipher(arguments.subspan(1), encrypt);
    if (action == "decrypt") return cipher(arguments.subspan(1), decrypt);
    return complain("zq crypt knows digest, hmac, encrypt and decrypt; try zq crypt --help");
}

constexpr Offer kOffers[] = {{"", "digest hmac encrypt decrypt"},
                             {"digest", "--algorithm --raw"},
                             {"hmac", "--algorithm --key-file --key-env --raw"},
                             {"*", "--key-file --key-env --raw"}};

}  // namespace

const Command kCryptCommand = {
    .name = "crypt",
    .summary = "digest, authenticate, encrypt or decrypt a text",
    .help =
        "usage: zq crypt digest TEXT [--algorithm md5|sha1|sha256|sha384|sha512] [--raw]\n"
        "       zq crypt hmac TEXT [--key-file FILE | --key-env NAME] [--algorithm ...] [--raw]\n"
        "       zq crypt encrypt TEXT [--key-file FILE | --key-env NAME] [--raw]\n"
        "       zq crypt decrypt BASE64 [--key-file FILE | --key-env NAME] [--raw]\n\n"
        "TEXT is - for the bytes of standard input, as they are. The cipher is the applications' own: \n"
        "AES-256-CBC without salt, key and vector both made from the key's SHA-384. A text that decrypts to "
        "no\n"
        "UTF-8 has \"text\" null; its bytes stand under \"base64\".\n\n"
        "The key never stands on the command line, where every process could read it. It is one of:\n"
        "  --key-file FILE    the file's content without a line end at its end; - for standard input\n"
        "  --key-env NAME     the value of that environment variable, which can't be empty; ZQ_KEY without\n"
        "                     either option\n\n"
        "  --algorithm NAME   sha256 by default\n"
        "  --raw              print no JSON: digests in hexadecimal, cipher texts in base64, plain texts as "
        "they\n"
        "                     were\n\n"
        "A text that can't be decrypted with this key counts as one that can't be read.\n\n"
        "example:\n"
        "  zq crypt encrypt 'good morning' --key-file ~/.orbel-key --raw\n",
    .codes = exitCodes(),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
