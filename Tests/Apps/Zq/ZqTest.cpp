// The command line against the two demonstration servers: real processes over a bus of the test's own.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "Classes/Core/Utility/Codable/JSONTool.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/PrivateBus.h"
#include "TestKit/Sanitized.h"
#include "TestKit/TemporaryHome.h"

namespace zqcore {
namespace {

using testkit::ChildProcess;
using testkit::PrivateBus;

constexpr const char* kHelper = "com.tessaradev.OrbelHelper";
constexpr const char* kOrbel = "com.tessaradev.Orbel";

class ZqTest : public testing::Test {
  protected:
    struct Ended {
        int code = -1;
        Value output;

        /// The value at a way of keys, null if there is none.
        [[nodiscard]] Value at(std::initializer_list<std::string_view> keys) const {
            const Value* value = &output;
            for (const auto key : keys) {
                const auto* dictionary = value->asDictionary();
                value = dictionary ? dictionary->find(key) : nullptr;
                if (!value) return {};
            }
            return *value;
        }
    };

    void SetUp() override {
        ASSERT_TRUE(bus_.running());
        bus_.addService(kHelper, app("orbel-helper") + " --current-app org.example.Editor,Editor,3.2");
        bus_.addService(kOrbel, app("orbel") + " --without ocr");
    }

    static std::string app(const std::string& name) { return std::string(ZQ_TEST_APPS) + "/" + name; }

    static Ended zq(std::vector<std::string> words) {
        words.insert(words.begin(), app("zq"));
        ChildProcess process(words);
        Ended ended;
        if (const auto line = process.readLine())
            ended.output = JSONTool::decodeToJSONObject(*line).value_or(*line);
        ended.code = process.wait();
        return ended;
    }

    /// `command` by the shell with `zq` in place of its path: what it says on standard error, line by line.
    static std::vector<std::string> said(const std::string& command) {
        ChildProcess process(
            {"/bin/bash", "-c", "zq() { " + app("zq") + " \"$@\"; }; { " + command + "; } 2>&1 >/dev/null"});
        std::vector<std::string> lines;
        while (auto line = process.readLine()) lines.push_back(*std::move(line));
        static_cast<void>(process.wait());
        return lines;
    }

    /// Waits until the helper's log file holds `text`: the lines get there behind the answers.
    static bool helperLogs(const std::string& text) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < end) {
            for (const auto& entry :
                 std::filesystem::recursive_directory_iterator(std::getenv("XDG_DATA_HOME"))) {
                const std::string path = entry.path();
                if (!path.ends_with(".log") || path.find("OrbelHelper") == std::string::npos) continue;
                if (testkit::contentOf(path).find(text) != std::string::npos) return true;
            }
            std::this_thread::yield();
        }
        return false;
    }

    // What the applications keep, a log level say, is no other test's.
    testkit::TemporaryHome home_;
    PrivateBus bus_;
};

TEST_F(ZqTest, TellsByItsExitCodeHowARequestEnded) {
    const auto info = zq({"info", "--to", kHelper});
    EXPECT_EQ(info.code, 0);
    EXPECT_EQ(info.at({"status"}), Value("success"));
    EXPECT_EQ(info.at({"response", "server", "identifier"}), Value(kHelper));
    EXPECT_EQ(info.at({"response", "requestId"}), info.at({"request", "requestId"}));

    const auto unknown = zq({"send", "nowhere", "--to", kHelper, "--body", R"({"any":[1,null]})"});
    EXPECT_EQ(unknown.code, 1) << "the answer holds an error";
    EXPECT_EQ(unknown.at({"request", "path"}), Value("nowhere"));
    EXPECT_EQ(unknown.at({"response", "error", "code"}), Value("unsupportedPath"));

    EXPECT_EQ(zq({"send", "info"}).code, 2) << "nobody is addressed";
    EXPECT_EQ(zq({"send", "open", "--to", kHelper, "--body", "{no JSON"}).code, 2);
    EXPECT_EQ(zq({"send", "toggle", "--to", kHelper, "--body", "{}"}).code, 2) << "that request has no body";
    EXPECT_EQ(zq({"send", "open", "--to", kHelper, "--body", R"({"page":"main"},"requestId":"x")"}).code, 2)
        << "a body is one JSON value";
    const auto absent = zq({"info", "--to", "org.example.Absent"});
    EXPECT_EQ(absent.code, 3);
    EXPECT_EQ(absent.at({"status"}), Value("notInstalled"));
    EXPECT_EQ(zq({"send", "open", "--to", kHelper, "--body-file", "/nowhere/at/all"}).code, 5);
    const auto late = zq({"info", "--to", kHelper, "--timeout", "1e-9"});
    EXPECT_EQ(late.code, 4);
    EXPECT_EQ(late.at({"status"}), Value("noAnswerInTime"));
    EXPECT_EQ(late.at({"request", "path"}), Value("info"));
    for (const char* identifier : {"", "not a name", "a/b"})
        EXPECT_EQ(zq({"info", "--to", identifier}).code, 2) << identifier;
    EXPECT_EQ(zq({"info", "--to", kHelper, "--timeout", "1e300"}).code, 0) << "longer than any clock counts";
}

TEST_F(ZqTest, SaysInASentenceWhyARequestCameToNothing) {
    const std::string old = bus_.directory() / "old";
    std::filesystem::create_directory(old);
    std::filesystem::copy_file(app("orbel"), old + "/orbel");
    std::ofstream(old + "/Info.plist")
        << "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>org.example.Old</string>"
           "<key>CFBundleShortVersionString</key><string>1.4.0</string></dict></plist>";
    bus_.addService("org.example.Old", old + "/orbel --without translate");
    struct Case {
        const char* words;
        const char* line;
    };
    for (const auto& [words, line] :
         {Case{"translate --to org.example.Old --body '{}'",
               "zq: org.example.Old is too old for the request translate: it is 1.4.0, not 1.5.0"},
          Case{"info --to org.example.Absent", "zq: org.example.Absent isn't installed"},
          Case{"info --to com.tessaradev.Orbel --via script",
               "zq: the user script isn't installed; zq install-script does it"},
          Case{"translate --to com.tessaradev.Orbel --body '{\"action\":\"translateText\"}'",
               "zq: the answer is an error: invalidParameter, "},
          Case{"open --to com.tessaradev.OrbelHelper --body '{'",
               "zq: the body is no JSON: expected a key (byte 1)"},
          Case{"open --to com.tessaradev.OrbelHelper --body ''", "zq: the body is no JSON: "},
          Case{"nowhere --to com.tessaradev.OrbelHelper --body x", "zq: the body is no JSON: "},
          Case{"hotkey --to com.tessaradev.OrbelHelper --body '{\"hotkeys\":[{\"modifiers\":\"x\"}]}'",
               "zq: the body doesn't fit the request hotkey: hotkeys[0].modifiers: expected an integer"},
          Case{"", "zq: PATH is missing; try --help"}}) {
        const auto lines = said("zq send " + std::string(words));
        ASSERT_EQ(lines.size(), 1U) << words;
        EXPECT_TRUE(lines[0].starts_with(line)) << lines[0];
    }
}

TEST_F(ZqTest, TellsWhatOfABodyIsNotSentAsItStandsThere) {
    const std::string body = R"({"action":"regster","colour":1,"none":null,)"
                             R"("hotkeys":[{"identifier":"a","modifiers":1.0,"size":{}}]})";
    const auto lines = said("zq send hotkey --via distributed --body '" + body + "'");
    const std::vector<std::string> told{R"(zq: action: "regster" is sent as "unknown")",
                                        "zq: the request has no field colour; it is not sent",
                                        "zq: the request has no field hotkeys[0].size; it is not sent"};
    EXPECT_EQ(lines, told);
    EXPECT_EQ(said("zq send hotkey --via distributed --body '{\"action\":\"unknown\"}'"),
              std::vector<std::string>{});
}

TEST_F(ZqTest, ABroadcastThatTheBusRefusesIsNotSaidToBePosted) {
    const auto file = bus_.directory() / "body.json";
    std::ofstream(file) << R"({"text":")" << std::string(65 << 20, 'A') << R"("})";
    const auto sent =
        zq({"send", "translate", "--via", "distributed", "--body-file", file.string(), "--brief"});
    EXPECT_EQ(sent.code, 3);
    EXPECT_EQ(sent.at({"status"}), Value("fail"));
}

TEST_F(ZqTest, StandardOutputIsForResultsAlone) {
    // The library tells there which folders it can't make.
    ChildProcess process({"/usr/bin/env", "XDG_DATA_HOME=/proc/none", app("zq"), "info", "--to", kHelper});
    const auto first = JSONTool::decodeToJSONObject(process.readLine().value_or(""));
    EXPECT_EQ(process.wait(), 0);
    ASSERT_TRUE(first && first->asDictionary());
    EXPECT_TRUE(first->asDictionary()->find("status"));
}

TEST_F(ZqTest, WithoutABusNothingIsSaidToBeSentOrHeard) {
    const testkit::NoBus none;
    EXPECT_EQ(zq({"info", "--to", kHelper}).code, 3);
    EXPECT_EQ(zq({"send", "launch", "--via", "distributed"}).code, 3);
    EXPECT_EQ(zq({"listen", "--count", "1", "--timeout", "60"}).code, 3);
}

TEST_F(ZqTest, AServerRefusesOptionsThatItDoesNotKnow) {
    for (const auto& words : {std::vector<std::string>{"--end-with", "x"}, {"--without"}, {"--allow"}}) {
        std::vector<std::string> line{app("orbel")};
        line.insert(line.end(), words.begin(), words.end());
        EXPECT_EQ(ChildProcess(line).wait(), 2) << words[0];
    }
    const auto tail = [](const std::string& words) {
        const auto lines = said(app("orbel-helper") + " " + words);
        return lines.size() == 1 ? lines[0].substr(lines[0].find(": ") + 2) : "several lines";
    };
    EXPECT_EQ(tail("--end-with abc"), "--end-with wants the number of a process, not \"abc\"");
    EXPECT_EQ(tail("--current-app"), "--current-app wants a value");
    EXPECT_EQ(tail("--allow x"), "what is \"--allow\"? --help tells the options");
}

TEST_F(ZqTest, TheHelperKeepsItsState) {
    const auto state = [](const Ended& ended) { return ended.at({"response", "body", "state"}); };
    EXPECT_EQ(state(zq({"send", "toggle", "--to", kHelper})), Value(true));
    EXPECT_EQ(state(zq({"send", "toggle", "--to", kHelper})), Value(false));

    const auto hotkey = [](const std::string& body) {
        return zq({"send", "hotkey", "--to", kHelper, "--body", body});
    };
    const auto count = [](const std::string& body) {
        const Value found =
            zq({"send", "hotkey/fetch", "--to", kHelper, "--body", body}).at({"response", "body", "hotkeys"});
        return found.asArray() ? static_cast<int>(found.asArray()->size()) : -1;
    };
    EXPECT_EQ(
        hotkey(
            R"({"action":"register","hotkeys":[{"identifier":"a","key":"A"},{"identifier":"b","key":"B"}]})")
            .code,
        0);
    EXPECT_EQ(count(R"({"fetchAll":true})"), 2);
    EXPECT_EQ(count(R"({"identifiers":["b","c"]})"), 1);
    EXPECT_EQ(
        hotkey(R"({"action":"register","hotkeys":[{"identifier":"c","key":"C"},{"identifier":"d"}]})").code,
        1)
        << "one without a key refuses them all";
    EXPECT_EQ(count(R"({"fetchAll":true})"), 2);
    EXPECT_EQ(hotkey(R"({"action":"dance"})").code, 1) << "an unsupported action is answered with an error";
    EXPECT_EQ(hotkey(R"({"action":"unregisterAll"})").code, 0);
    EXPECT_EQ(count(R"({"fetchAll":true})"), 0);

    EXPECT_EQ(zq({"send", "current/app", "--to", kHelper}).at({"response", "body", "app", "version"}),
              Value("3.2"));
    const auto text = zq({"send", "selected/text", "--to", kHelper, "--body", R"({"location":[12.5,30]})"});
    EXPECT_EQ(text.at({"response", "body", "status"}), Value(10)) << "no text was told at the start";
}

TEST_F(ZqTest, TheHelperRemembersItsPage) {
    const auto open = [](const std::string& page) {
        return zq({"send", "open", "--to", kHelper, "--body", R"({"page":")" + page + R"("})"}).code;
    };
    EXPECT_EQ(open("preference"), 0);
    EXPECT_TRUE(helperLogs("page preference is open, main was before"));
    EXPECT_EQ(open("main"), 0);
    EXPECT_TRUE(helperLogs("page main is open, preference was before"));
}

TEST_F(ZqTest, AServerThatCrashesIsStartedAgainAndItsReportIsFound) {
    if (testkit::kSanitized) GTEST_SKIP() << "a sanitizer takes the fatal signals for itself";
    EXPECT_EQ(zq({"send", "debug/crash", "--to", kHelper, "--body", "{}"}).at({"response", "error", "code"}),
              Value("unsupportedPath"))
        << "a server that wasn't started for it never heard of that";
    bus_.addService(kOrbel, app("orbel") + " --allow-crash --without ocr");
    const auto orbel = [](std::vector<std::string> words) {
        words.insert(words.end(), {"--to", kOrbel});
        return zq(std::move(words));
    };
    const Value first = orbel({"info"}).at({"response", "server", "pid"});
    EXPECT_EQ(orbel({"send", "debug/crash", "--body", R"({"fault":"boredom"})"}).code, 1);
    EXPECT_EQ(orbel({"send", "debug/crash", "--body", R"({"fault":"abort","stallLog":true})"}).code, 3);
    const Value second = orbel({"info"}).at({"response", "server", "pid"});
    EXPECT_TRUE(second.asInt64() && first.asInt64() && second != first);
    const auto shown = orbel({"crash", "show", "--brief"});
    EXPECT_EQ(shown.at({"exceptionType"}), Value("EXC_CRASH (SIGABRT)"));
    ASSERT_TRUE(shown.at({"pendingLog"}).asArray());
    EXPECT_EQ(shown.at({"pendingLog"}).asArray()->size(), 3U);
}

TEST_F(ZqTest, AServerThatNeverHeardOfARequestSaysSo) {
    const auto refused = zq({"send", "ocr", "--to", kOrbel, "--body", R"({"action":"snipOCR"})"});
    EXPECT_EQ(refused.at({"response", "error", "code"}), Value("unsupportedPath"));
    EXPECT_EQ(
        zq({"send", "translate", "--to", kOrbel, "--body", R"({"action":"translateText","text":"a"})"}).code,
        0);
    EXPECT_EQ(zq({"send", "translate", "--to", kOrbel, "--body", R"({"action":"translateText"})"}).code, 1);
}

TEST_F(ZqTest, AServerThatTheBusStartedEndsWithIt) {
    // A session of its own ends with its one program; what it started would hold the pipe open.
    ChildProcess session({"dbus-run-session", "--", app("zq"), "info", "--to", kHelper});
    const auto answer = JSONTool::decodeToJSONObject(session.readLine().value_or(""));
    ASSERT_TRUE(answer && answer->asDictionary());
    EXPECT_EQ(*answer->asDictionary()->find("status"), Value("success"));
    EXPECT_EQ(session.readLine(), std::nullopt);
    EXPECT_EQ(session.wait(), 0);
}

TEST_F(ZqTest, TheUserScriptCarriesSmallAndLargeTexts) {
    EXPECT_EQ(zq({"info", "--to", kHelper, "--via", "script"}).at({"status"}),
              Value("notInstalledAppleScript"));
    EXPECT_EQ(zq({"install-script", "--yes"}).at({"status"}), Value("success"));
    EXPECT_EQ(zq({"info", "--to", kHelper, "--via", "script"}).code, 0);
    const auto refused = said("echo n | zq install-script");
    ASSERT_FALSE(refused.empty());
    EXPECT_TRUE(refused.back().ends_with("zq: nothing was changed: the script that was there stays"))
        << refused.back();
    for (const std::string& line : said("echo y | zq install-script"))
        EXPECT_EQ(line.find("nothing was changed"), std::string::npos) << "it was replaced";

    const auto file = bus_.directory() / "body.json";
    std::ofstream(file) << R"({"action":"translateImage","imageBase64":")" << std::string(4 << 20, 'A')
                        << R"("})";
    for (const char* carrier : {"script", "bridge"}) {
        const auto sent = zq(
            {"send", "translate", "--to", kOrbel, "--via", carrier, "--body-file", file.string(), "--brief"});
        EXPECT_EQ(sent.code, 0) << carrier;
    }
}

TEST_F(ZqTest, RelayHandsTextsThroughAsTheyAre) {
    ChildProcess process(
        {"/bin/sh", "-c", "printf 'no JSON' | " + app("zq") + " relay " + kHelper + " && echo"});
    const auto answer = JSONTool::decodeToJSONObject(process.readLine().value_or(""));
    EXPECT_EQ(process.wait(), 0);
    ASSERT_TRUE(answer && answer->asDictionary());
    const Value* error = answer->asDictionary()->find("error");
    ASSERT_TRUE(error);
    EXPECT_EQ(*error->asDictionary()->find("code"), Value("invalidParameter"));
    EXPECT_EQ(zq({"relay", "org.example.Absent"}).code, 3);
    for (const char* input : {"</", "<&-"}) {
        const std::string command = app("zq") + " relay " + kHelper + " " + input;
        EXPECT_EQ(ChildProcess({"/bin/sh", "-c", command}).wait(), 5) << input;
    }
}

TEST_F(ZqTest, ABroadcastIsHeardOnceListeningIsSaid) {
    ChildProcess listener({"/bin/sh", "-c", "exec " + app("zq") + " listen --count 1 --timeout 60 2>&1"});
    ASSERT_EQ(listener.readLine(), "listening");
    EXPECT_EQ(zq({"send", "launch", "--via", "distributed"}).at({"status"}), Value("posted"));
    const auto line = JSONTool::decodeToJSONObject(listener.readLine().value_or(""));
    ASSERT_TRUE(line && line->asDictionary());
    EXPECT_EQ(*line->asDictionary()->find("from"), Value("com.tessaradev.zq"));
    EXPECT_EQ(listener.wait(), 0);
}

TEST_F(ZqTest, ARunningServerHearsBroadcasts) {
    EXPECT_EQ(zq({"info", "--to", kHelper}).code, 0);
    EXPECT_EQ(zq({"info", "--via", "distributed"}).at({"status"}), Value("posted"));
    EXPECT_TRUE(helperLogs("com.tessaradev.zq asks who is there: OrbelHelper 0.2.0"));
    EXPECT_EQ(zq({"send", "launch", "--via", "distributed"}).at({"status"}), Value("posted"));
    EXPECT_TRUE(helperLogs("launched by com.tessaradev.zq"));
}

TEST_F(ZqTest, AListenerThatCanNotWriteSaysSoAndEnds) {
    ChildProcess listener({"/bin/sh", "-c", "exec " + app("zq") + " listen --timeout 60 2>&1 >/dev/full"});
    ASSERT_EQ(listener.readLine(), "listening");
    EXPECT_EQ(zq({"send", "launch", "--via", "distributed"}).code, 0);
    EXPECT_EQ(listener.readLine(), "zq: can't write the result");
    EXPECT_EQ(listener.wait(), 5);
}

TEST_F(ZqTest, AListenerTellsHowManyItMissed) {
    EXPECT_EQ(zq({"listen", "--count", "0.5", "--timeout", "1e-3"}).code, 2);
    EXPECT_EQ(said("zq listen --count 2 --timeout 1e-3"),
              (std::vector<std::string>{"listening", "zq: heard 0 of 2 requests within 0.001 seconds"}));
}

TEST_F(ZqTest, AListenerEndsWithItsBus) {
    ChildProcess listener({"/bin/sh", "-c", "exec " + app("zq") + " listen --timeout 60 2>&1"});
    ASSERT_EQ(listener.readLine(), "listening");
    bus_.stop();
    EXPECT_EQ(listener.readLine(), "zq: the session bus is gone");
    EXPECT_EQ(listener.wait(), 3);
}

TEST_F(ZqTest, TheLogLevelOfAnApplicationIsKeptInItsSettings) {
    EXPECT_EQ(zq({"log", "level", "--to", kHelper}).at({"level"}), Value());
    EXPECT_EQ(zq({"log", "level", "31", "--to", kHelper}).at({"level"}), Value(31));
    EXPECT_EQ(zq({"log", "level", "--to", kHelper}).at({"level"}), Value(31));
    EXPECT_EQ(zq({"log", "level"}).at({"level"}), Value()) << "each application has its own";
    EXPECT_EQ(zq({"log", "level", "loud"}).code, 2);
    EXPECT_EQ(zq({"log", "level", "32", "--to", kHelper}).code, 2);
    EXPECT_EQ(zq({"log", "level", "--to", kHelper}).at({"level"}), Value(31))
        << "what was refused is not stored";
}

TEST_F(ZqTest, ListsEveryRequestWithItsFields) {
    const auto all = zq({"list"});
    ASSERT_TRUE(all.output.asArray());
    EXPECT_EQ(all.output.asArray()->size(), 12U);
    const auto one = zq({"list", "current/app"});
    ASSERT_TRUE(one.output.asArray() && one.output.asArray()->size() == 1);
    const auto& fields = *(*one.output.asArray())[0].asDictionary();
    EXPECT_EQ(*fields.find("minVersion"), Value("0.1.0"));
    EXPECT_TRUE(fields.find("request")->asDictionary()->find("body.location"));
    EXPECT_EQ(zq({"list", "nowhere"}).code, 1);
}

}  // namespace
}  // namespace zqcore
