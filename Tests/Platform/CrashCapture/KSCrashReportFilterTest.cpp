#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/CrashCapture/KSCrashReportFilterAppleFmt.h"
#include "Platform/CrashCapture/KSCrashReportFilterPipeline.h"
#include "Platform/Foundation/JSON/NSJSONSerialization.h"
#include "TestKit/TimeZoneGuard.h"

namespace zqcore::platform {
namespace {

Value::Dictionary dictionary(std::string_view json) {
    auto value = NSJSONSerialization::JSONObject(json, 0);
    EXPECT_TRUE(value) << json;
    return value ? *value->asDictionary() : Value::Dictionary();
}

std::string text(std::string_view json,
                 KSAppleReportStyle style = KSAppleReportStyle::symbolicatedSideBySide) {
    return KSCrashReportFilterAppleFmt::appleText(dictionary(json), style);
}

constexpr std::string_view kFullReport = R"json({
"report":{"version":"3.3.0","id":"0E5C-ID","process_name":"Orbel","timestamp":"2021-03-04T05:06:07.123456Z","type":"standard"},
"system":{"system_name":"Debian GNU/Linux","system_version":"12","os_version":"6.1.0-40","machine":"Model 3,1",
  "cpu_arch":"x86_64","process_name":"Orbel","process_id":4711,"parent_process_id":12,"device_app_hash":"abc123",
  "CFBundleExecutablePath":"/opt/orbel/orbel","CFBundleExecutable":"orbel","CFBundleIdentifier":"com.example.orbel",
  "CFBundleVersion":"456","CFBundleShortVersionString":"1.2.3"},
"binary_images":[
  {"image_addr":139638282145792,"image_size":8192,"image_vmaddr":0,"name":"/usr/lib/libthing.so.1","uuid":"ABCDEF01-2345-6789-ABCD-EF0123456789","cpu_type":16777223,"cpu_subtype":3},
  {"image_addr":4194304,"image_size":4096,"image_vmaddr":0,"name":"/opt/orbel/orbel","uuid":"00112233445566778899aabbccddeeff","cpu_type":16777223,"cpu_subtype":3}],
"crash":{"error":{"type":"signal","address":16,"mach":{"exception":1,"exception_name":"EXC_BAD_ACCESS","code":1,"code_name":"KERN_INVALID_ADDRESS"},
    "signal":{"signal":11,"name":"SIGSEGV","code":1,"code_name":"SEGV_MAPERR"}},
  "threads":[
   {"index":1,"crashed":true,"current_thread":true,"name":"worker",
    "registers":{"basic":{"rip":4194560,"rax":1,"rbx":255,"rcx":0,"rdx":18446744073709551615,"r8":8}},
    "backtrace":{"skipped":0,"contents":[
     {"instruction_addr":4194560,"object_addr":4194304,"object_name":"/opt/orbel/orbel","symbol_addr":4194550,"symbol_name":"orbel::run()"},
     {"instruction_addr":139638282145802,"object_addr":139638282145792,"object_name":"/usr/lib/libthing.so.1"},
     {"instruction_addr":7}]}},
   {"index":0,"crashed":false,"current_thread":false,"dispatch_queue":"com.apple.main-thread","backtrace":{"skipped":0,"contents":[]}},
   {"index":2,"crashed":false,"current_thread":false}]},
"complete":true})json";

// Blanks at the ends of lines and empty lines are part of the form.
constexpr std::string_view kFullText =
    "Incident Identifier: 0E5C-ID\n"
    "CrashReporter Key:   abc123\n"
    "Hardware Model:      Model 3,1\n"
    "Process:             Orbel [4711]\n"
    "Path:                /opt/orbel/orbel\n"
    "Identifier:          com.example.orbel\n"
    "Version:             1.2.3 (456)\n"
    "Code Type:           X86_64\n"
    "Role:                Foreground\n"
    "Parent Process:      launchd [12]\n"
    "\n"
    "Date/Time:           2021-03-04 10:51:07.123 +0545\n"
    "OS Version:          Debian GNU/Linux 12 (6.1.0-40)\n"
    "Report Version:      104\n"
    "\n"
    "Exception Type:  EXC_BAD_ACCESS (SIGSEGV)\n"
    "Exception Codes: KERN_INVALID_ADDRESS at 0x0000000000000010\n"
    "Triggered by Thread:  1\n"
    "\n"
    "Thread 0 name:  Dispatch queue: com.apple.main-thread\n"
    "Thread 0:\n"
    "\n"
    "Thread 1 name:  worker\n"
    "Thread 1 Crashed:\n"
    "0   orbel                         \t0x0000000000400100 0x400000 + 256 (orbel::run() + 10)\n"
    "1   libthing.so.1                 \t0x00007f001234500a 0x7f0012345000 + 10\n"
    "2   (null)                        \t0x0000000000000007 0x0 + 7\n"
    "\n"
    "Thread 2:\n"
    "\n"
    "Thread 1 crashed with X86_64 Thread State:\n"
    "   rax: 0x0000000000000001    rbx: 0x00000000000000ff    rcx: 0x0000000000000000    rdx: "
    "0xffffffffffffffff \n"
    "    r8: 0x0000000000000008    rip: 0x0000000000400100 \n"
    "\n"
    "Binary Images:\n"
    "0x400000 - 0x400fff orbel x86_64  <00112233445566778899aabbccddeeff> /opt/orbel/orbel\n"
    "0x7f0012345000 - 0x7f0012346fff libthing.so.1 x86_64  <abcdef0123456789abcdef0123456789> "
    "/usr/lib/libthing.so.1\n"
    "\n"
    "EOF\n"
    "\n"
    "\n"
    "Extra Information:\n";

TEST(AppleFmt, WritesAReportLineByLine) {
    const testkit::TimeZoneGuard zone("Asia/Kathmandu");
    EXPECT_EQ(text(kFullReport), kFullText);
}

TEST(AppleFmt, WritesFramesByStyle) {
    struct Case {
        KSAppleReportStyle style;
        const char* own;
    };
    constexpr Case kCases[] = {
        {KSAppleReportStyle::unsymbolicated, "0x0000000000400100 0x400000 + 256\n"},
        {KSAppleReportStyle::partiallySymbolicated, "0x0000000000400100 0x400000 + 256\n"},
        {KSAppleReportStyle::symbolicated, "0x0000000000400100 orbel::run() + 10\n"}};
    for (const auto& [style, own] : kCases) {
        EXPECT_NE(text(kFullReport, style).find(own), std::string::npos) << static_cast<int>(style);
    }
}

TEST(AppleFmt, TellsWhyTheApplicationEndedItself) {
    struct Case {
        const char* error;
        const char* block;
    };
    const Case cases[] = {
        {R"({"type":"cpp_exception","reason":"no","cpp_exception":{"name":"Odd"}})",
         "Application Specific Information:\n*** Terminating app due to uncaught exception 'Odd', reason: "
         "'no'\n\n"},
        {R"({"type":"nsexception","reason":"no","nsexception":{"name":"NSRange"}})",
         "Application Specific Information:\n*** Terminating app due to uncaught exception 'NSRange', "
         "reason: "
         "'no'\n\n"},
        {R"({"type":"user","reason":"no","user_reported":{"name":"Own","backtrace":["a","b"]}})",
         "uncaught exception 'Own', reason: 'no'\nCustom Backtrace:\na\nb\n\n"},
        {R"({"type":"deadlock"})",
         "Application Specific Information:\nApplication main thread deadlocked\n\n"},
    };
    for (const auto& [error, block] : cases) {
        const std::string found = text(std::string("{\"crash\":{\"error\":") + error + "}}");
        EXPECT_NE(found.find(std::string("Triggered by Thread:  0\n\n")), std::string::npos);
        EXPECT_NE(found.find(block), std::string::npos) << found;
    }
    EXPECT_EQ(text(kFullReport).find("Application Specific"), std::string::npos) << "none for a signal";
}

TEST(AppleFmt, NamesArchitecturesAndOrdersTheirRegisters) {
    const std::pair<const char*, const char*> kTypes[] = {
        {"x86_64", "X86_64"}, {"arm64", "ARM-64"}, {"arm64e", "ARM-64 (Native)"}, {"armv7", "ARM"},
        {"i386", "X86"},      {"x86", "X86"},      {"riscv64", "Unknown"}};
    for (const auto& [architecture, type] : kTypes) {
        const std::string found = text(std::string("{\"system\":{\"cpu_arch\":\"") + architecture + "\"}}");
        EXPECT_NE(found.find(std::string("Code Type:           ") + type + "\n"), std::string::npos)
            << architecture;
    }
    const std::string arm =
        text(R"({"system":{"cpu_arch":"arm64"},"crash":{"threads":[{"index":0,"crashed":true,
        "registers":{"basic":{"pc":1,"x10":10,"x2":2,"sp":3,"x0":0}}}]}})");
    EXPECT_NE(
        arm.find("Thread 0 crashed with ARM-64 Thread State:\n"
                 "    x0: 0x0000000000000000     x2: 0x0000000000000002    x10: 0x000000000000000a     pc: "
                 "0x0000000000000001 \n    sp: 0x0000000000000003 \n"),
        std::string::npos)
        << arm;
}

TEST(AppleFmt, WritesWhatItCanOfAReportThatLacksEverything) {
    const std::string found = text("{}");
    EXPECT_NE(found.find("Incident Identifier: (null)\n"), std::string::npos);
    EXPECT_NE(found.find("Process:             (null) [(null)]\n"), std::string::npos);
    EXPECT_NE(found.find("Date/Time:           (null)\n"), std::string::npos);
    EXPECT_NE(found.find("Exception Type:  0 (0)\nException Codes: 0x00000000 at 0x0000000000000000\n"),
              std::string::npos);
    EXPECT_NE(found.find("Binary Images:\n\nEOF\n\n\nExtra Information:\n"), std::string::npos);
    // Kinds that nobody expects.
    EXPECT_FALSE(
        text(
            R"({"report":[],"system":7,"crash":{"threads":[1,{"backtrace":{"contents":["x",{}]}}],"error":""},
        "binary_images":{"a":1}})")
            .empty());
}

TEST(AppleFmt, AddsWhatOnlyThisSystemKnowsBehindTheEnd) {
    const std::string found = text(R"({"incomplete":true,"user":{"pending_log":"last line"},
        "recrash_report":{"crash":{"error":{"address":32,"reason":"pending log","signal":{"name":"SIGBUS"}}}}})");
    const std::string extra = found.substr(found.find("Extra Information:"));
    EXPECT_EQ(extra,
              "Extra Information:\n\nThe report is incomplete: its end is missing.\n\n"
              "Handler crashed while reporting: SIGBUS at 0x0000000000000020 in section 'pending log'\n\n"
              "Log lines that had not reached the file:\nlast line\n");
}

TEST(AppleFmt, KeepsOrderAndCount) {
    const KSCrashReports reports{KSCrashReportString::make("as it is"),
                                 KSCrashReportDictionary::make(dictionary(R"({"report":{"id":"one"}})")),
                                 nullptr};
    std::optional<KSCrashReports> result;
    KSCrashReportFilterAppleFmt::make(KSAppleReportStyle::symbolicated)
        ->filterReports(reports, [&](const auto& filtered, bool completed, const auto& error) {
            EXPECT_TRUE(completed);
            EXPECT_FALSE(error);
            result = filtered;
        });
    ASSERT_TRUE(result);
    ASSERT_EQ(result->size(), 3U);
    EXPECT_EQ((*result)[0], reports[0]);
    EXPECT_NE(dynamic_cast<KSCrashReportString&>(*(*result)[1]).value().find("one"), std::string::npos);
}

// A filter that notes its turn and answers as it is told.
class ProbeFilter final : public KSCrashReportFilter {
  public:
    ProbeFilter(std::string name, std::string& turns, bool completed, bool givesList)
        : name_(std::move(name)), turns_(turns), completed_(completed), givesList_(givesList) {}
    void filterReports(const KSCrashReports& reports,
                       const KSCrashReportFilterCompletion& onCompletion) override {
        turns_ += name_ + std::to_string(reports.size());
        KSCrashReports longer = reports;
        longer.push_back(KSCrashReportString::make(name_));
        onCompletion(givesList_ ? std::optional(longer) : std::nullopt, completed_,
                     completed_ ? std::nullopt : std::optional(NSError("Test", 1, name_)));
    }

  private:
    std::string name_;
    std::string& turns_;
    bool completed_;
    bool givesList_;
};

TEST(Pipeline, RunsTheFilterAddedLastFirstAndEndsAtAFailure) {
    struct Case {
        bool completed;
        bool givesList;
        const char* turns;
    };
    for (const auto& [completed, givesList, turns] :
         {Case{true, true, "c0b1a2"}, Case{false, true, "c0b1"}, Case{true, false, "c0b1"}}) {
        std::string found;
        const auto pipeline = KSCrashReportFilterPipeline::make();
        pipeline->addFilter(std::make_shared<ProbeFilter>("a", found, true, true));
        pipeline->addFilter(std::make_shared<ProbeFilter>("b", found, completed, givesList));
        pipeline->addFilter(std::make_shared<ProbeFilter>("c", found, true, true));
        int answers = 0;
        pipeline->filterReports({}, [&](const auto& filtered, bool all, const auto& error) {
            ++answers;
            EXPECT_EQ(all, completed && givesList);
            EXPECT_EQ(filtered.has_value(), givesList);
            EXPECT_EQ(error.has_value(), !completed);
        });
        EXPECT_EQ(found, turns);
        EXPECT_EQ(answers, 1);
    }
}

}  // namespace
}  // namespace zqcore::platform
