#include "Platform/Scripting/NSUserAppleScriptTask.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>

#include "Classes/Core/Extension/NSAppleEventDescriptorExtension.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore {
namespace {

using testkit::ScratchFolder;

struct Outcome {
    std::shared_ptr<NSAppleEventDescriptor> result;
    std::optional<NSError> error;

    [[nodiscard]] std::optional<std::string> text() const {
        return result ? result->stringValue() : std::nullopt;
    }
};

std::shared_ptr<NSAppleEventDescriptor> callOf(std::string handler, std::vector<std::string> texts) {
    std::vector<std::shared_ptr<NSAppleEventDescriptor>> parameters;
    for (auto& text : texts)
        parameters.push_back(NSAppleEventDescriptor::descriptorWithString(std::move(text)));
    return zq_eventDescriptior(std::move(handler), std::move(parameters));
}

Outcome runEvent(const std::string& path, std::shared_ptr<NSAppleEventDescriptor> event) {
    const auto task = NSUserAppleScriptTask::make(NSURL::fileURLWithPath(path));
    if (!task) return {nullptr, task.error()};
    std::promise<Outcome> promise;
    (*task)->executeWithAppleEvent(std::move(event), [&](auto result, auto error) {
        EXPECT_FALSE(isMainThread());
        EXPECT_NE(result == nullptr, !error.has_value());
        promise.set_value({std::move(result), std::move(error)});
    });
    return promise.get_future().get();
}

Outcome run(const std::string& path, std::vector<std::string> texts) {
    return runEvent(path, callOf("send", std::move(texts)));
}

TEST(NSAppleEventDescriptorTest, TheSubroutineEventHasItsExactForm) {
    const auto event = callOf("send", {"one", "two"});
    EXPECT_EQ(event->eventClass(), 0x61736372U);
    EXPECT_EQ(event->eventID(), 0x70736272U);
    EXPECT_EQ(event->returnID(), -1);
    EXPECT_EQ(event->transactionID(), 0);
    ASSERT_TRUE(event->targetDescriptor());
    EXPECT_EQ(event->targetDescriptor()->descriptorType(), 0x70736E20U);
    const std::uint32_t numbers[] = {0, 2};
    EXPECT_EQ(event->targetDescriptor()->data(), std::string_view(reinterpret_cast<const char*>(numbers), 8));
    EXPECT_EQ(event->paramDescriptorForKeyword(0x736E616D)->stringValue(), "send");
    const auto list = event->paramDescriptorForKeyword(0x2D2D2D2D);
    ASSERT_EQ(list->numberOfItems(), 2U);
    EXPECT_EQ(list->descriptorAtIndex(1)->stringValue(), "one");
    EXPECT_EQ(list->descriptorAtIndex(2)->stringValue(), "two");
    EXPECT_EQ(list->stringValue(), std::nullopt);
    EXPECT_EQ(callOf("send", {})->paramDescriptorForKeyword(kKeyDirectObject), nullptr);
}

TEST(NSAppleEventDescriptorTest, NumbersCoerceToText) {
    const auto bytes = [](auto number) {
        return std::string(reinterpret_cast<const char*>(&number), sizeof number);
    };
    const auto text = [](const char(&type)[5], std::string data) {
        return NSAppleEventDescriptor::make(fourCharCode(type), std::move(data))->stringValue();
    };
    EXPECT_EQ(text("long", bytes(std::int32_t{-7})), "-7");
    EXPECT_EQ(text("comp", bytes(std::int64_t{1} << 40)), "1099511627776");
    EXPECT_EQ(text("doub", bytes(1.5)), "1.5");
    EXPECT_EQ(text("bool", std::string(1, '\1')), "true");
    EXPECT_EQ(text("long", "abc"), std::nullopt) << "too few bytes";
    EXPECT_EQ(text("rdat", "abc"), std::nullopt);
    EXPECT_EQ(text("null", ""), std::nullopt);
}

TEST(NSUserAppleScriptTaskTest, GivesTheScriptItsArgumentsAndTakesItsOutput) {
    const ScratchFolder folder;
    const auto script = folder.script("a b.sh", R"(printf '%s|' "$#" "$@"; cat)");
    EXPECT_EQ(run(script, {"x y", "", "\u4E2D'\"$"}).text(), "4|send|x y||\u4E2D'\"$|");
    EXPECT_EQ(runEvent(script, callOf("other", {})).text(), "1|other|");
}

TEST(NSUserAppleScriptTaskTest, TheScriptKnowsTheFolderOfThisApplicationAndOfNoOther) {
    const ScratchFolder folder;
    // As in an application that another one's script has started.
    ::setenv("ZQ_APPLICATION_DIRECTORY", "/of/another", 1);
    ::setenv("ZQ_APPLICATION", "a name that begins alike", 1);
    const auto script = folder.script("a", R"(printf '%s|' "$ZQ_APPLICATION_DIRECTORY" "$ZQ_APPLICATION")");
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path().string();
    EXPECT_EQ(run(script, {}).text(), here + "|a name that begins alike|");
    ::unsetenv("ZQ_APPLICATION_DIRECTORY");
    ::unsetenv("ZQ_APPLICATION");
}

TEST(NSUserAppleScriptTaskTest, OneFinalLineEndIsNoPartOfTheResult) {
    const ScratchFolder folder;
    EXPECT_EQ(run(folder.script("a", "printf 'x\\n\\n'"), {}).text(), "x\n");
    EXPECT_EQ(run(folder.script("b", "echo"), {}).text(), "");
    EXPECT_EQ(run(folder.script("c", "exit 0"), {}).text(), "");
    const auto bytes = run(folder.script("d", R"(printf '\377')"), {});
    ASSERT_TRUE(bytes.result);
    EXPECT_EQ(bytes.text(), std::nullopt) << "what is no UTF-8 is no text";
}

TEST(NSUserAppleScriptTaskTest, LargeTextsTravelByStandardInputBothWays) {
    const ScratchFolder folder;
    const auto script = folder.script("echo", R"(printf '%s|' "$2" "$3"; cat)");
    std::string large(20 * 1024 * 1024, 'x');
    for (std::size_t i = 0; i < large.size(); i += 97) large[i] = static_cast<char>('a' + i % 26);
    const auto outcome = run(script, {"id", large});
    ASSERT_TRUE(outcome.result) << outcome.error->description();
    EXPECT_TRUE(outcome.text() == "id|-|" + large);
    EXPECT_EQ(run(script, {std::string(300, 'a'), std::string(257, 'b')}).text(),
              "-|" + std::string(257, 'b') + "|" + std::string(300, 'a'))
        << "the longest goes";
    EXPECT_EQ(run(script, {"-", std::string(256, 'b')}).text(), "-|" + std::string(256, 'b') + "|-");
}

TEST(NSUserAppleScriptTaskTest, ErrorsCarryTheScriptsNumber) {
    const ScratchFolder folder;
    const struct {
        const char* body;
        long code;
        const char* text;
    } cases[] = {
        {"echo noise >&2; echo 'error -1743: not allowed' >&2; exit 1", -1743, "not allowed"},
        {"echo 'error 42:' >&2; exit 3", 42, ""},
        {"echo 'error 5: first' >&2; echo 'other' >&2; exit 1", -2700, "other"},
        {"echo 'error x: y' >&2; exit 1", -2700, "error x: y"},
        {"echo result; exit 7", -2700, "The script ended with status 7."},
        {"kill -KILL $$", -2700, "The script was ended by signal 9."},
        {"yes 'many lines' | head -n 300000 >&2; echo 'error -600: gone' >&2; exit 1", -600, "gone"},
    };
    for (const auto& [body, code, text] : cases) {
        const auto outcome = run(folder.script("fails", body), {"id"});
        ASSERT_TRUE(outcome.error) << body;
        EXPECT_EQ(outcome.error->code(), code) << body;
        EXPECT_EQ(outcome.error->localizedDescription(), text);
    }
    EXPECT_EQ(run(folder.script("warns", "echo 'error -1743: x' >&2; echo fine"), {}).text(), "fine");
}

TEST(NSUserAppleScriptTaskTest, WhatCanNotBeRunIsAnError) {
    const ScratchFolder folder;
    EXPECT_EQ(run(folder / "missing", {}).error->code(), 260);
    EXPECT_EQ(run(folder.path(), {}).error->code(), 260);
    EXPECT_EQ(run(folder.write("plain", "#!/bin/sh\n"), {}).error->code(), EACCES);
    EXPECT_EQ(run(folder.write("bad", "#!/no/such/shell\n", 0755), {}).error->code(), ENOENT);
    const auto script = folder.script("fine", "echo fine");
    EXPECT_EQ(runEvent(script, NSAppleEventDescriptor::make(fourCharCode("aevt"), fourCharCode("oapp"),
                                                            nullptr, 0, 0))
                  .error->code(),
              -1708);
    EXPECT_EQ(runEvent(script, zq_eventDescriptior("send", {NSAppleEventDescriptor::listDescriptor()}))
                  .error->code(),
              -1700);
    EXPECT_EQ(run(script, {"-", std::string("a\0b", 3)}).error->code(), -1700);
}

TEST(NSUserAppleScriptTaskTest, ATaskRunsOnce) {
    const ScratchFolder folder;
    const auto log = folder / "log";
    const auto task =
        *NSUserAppleScriptTask::make(NSURL::fileURLWithPath(folder.script("s", "echo run >>" + log)));
    std::promise<void> first;
    std::promise<std::optional<NSError>> second;
    task->executeWithAppleEvent(callOf("send", {}), [&](auto, auto) { first.set_value(); });
    task->executeWithAppleEvent(callOf("send", {}),
                                [&](auto, auto error) { second.set_value(std::move(error)); });
    EXPECT_TRUE(second.get_future().get());
    first.get_future().get();
    EXPECT_EQ(testkit::contentOf(log), "run\n");
}

TEST(NSUserAppleScriptTaskTest, AScriptThatReadsNothingDoesNoHarm) {
    const ScratchFolder folder;
    const auto script = folder.script("deaf", "exec <&-; echo done");
    ::signal(SIGPIPE, SIG_DFL);  // whoever started the tests may ignore it
    for (int i = 0; i < 20; ++i) EXPECT_EQ(run(script, {"id", std::string(4 << 20, 'x')}).text(), "done");
}

TEST(NSUserAppleScriptTaskTest, WhatRunsOnInTheBackgroundIsNotWaitedFor) {
    const ScratchFolder folder;
    const auto fifo = folder / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    // The child in the background keeps the standard output open until the test lets it go.
    const auto script = folder.script("forks", "(read line <" + fifo + ") & echo answer");
    EXPECT_EQ(run(script, {}).text(), "answer");
    std::ofstream(fifo) << "go\n";
}

TEST(NSUserAppleScriptTaskTest, LeavesNoZombieAndPassesNoDescriptorOn) {
    const ScratchFolder folder;
    const int leaky = ::dup2(STDERR_FILENO, 200);  // without close-on-exec
    const auto text = run(folder.script("lists", "echo /proc/self/fd/*"), {}).text();
    ::close(leaky);
    ASSERT_TRUE(text);
    EXPECT_TRUE(text->starts_with("/proc/self/fd/0 ")) << *text;
    EXPECT_EQ(text->find("/200"), std::string::npos) << *text;
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(errno, ECHILD);
}

TEST(NSUserAppleScriptTaskTest, ScriptsStartWithPlainSignals) {
    const ScratchFolder folder;
    ::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(run(folder.script("dies", "kill -PIPE $$; echo alive"), {}).error->localizedDescription(),
              "The script was ended by signal 13.");
    ::signal(SIGPIPE, SIG_DFL);
}

TEST(NSUserAppleScriptTaskTest, WorksWithChildrenReapedBySomebodyElse) {
    const ScratchFolder folder;
    ::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(run(folder.script("a", "echo fine"), {}).text(), "fine");
    EXPECT_EQ(run(folder.script("b", "echo 'error -1743: no' >&2; exit 1"), {}).error->code(), -1743);
    ::signal(SIGCHLD, SIG_DFL);
}

}  // namespace
}  // namespace zqcore
