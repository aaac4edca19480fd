#include "Classes/Core/Utility/Crypto/ZQCrypto.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "Classes/Core/Utility/ZQConvert.h"
#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

std::string repeated(const char* text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i) result += text;
    return result;
}

Data fromHex(std::string_view hex) { return ZQConvert::dataFromHexString(hex).value(); }

// RFC 1321 A.5, FIPS 180-4 examples and the long-message examples that go with them.
TEST(ZQCryptoTest, DigestsMatchThePublishedVectors) {
    const std::string none;
    const std::string abc = "abc";
    const std::string twoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    const std::string million(1'000'000, 'a');
    using Digest = std::function<std::optional<ZQCrypto::Result>(const std::string&)>;
    const Digest md5 = [](const std::string& s) { return ZQCrypto::md5(s); };
    const Digest sha1 = [](const std::string& s) { return ZQCrypto::sha1(s); };
    const Digest sha256 = [](const std::string& s) { return ZQCrypto::sha256(s); };
    const Digest sha384 = [](const std::string& s) { return ZQCrypto::sha384(s); };
    const Digest sha512 = [](const std::string& s) { return ZQCrypto::sha512(s); };
    const struct {
        const Digest& digest;
        const std::string& text;
        const char* hex;
    } kVectors[] = {
        {md5, none, "d41d8cd98f00b204e9800998ecf8427e"},
        {md5, abc, "900150983cd24fb0d6963f7d28e17f72"},
        {sha1, none, "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        {sha1, abc, "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {sha1, twoBlocks, "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
        {sha1, million, "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
        {sha256, none, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {sha256, abc, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {sha256, twoBlocks, "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
        {sha256, million, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
        {sha384, none,
         "38b060a751ac96384cd9327eb1b1e36a21fdb71114be07434c0cc7bf63f6e1da274edebfe76f65fbd51ad2f14898b95b"},
        {sha384, abc,
         "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca134c825a7"},
        {sha512, abc,
         "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
         "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
        {sha512, none,
         "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
         "47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e"},
    };
    for (const auto& [digest, text, hex] : kVectors) {
        EXPECT_EQ(digest(text)->hexLower(), hex) << text.substr(0, 60);
    }
}

// RFC 2202 and RFC 4231.
TEST(ZQCryptoTest, CodesMatchThePublishedVectors) {
    struct Vector {
        std::string key, text;
        const char *md5, *sha1, *sha256;
    };
    const Vector kVectors[] = {
        {"Jefe", "what do ya want for nothing?", "750c783e6ab0b503eaa86e310a5db738",
         "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79",
         "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
        {"", "", "74e6f7298a9c2d168935f58c001bad88", "fbdb1d1b18aa6c08324b7d64b71fb76370690e1d",
         "b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad"},
    };
    for (const auto& [key, text, md5, sha1, sha256] : kVectors) {
        EXPECT_EQ(ZQCrypto::hmacMD5(text, key)->hexLower(), md5) << text;
        EXPECT_EQ(ZQCrypto::hmacSHA1(text, key)->hexLower(), sha1) << text;
        EXPECT_EQ(ZQCrypto::hmacSHA256(text, key)->hexLower(), sha256) << text;
    }
    // A key of 131 bytes is longer than any block, so it is hashed first.
    const Data longKey = fromHex(repeated("aa", 131));
    const Data text(std::string("Test Using Larger Than Block-Size Key - Hash Key First"));
    EXPECT_EQ(ZQCrypto::hmacSHA256(text, longKey).hexLower(),
              "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
    EXPECT_EQ(
        ZQCrypto::hmacSHA384(text, longKey).hexLower(),
        "4ece084485813e9088d2c63a041bc5b44f9ef1012a2b588f3cd11f05033ac4c60c2ef6ab4030fe8296248df163f44952");
    EXPECT_EQ(ZQCrypto::hmacSHA512(text, longKey).hexLower(),
              "80b24263c7c1a3ebb71493c1dd7be8b49b46d1f41b4aeec1121b013783f8f352"
              "6b56d037e05f2598bd0fd2215d6a1e5295e64f73f63f0aec8b915a985d786598");
    const Data jefe(std::string("Jefe"));
    const Data question(std::string("what do ya want for nothing?"));
    EXPECT_EQ(
        ZQCrypto::hmacSHA384(question, jefe).hexLower(),
        "af45d2e376484031617f78d2b58a6b1b9c7ef464f5a01b47e42ec3736322445e8e2240ca5e69e2c78b3239ecfab21649");
    EXPECT_EQ(ZQCrypto::hmacSHA512(question, jefe).hexLower(),
              "164b7a7bfcf819e2e395fbe73b56e0a387bd64222e831fd610270cd7ea250554"
              "9758bf75c05a994a6d034f65f8f0e6fdcaeab1a34d4a6b4b636e070a38bce737");
}

// Made with the openssl command from the SHA-384 of the key, cut by hand:
//     digest=$(printf %s KEY | openssl dgst -sha384 -r | cut -c1-96)
//     printf %s TEXT | openssl enc -aes-256-cbc -K ${digest:0:64} -iv ${digest:64} | xxd -p
TEST(ZQCryptoTest, CipherIsExactlyTheSharedScheme) {
    struct Vector {
        std::string text, key;
        const char* hex;
    };
    const Vector kVectors[] = {
        {"hello, world", "abc", "b2c01bc5b9b2083b37fb21674eddddb1"},
        {"0123456789abcde", "k", "624d4f3fd88565efcad44cfb1c4eb178"},
        {"0123456789abcdef", "", "702cc921ccaa2f3966c9c5466020c716194811fc9653e050c27d45fecbef5db9"},
        {"0123456789abcdefg", "0123456789abcdef0123456789abcdef",
         "168870a5148a431fda46752b4c1f1d2d167156e8cd79189fdaf65141efc1de6c"},
        {"你好，世界 😀", std::string(1000, 'x'),
         "cc13dacf6382e0c491b6946e28e821478edc128914d8d378fdef21cd8133216c"},
    };
    for (const auto& [text, key, hex] : kVectors) {
        const auto encrypted = ZQCrypto::aesCBCEncrypt(text, key);
        ASSERT_TRUE(encrypted) << text;
        EXPECT_EQ(encrypted->hexLower(), hex) << text;
        const auto decrypted = ZQCrypto::aesCBCDecrypt(encrypted->base64(), key);
        ASSERT_TRUE(decrypted) << text;
        EXPECT_EQ(decrypted->utf8(), text);
    }
}

TEST(ZQCryptoTest, CipherGivesEveryLengthBack) {
    std::mt19937 random(20261122);
    for (std::size_t length = 1; length < 200; ++length) {
        std::string bytes(length, '\0');
        for (auto& byte : bytes) byte = static_cast<char>(random());
        const Data key(bytes.substr(length / 2));
        const auto encrypted = ZQCrypto::aesCBCEncrypt(Data(bytes), key);
        ASSERT_TRUE(encrypted);
        EXPECT_EQ(encrypted->data().size(), (length / 16 + 1) * 16);
        const auto decrypted = ZQCrypto::aesCBCDecrypt(encrypted->data(), key);
        ASSERT_TRUE(decrypted) << length;
        EXPECT_EQ(decrypted->data(), Data(bytes)) << length;
    }
}

TEST(ZQCryptoTest, DecryptsBrokenLinesAndOneBlockOfPadding) {
    const auto encrypted = ZQCrypto::aesCBCEncrypt("0123456789abcdefg", "key");
    auto text = encrypted->base64();
    text.insert(10, "\r\n ");
    text.insert(3, "\t-");
    EXPECT_EQ(ZQCrypto::aesCBCDecrypt(text, "key")->utf8(), "0123456789abcdefg");
    // The first block alone of a text that looks like padding.
    const auto whole = ZQCrypto::aesCBCEncrypt(Data(std::string(16, '\x10')), Data(std::string("key")));
    const auto firstBlock = ZQCrypto::aesCBCDecrypt(Data(std::string(whole->data().view().substr(0, 16))),
                                                    Data(std::string("key")));
    ASSERT_TRUE(firstBlock) << "a block of nothing but padding is a result";
    EXPECT_TRUE(firstBlock->data().empty());
}

TEST(ZQCryptoTest, JudgesEveryByteOfThePadding) {
    const Data key(std::string("key"));
    // A text that ends in `block`, cut so that the block is the last one when it is decrypted.
    const auto decrypted = [&key](const std::string& block) {
        const auto whole = ZQCrypto::aesCBCEncrypt(Data("sixteen letters." + block), key);
        return ZQCrypto::aesCBCDecrypt(Data(std::string(whole->data().view().substr(0, 32))), key);
    };
    for (std::size_t count = 1; count <= 16; ++count) {
        const std::string good = std::string(16 - count, 'x') + std::string(count, static_cast<char>(count));
        const auto result = decrypted(good);
        ASSERT_TRUE(result) << count;
        EXPECT_EQ(result->data().size(), 32 - count);
        for (std::size_t wrong = 16 - count; wrong < 15; ++wrong) {
            std::string bad = good;
            bad[wrong] ^= '\x40';
            EXPECT_FALSE(decrypted(bad)) << count << " with byte " << wrong << " wrong";
        }
    }
    for (const char count : {'\x00', '\x11', '\x80', '\xFF'}) EXPECT_FALSE(decrypted(std::string(16, count)));
}

TEST(ZQCryptoTest, RefusesWhatIsNoInput) {
    EXPECT_FALSE(ZQCrypto::aesCBCEncrypt("", "key"));
    EXPECT_FALSE(ZQCrypto::aesCBCDecrypt("", "key"));
    EXPECT_FALSE(ZQCrypto::aesCBCDecrypt(Data(), Data()));
    EXPECT_FALSE(ZQCrypto::aesCBCDecrypt("YQ=", "key")) << "no base64";
    EXPECT_FALSE(ZQCrypto::aesCBCDecrypt("====", "key")) << "base64 of no bytes";
    const std::string broken = "a\xC3";
    EXPECT_FALSE(ZQCrypto::md5(broken));
    EXPECT_FALSE(ZQCrypto::hmacSHA1("a", broken));
    EXPECT_FALSE(ZQCrypto::aesCBCEncrypt("a", broken));
    EXPECT_FALSE(zq_md5HexLower(broken));
    EXPECT_EQ(ZQCrypto::md5(Data(broken)).data().size(), 16U) << "bytes need not be text";
    EXPECT_EQ(zq_md5HexLower("abc"), "900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(zq_sha256HexLower("abc")->substr(0, 8), "ba7816bf");
}

TEST(ZQCryptoTest, FailedDecryptionLogsOneLineUnderItsOwnName) {
    testkit::LogCapture capture;
    EXPECT_FALSE(ZQCrypto::aesCBCEncrypt("", "key"));
    EXPECT_FALSE(ZQCrypto::aesCBCDecrypt("!!", "key"));
    EXPECT_TRUE(capture.silent()) << capture;
    const auto encrypted = ZQCrypto::aesCBCEncrypt("some text", "key");
    EXPECT_FALSE(ZQCrypto::aesCBCDecrypt(encrypted->base64(), "other")) << "its padding is no padding";
    EXPECT_FALSE(ZQCrypto::aesCBCDecrypt("YWJj", "key")) << "no whole block";
    const auto lines = capture.lines();
    ASSERT_EQ(lines.size(), 2U) << capture;
    EXPECT_EQ(lines[0].message, "Decrypt Error! -4304");
    EXPECT_EQ(lines[1].message, "Decrypt Error! -4303");
    for (const auto& line : lines) {
        EXPECT_EQ(line.flag, testkit::LogCapture::error);
        EXPECT_EQ(line.function, "aesCBCDecrypt(data:keyData:)");
        EXPECT_EQ(line.fileName, "ZQCrypto");
    }
}

TEST(ZQCryptoTest, ResultGivesItsForms) {
    const ZQCrypto::Result result(Data(std::string("\xE4\xBD\xA0\xFF", 4)));
    EXPECT_EQ(result.hexLower(), "e4bda0ff");
    EXPECT_EQ(result.hexUpper(), "E4BDA0FF");
    EXPECT_EQ(result.base64(), "5L2g/w==");
    EXPECT_FALSE(result.utf8());
    EXPECT_EQ(ZQCrypto::Result(Data(std::string("你"))).utf8(), "你");
    EXPECT_FALSE(ZQCrypto::Result(Data(std::string("\xE4\xBD"))).utf8()) << "cut off within a character";
    EXPECT_EQ(ZQCrypto::Result(Data()).base64() + ZQCrypto::Result(Data()).hexLower(), "");
}

TEST(ZQCryptoTest, ThreadsDontDisturbEachOther) {
    testkit::LogCapture capture;
    const auto work = [](int seed, std::string& log) {
        for (int i = 0; i < 200; ++i) {
            const auto text = std::to_string(seed) + std::string(static_cast<std::size_t>(i), 'x');
            const auto encrypted = ZQCrypto::aesCBCEncrypt(text, text);
            log += ZQCrypto::hmacSHA256(text, text)->hexLower();
            log += ZQCrypto::aesCBCDecrypt(encrypted->data(), Data(text))->utf8().value();
            if (ZQCrypto::aesCBCDecrypt(Data(std::string(15, 'x')), Data())) log += "?";
        }
    };
    std::vector<std::string> alone(4), together(4);
    for (int i = 0; i < 4; ++i) work(i, alone[static_cast<std::size_t>(i)]);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] { work(i, together[static_cast<std::size_t>(i)]); });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(alone, together);
}

TEST(ZQCryptoDeathTest, ServesHandlersAtTheEndOfTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    static const auto tell = [] {
        const auto encrypted = ZQCrypto::aesCBCEncrypt(std::string_view("text"), "key");
        const auto decrypted = ZQCrypto::aesCBCDecrypt(encrypted->data(), Data(std::string("key")));
        std::fputs((*zq_md5HexLower("abc") + " " + *decrypted->utf8() + ";").c_str(), stderr);
    };
    const auto endAfterUse = [] {
        std::atexit([] { tell(); });
        tell();
        std::exit(0);
    };
    EXPECT_EXIT(endAfterUse(), testing::ExitedWithCode(0), "(900150983cd24fb0d6963f7d28e17f72 text;){2}");
}

}  // namespace
}  // namespace zqcore
