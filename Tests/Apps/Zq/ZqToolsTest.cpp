// The text tools, settings and crash reports of the command line: the real program as a child, in a home of
// its own.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Classes/Core/Utility/Codable/JSONTool.h"
#include "Platform/Foundation/NSUserDefaults.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/Sanitized.h"
#include "TestKit/TemporaryHome.h"

namespace zqcore {
namespace {

using testkit::ChildProcess;
using testkit::kSanitized;

constexpr const char* kHelper = "com.tessaradev.OrbelHelper";

class ZqToolsTest : public testing::Test {
  protected:
    struct Ended {
        int code = -1;
        std::string text;  // all of standard output

        [[nodiscard]] Value json() const { return JSONTool::decodeToJSONObject(text).value_or(Value()); }
        [[nodiscard]] Value at(std::string_view key) const {
            const Value value = json();
            const Value* found = value.asDictionary() ? value.asDictionary()->find(key) : nullptr;
            return found ? *found : Value("nothing under " + std::string(key));
        }
    };

    static Ended run(const std::vector<std::string>& arguments) {
        ChildProcess process(arguments);
        Ended ended;
        while (auto line = process.readLine()) ended.text += *line + "\n";
        ended.code = process.wait();
        return ended;
    }
    static Ended zq(std::vector<std::string> words) {
        words.insert(words.begin(), ZQ_TEST_APPS "/zq");
        return run(words);
    }
    /// `command` by the shell, with `zq` as a word of its own.
    static Ended shell(const std::string& command) {
        return run({"/bin/bash", "-c", "zq() { " ZQ_TEST_APPS "/zq \"$@\"; }; " + command});
    }

    testkit::TemporaryHome home_;
};

TEST_F(ZqToolsTest, TurnsIdentifiersIntoEachConvention) {
    const auto all = zq({"case", "parseHTTPResponse"});
    EXPECT_EQ(all.code, 0);
    EXPECT_EQ(all.json(), Value(Value::Dictionary{{"words", "parse HTTP Response"},
                                                  {"camel", "parseHttpResponse"},
                                                  {"upperCamel", "ParseHttpResponse"},
                                                  {"snake", "parse_http_response"},
                                                  {"kebab", "parse-http-response"},
                                                  {"constant", "PARSE_HTTP_RESPONSE"}}));
    EXPECT_EQ(zq({"case", "userName", "--to", "kebab"}).json(),
              Value(Value::Dictionary{{"words", "user Name"}, {"kebab", "user-name"}}));
    EXPECT_EQ(shell("echo foo_bar-baz/qux.txt | zq case - --to=constant --raw").text,
              "FOO_BAR_BAZ_QUX_TXT\n");
    EXPECT_EQ(zq({"case", "a", "--to", "pascal"}).code, 2);
    EXPECT_EQ(zq({"case", "a", "--raw"}).code, 2) << "which of the five?";
    EXPECT_EQ(shell("printf 'a\\xff' | zq case -").code, 5);
}

TEST_F(ZqToolsTest, StripsAndListsEmoji) {
    const std::string text = "a👩‍👩‍👧b→1️⃣ 1";
    const auto stripped = zq({"emoji", "strip", text});
    EXPECT_EQ(stripped.json(), Value(Value::Dictionary{{"text", "ab 1"}, {"emoji", 3}}));
    EXPECT_EQ(zq({"emoji", "strip", text, "--with", "<e>", "--raw"}).text, "a<e>b<e><e> 1\n");
    EXPECT_EQ(shell("printf 'x😀\\ny' | zq emoji strip - --raw; echo .").text, "x\ny.\n")
        << "a text from standard input gets no line end";
    EXPECT_EQ(zq({"emoji", "list", "5 ok 😀 🇨🇳"}).json(),
              Value(Value::Array{Value::Dictionary{{"emoji", "😀"}, {"range", "{5, 2}"}},
                                 Value::Dictionary{{"emoji", "🇨🇳"}, {"range", "{8, 4}"}}}));
    EXPECT_EQ(zq({"emoji", "list", ""}).text, "[]\n");
    EXPECT_EQ(zq({"emoji", "eat", "x"}).code, 2);
}

TEST_F(ZqToolsTest, ComparesVersions) {
    struct Case {
        const char* a;
        const char* b;
        int order;
        const char* result;
    };
    for (const auto& [a, b, order, result] :
         {Case{"1.10", "1.9", 1, "newer"}, Case{"1.0b2", "1.0", -1, "older"},
          Case{"1.0", "1-0", 0, "same"}}) {
        const auto ended = zq({"version", a, b});
        EXPECT_EQ(ended.code, 0);
        EXPECT_EQ(ended.json(),
                  Value(Value::Dictionary{{"a", a}, {"b", b}, {"order", order}, {"result", result}}));
    }
    EXPECT_EQ(shell("echo 2.0 | zq version 2.0 -").at("order"), Value(0)) << "a line end is no suffix";
    EXPECT_EQ(zq({"version", "-", "-"}).code, 2);
    EXPECT_EQ(zq({"version", "1"}).code, 2);
}

TEST_F(ZqToolsTest, DigestsWhatStandsThereAsItIs) {
    EXPECT_EQ(zq({"crypt", "digest", "abc", "--algorithm", "md5", "--raw"}).text,
              "900150983cd24fb0d6963f7d28e17f72\n");
    EXPECT_EQ(zq({"crypt", "digest", "abc"}).at("hex"),
              Value("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"));
    EXPECT_EQ(zq({"crypt", "digest", ""}).code, 0) << "there is a digest of nothing";
    for (const char* name : {"md5", "sha1", "sha256", "sha384", "sha512"}) {
        const std::string algorithm = name;
        EXPECT_EQ(shell("printf 'a\\xff\\n\\n' | zq crypt digest - --raw --algorithm " + algorithm).text,
                  shell("printf 'a\\xff\\n\\n' | " + algorithm + "sum | cut -d' ' -f1").text)
            << algorithm;
    }
    EXPECT_EQ(zq({"crypt", "digest", "abc", "--algorithm", "crc"}).code, 2);
}

// RFC 4231, test case 2, and RFC 2202, test case 2.
TEST_F(ZqToolsTest, AuthenticatesWithAKeyFromFileEnvironmentOrInput) {
    constexpr const char* kCode = "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843\n";
    const std::string words = "zq crypt hmac 'what do ya want for nothing?' --raw ";
    EXPECT_EQ(shell("ZQ_KEY=Jefe; export ZQ_KEY; " + words).text, kCode);
    EXPECT_EQ(shell("OTHER=Jefe; export OTHER; " + words + "--key-env OTHER").text, kCode);
    EXPECT_EQ(shell("echo Jefe >\"$HOME/key\"; " + words + "--key-file \"$HOME/key\"").text, kCode);
    EXPECT_EQ(shell("printf Jefe | " + words + "--key-file -").text, kCode);
    EXPECT_EQ(shell("ZQ_KEY=Jefe; export ZQ_KEY; " + words + "--algorithm sha1").text,
              "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79\n");
    EXPECT_EQ(shell(words).code, 2) << "no key anywhere";
    EXPECT_EQ(shell("ZQ_KEY=; export ZQ_KEY; " + words).code, 2) << "an empty one is none";
    EXPECT_EQ(shell(words + "--key-env OTHER --key-file -").code, 2);
    EXPECT_EQ(shell(words + "--key-file /nowhere/at/all").code, 5);
    EXPECT_EQ(shell("echo x | zq crypt hmac - --key-file -").code, 2) << "both from one place";
    EXPECT_EQ(shell(words + "--key Jefe").code, 2) << "a key never stands on the command line";
}

TEST_F(ZqToolsTest, EncryptsAsTheApplicationsDoAndBack) {
    const std::string key = "export ZQ_KEY=abc; ";
    EXPECT_EQ(shell(key + "zq crypt encrypt 你好 --raw").text,
              shell("printf 你好 | openssl enc -aes-256-cbc -base64 "
                    "-K cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed "
                    "-iv 8086072ba1e7cc2358baeca134c825a7")
                  .text);
    const auto back = shell(key + "zq crypt encrypt 你好 --raw | zq crypt decrypt -");
    EXPECT_EQ(back.json(), Value(Value::Dictionary{{"text", "你好"}, {"base64", "5L2g5aW9"}}));
    EXPECT_EQ(
        shell(key + "printf 'a\\0\\xff' | zq crypt encrypt - --raw | zq crypt decrypt - --raw | od -An -tx1")
            .text,
        " 61 00 ff\n");
    const auto bytes = shell(key + "printf '\\xff' | zq crypt encrypt - --raw | zq crypt decrypt -");
    EXPECT_EQ(bytes.at("text"), Value());
    EXPECT_EQ(bytes.at("base64"), Value("/w=="));
    EXPECT_EQ(shell(key + "zq crypt encrypt x --raw | ZQ_KEY=other " ZQ_TEST_APPS "/zq crypt decrypt -").code,
              5);
    EXPECT_EQ(shell(key + "zq crypt decrypt 'no base 64!'").code, 5);
    EXPECT_EQ(shell(key + "zq crypt encrypt ''").code, 5);
}

TEST_F(ZqToolsTest, KeepsSettingsByTheirTypes) {
    struct Case {
        const char* type;
        const char* text;
        Value stored;
        Value shown;
    };
    const Case cases[] = {
        {"string", "5", "5", "5"},
        {"integer", "-5", -5, -5},
        {"integer", "18446744073709551615", UINT64_MAX, UINT64_MAX},
        {"real", "2.5", 2.5, 2.5},
        {"boolean", "true", true, true},
        {"date", "2021-03-04T05:06:07Z", Date(std::chrono::seconds(1614834367)), "2021-03-04T05:06:07.000Z"},
        {"data", "AP8=", Data(std::string("\0\xff", 2)), "AP8="},
        {"json", R"({"a":[1,2.5,false]})", Value::Dictionary{{"a", Value::Array{1, 2.5, false}}},
         Value::Dictionary{{"a", Value::Array{1, 2.5, false}}}},
    };
    for (const auto& [type, text, stored, shown] : cases) {
        SCOPED_TRACE(std::string(type) + " " + text);
        const auto written = zq({"defaults", "write", "key", text, "--type", type, "--to", kHelper});
        EXPECT_EQ(written.code, 0);
        EXPECT_EQ(NSUserDefaults::atPath(*written.at("settings").asString())->objectForKey("key"), stored)
            << "as the application itself finds it";
        const auto read = zq({"defaults", "read", "key", "--to", kHelper});
        EXPECT_EQ(read.at("value"), shown);
        EXPECT_EQ(read.at("type"), std::string_view(type) == "json" ? Value("dictionary") : Value(type));
    }
    for (const auto& [type, text] : {std::pair{"integer", "5x"},
                                     {"integer", "1.5"},
                                     {"boolean", "perhaps"},
                                     {"date", "yesterday"},
                                     {"date", "9999-12-31T23:59:59Z"},
                                     {"data", "="},
                                     {"json", "{"},
                                     {"json", "null"},
                                     {"json", "5"},
                                     {"json", "[null]"},
                                     {"colour", "red"}}) {
        EXPECT_EQ(zq({"defaults", "write", "key", text, "--type", type, "--to", kHelper}).code, 2)
            << type << " " << text;
    }
    EXPECT_EQ(zq({"defaults", "read", "key", "--to", kHelper}).at("type"), Value("dictionary"))
        << "what was refused changed nothing";
    EXPECT_EQ(zq({"defaults", "read", "--to", kHelper}).at("values").asDictionary()->size(), 1U);
    EXPECT_EQ(zq({"defaults", "delete", "key", "--to", kHelper}).at("deleted"), Value(true));
    EXPECT_EQ(zq({"defaults", "delete", "key", "--to", kHelper}).at("deleted"), Value(false));
    const auto gone = zq({"defaults", "read", "key", "--to", kHelper});
    EXPECT_EQ(gone.code, 1);
    EXPECT_EQ(gone.at("value"), Value());
    EXPECT_EQ(zq({"defaults", "read", "--to", "no/identifier"}).code, 2);
    EXPECT_EQ(zq({"defaults", "read", "--raw", "--to", kHelper}).code, 2) << "the bare value of which key?";
    for (const char* action : {"read", "delete"})
        EXPECT_EQ(zq({"defaults", action, "\xFF", "--to", kHelper}).code, 2) << "a key that can't be";
}

TEST_F(ZqToolsTest, WritesBesideARunningApplicationWithoutALossOnEitherSide) {
    const std::string path = *zq({"defaults", "read", "--to", kHelper}).at("settings").asString();
    constexpr int kWrites = 150;
    ChildProcess application({ZQ_TEST_PROGRAMS "/DefaultsWriter", path, "own", std::to_string(kWrites)});
    constexpr int kOurs = 12;
    for (int i = 0; i < kOurs; ++i) {
        EXPECT_EQ(zq({"defaults", "write", "ours" + std::to_string(i), "x", "--to", kHelper}).code, 0);
    }
    EXPECT_EQ(application.wait(), 0);
    EXPECT_EQ(NSUserDefaults::atPath(path)->dictionaryRepresentation().size(), std::size_t{kWrites + kOurs});
}

TEST_F(ZqToolsTest, ListsAndShowsTheCrashReportsOfAnApplication) {
    const auto none = zq({"crash", "list", "--to", kHelper});
    EXPECT_EQ(none.code, 0);
    EXPECT_EQ(none.at("reports"), Value(Value::Array{}));
    EXPECT_EQ(zq({"crash", "show", "--to", kHelper}).code, 1);

    const std::string directory = *none.at("directory").asString();
    EXPECT_FALSE(std::filesystem::exists(directory)) << "looking makes nothing";
    std::filesystem::create_directories(directory);
    constexpr const char* kOld = "crash-report-2021-03-04-13-06-07.123+0800.crash";
    constexpr const char* kNew = "crash-report-2021-03-04-13-06-08.000+0800.crash";
    std::ofstream(directory + "/" + kOld) << "old\n";
    std::ofstream(directory + "/crash-report-date-empty-1.crash") << "timeless\n";
    std::ofstream(directory + "/" + kNew)
        << "Exception Type:  EXC_BAD_ACCESS (SIGSEGV)\n\nThread 0:\n0   libc\t0x1 0x0 + 1 (poll + 1)\n\n"
           "Thread 1 name:  Dispatch queue: com.example.work\nThread 1 Crashed:\n"
           "0   App   \t0x0000000000401000 0x400000 + 4096 (ns::work(std::span<int, 2ul>) + 12)\n"
           "1   App   \t0x0000000000402000 0x400000 + 8192\n\n"
           "Extra Information:\n\nLog lines that had not reached the file:\n[1] last\n[2] words\n";
    const Value listed = zq({"crash", "list", "--to", kHelper}).at("reports");
    ASSERT_TRUE(listed.asArray() && listed.asArray()->size() == 3);
    EXPECT_EQ((*listed.asArray())[0],
              Value(Value::Dictionary{{"name", kOld}, {"date", "2021-03-04T05:06:07.123Z"}}));

    const auto newest = zq({"crash", "show", "--brief", "--to", kHelper});
    EXPECT_EQ(newest.at("path"), Value(directory + "/" + kNew));
    EXPECT_EQ(newest.at("exceptionType"), Value("EXC_BAD_ACCESS (SIGSEGV)"));
    EXPECT_EQ(newest.at("crashedThread"), Value("Thread 1, Dispatch queue: com.example.work"));
    EXPECT_EQ(newest.at("frames"), Value(Value::Array{"ns::work(std::span<int, 2ul>) + 12",
                                                      "0x0000000000402000 0x400000 + 8192"}));
    EXPECT_EQ(newest.at("pendingLog"), Value(Value::Array{"[1] last", "[2] words"}));
    EXPECT_EQ(zq({"crash", "show", kOld, "--raw", "--to", kHelper}).text, "old\n");
    EXPECT_EQ(zq({"crash", "show", "../../secret", "--raw", "--to", kHelper}).code, 1);
    EXPECT_EQ(zq({"crash", "list", "--to", "a/b"}).code, 2);
}

TEST_F(ZqToolsTest, ProvesThatCaptureWorksByAChildThatReallyDies) {
    if (kSanitized) GTEST_SKIP() << "a sanitizer takes the fatal signals for itself";
    struct Case {
        const char* fault;
        const char* where;
        const char* signal;
        const char* exception;
    };
    for (const auto& [fault, where, signal, exception] :
         {Case{"segv", "main", "SIGSEGV", "EXC_BAD_ACCESS (SIGSEGV)"},
          Case{"fpe", "queue", "SIGFPE", "EXC_ARITHMETIC (SIGFPE)"},
          Case{"throw", "queue", "SIGABRT", "EXC_CRASH (SIGABRT)"}}) {
        SCOPED_TRACE(std::string(fault) + " on " + where);
        const auto ended = zq({"crash", "test", fault, "--on", where});
        EXPECT_EQ(ended.code, 0);
        EXPECT_EQ(ended.at("signal"), Value(signal));
        const Value report = ended.at("report");
        ASSERT_TRUE(report.asDictionary()) << ended.text;
        EXPECT_EQ(*report.asDictionary()->find("exceptionType"), Value(exception));
        EXPECT_EQ(zq({"crash", "show", "--brief"}).at("path"), *report.asDictionary()->find("path"));
    }
    EXPECT_EQ(zq({"crash", "list"}).at("reports").asArray()->size(), 3U);
    EXPECT_EQ(zq({"crash", "test", "boredom"}).code, 2);
}

TEST_F(ZqToolsTest, TeachesAndCompletesEveryWord) {
    const auto offered = [](const std::string& words) {
        return shell("eval \"$(zq completion bash)\"; COMP_WORDS=(zq " + words +
                     "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _zq; IFS=,; echo \",${COMPREPLY[*]},\"")
            .text;
    };
    const std::string commands = offered("''");
    const std::map<std::string, std::string> codes = {
        {"send", "012345"},    {"info", "012345"},         {"listen", "02345"},
        {"list", "0125"},      {"install-script", "0235"}, {"log", "025"},
        {"defaults", "0125"},  {"crash", "0125"},          {"case", "025"},
        {"emoji", "025"},      {"version", "025"},         {"crypt", "025"},
        {"completion", "025"}, {"relay", "0235"}};
    for (const auto& [name, codesOfIt] : codes) {
        EXPECT_EQ(commands.find("," + name + ",") != std::string::npos, name != "relay")
            << "our scripts' own";
        const auto help = zq({name, "--help"});
        EXPECT_EQ(help.code, 0);
        std::string told;
        std::istringstream list(help.text.substr(help.text.find("\nExit codes:\n") + 13));
        for (std::string line; std::getline(list, line);) told += line.substr(2, 1);
        EXPECT_EQ(told, codesOfIt) << help.text;
        EXPECT_TRUE(help.text.starts_with("usage: zq " + name)) << name;
        EXPECT_EQ(zq({name, "--nonsense"}).code, 2) << name;
    }
    EXPECT_EQ(offered("crypt de"), ",decrypt,\n");
    EXPECT_EQ(offered("defaults write key 5 --ty"), ",--type,\n");
    for (const auto& [line, next] : std::map<std::string, std::string>{
             {"case x --to k", "kebab"},
             {"info --to com.x --via s", "script"},
             {"send info --via = d", "distributed"},
             {"defaults read --to com.tessaradev.OrbelH", "com.tessaradev.OrbelHelper"},
             {"defaults --to read write key 5 --type j", "json"},
             {"send --timeout 5 tr", "translate"},
             {"send open --to com.x tr", ""},
             {"listen --count --t", ""},
             {"crash show --r", "--raw"},
             {"crash list --r", ""}}) {
        EXPECT_EQ(offered(line), next.empty() ? ",,\n" : "," + next + ",\n") << line;
    }
    std::ofstream(home_.path() + "/key file") << "k";
    EXPECT_EQ(offered("crypt encrypt x --key-file \"$HOME/key\""), "," + home_.path() + "/key file,\n");
}

TEST_F(ZqToolsTest, TakesHelpForATextWhereATextStands) {
    EXPECT_EQ(zq({"case", "--to", "camel", "--raw", "--", "--help"}).text, "help\n");
    EXPECT_EQ(zq({"emoji", "strip", "x\U0001F600", "--with", "--help", "--raw"}).text, "x--help\n");
    for (const auto& words : std::vector<std::vector<std::string>>{
             {"case", "--help", "--", "x"}, {"case", "x", "--raw", "--help"}, {"emoji", "strip", "--help"}}) {
        const auto help = zq(words);
        EXPECT_EQ(help.code, 0);
        EXPECT_TRUE(help.text.starts_with("usage: zq " + words[0])) << help.text;
    }
}

TEST_F(ZqToolsTest, TellsItsOwnVersionAndHelpByEveryUsualWord) {
    EXPECT_TRUE(zq({"--version"}).text.starts_with("zq 0."));
    for (const auto& words : std::vector<std::vector<std::string>>{{"help", "case"}, {"case", "-h"}})
        EXPECT_EQ(zq(words).text, zq({"case", "--help"}).text);
    EXPECT_EQ(zq({"-h"}).text, zq({"help"}).text);
    EXPECT_EQ(zq({"help", "nonsense"}).code, 2);
    EXPECT_EQ(shell("zq --help >/dev/full").code, 5);
    EXPECT_EQ(shell("zq --help >&-").code, 5);
    EXPECT_EQ(run({ZQ_TEST_APPS "/orbel", "--version"}).text, "Orbel 1.6.0\n");
}

TEST_F(ZqToolsTest, AFolderIsNoFileToReadFrom) {
    EXPECT_EQ(zq({"send", "open", "--to", kHelper, "--body-file", home_.path()}).code, 5);
    EXPECT_EQ(zq({"crypt", "hmac", "x", "--key-file", home_.path()}).code, 5);
}

}  // namespace
}  // namespace zqcore
