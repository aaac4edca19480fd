// The Apple form of a crash report: columns, blanks and empty lines are what its readers count on.
#include "Platform/CrashCapture/AppleText.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>
#include <optional>
#include <vector>

#include "Platform/Foundation/NSDateFormatter.h"
#include "Platform/Foundation/NSPath.h"

namespace zqcore::platform::crash {

namespace {

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
    std::array<char, 128> text;
    const int length = std::snprintf(text.data(), text.size(), format, arguments...);
    return {text.data(), static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(text.size()) - 1))};
}

std::string unpadded(std::uint64_t address) { return formatted("0x%" PRIx64, address); }
std::string padded(std::uint64_t address) { return formatted("0x%016" PRIx64, address); }

std::string leftIn(std::string text, std::size_t columns) {
    if (text.size() < columns) text.append(columns - text.size(), ' ');
    return text;
}

std::string rightIn(const std::string& text, std::size_t columns) {
    return text.size() < columns ? std::string(columns - text.size(), ' ') + text : text;
}

std::string headerLine(const std::string& title, const std::string& value) {
    return leftIn(title + ":", 21) + value + "\n";
}

std::string dateText(const ReportFields& report) {
    const std::string* timestamp = report.in("report").text("timestamp");
    if (!timestamp) return "(null)";
    NSDateFormatter reader;
    reader.setDateFormat("yyyy'-'MM'-'dd'T'HH':'mm':'ss'.'SSSSSS'Z'");
    reader.setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(0));
    const std::optional<Date> date = reader.dateFromString(*timestamp);
    if (!date) return "(null)";
    NSDateFormatter writer;
    writer.setDateFormat("yyyy-MM-dd HH:mm:ss.SSS ZZZ");
    return writer.stringFromDate(*date);
}

std::string fileName(const std::string* path) { return path ? lastPathComponent(*path) : "(null)"; }

std::string tailText(const ReportFields& frame, KSAppleReportStyle style, const std::string* ownName) {
    const std::uint64_t address = frame.number("instruction_addr");
    const std::uint64_t base = frame.number("object_addr");
    std::string place = unpadded(base) + " + " + std::to_string(address - base);
    const std::string* symbol = frame.text("symbol_name");
    if (!symbol || style == KSAppleReportStyle::unsymbolicated) return place;
    const std::string name = *symbol + " + " + std::to_string(address - frame.number("symbol_addr"));
    if (style == KSAppleReportStyle::symbolicatedSideBySide) return place + " (" + name + ")";
    const bool isOwn = ownName && fileName(frame.text("object_name")) == *ownName;
    return style == KSAppleReportStyle::partiallySymbolicated && isOwn ? place : name;
}

std::string backtraceText(const ReportFields& backtrace, KSAppleReportStyle style,
                          const std::string* ownName) {
    std::string text;
    std::size_t index = 0;
    for (const Value& entry : backtrace.list("contents")) {
        const ReportFields frame(entry.asDictionary());
        text += leftIn(std::to_string(index++), 4) + leftIn(fileName(frame.text("object_name")), 30) + "\t" +
                padded(frame.number("instruction_addr")) + " " + tailText(frame, style, ownName) + "\n";
    }
    return text;
}

std::vector<ReportFields> threadsOf(const ReportFields& crash) {
    std::vector<ReportFields> threads;
    for (const Value& entry : crash.list("threads")) threads.emplace_back(entry.asDictionary());
    std::ranges::sort(threads, {}, [](const ReportFields& thread) { return thread.number("index"); });
    return threads;
}

std::string threadText(const ReportFields& thread, KSAppleReportStyle style, const std::string* ownName) {
    const std::string title = "Thread " + std::to_string(thread.number("index"));
    std::string text;
    if (const std::string* name = thread.text("name")) {
        text += title + " name:  " + *name + "\n";
    } else if (const std::string* queue = thread.text("dispatch_queue")) {
        text += title + " name:  Dispatch queue: " + *queue + "\n";
    }
    text += title + (thread.isTrue("crashed") ? " Crashed:\n" : ":\n");
    return text + backtraceText(thread.in("backtrace"), style, ownName);
}

std::optional<ReportFields> crashedThread(const ReportFields& report) {
    for (const ReportFields& thread : threadsOf(report.in("crash"))) {
        if (thread.isTrue("crashed")) return thread;
    }
    return std::nullopt;
}

std::string architectureText(const ReportFields& image) {
    constexpr std::uint64_t kX86 = 7;
    constexpr std::uint64_t kArm = 12;
    constexpr std::uint64_t k64Bit = 0x0100'0000;
    constexpr std::uint64_t kArm64e = 2;
    switch (image.number("cpu_type")) {
        case kX86:
            return "i386";
        case kX86 | k64Bit:
            return "x86_64";
        case kArm:
            return "arm";
        case kArm | k64Bit:
            return image.number("cpu_subtype") == kArm64e ? "arm64e" : "arm64";
        default:
            return "unknown";
    }
}

std::vector<std::string> registerOrder(const std::string& type, const Value::Dictionary& registers) {
    if (type == "X86_64") {
        return {"rax", "rbx", "rcx", "rdx", "rdi", "rsi", "rbp",    "rsp", "r8", "r9", "r10",
                "r11", "r12", "r13", "r14", "r15", "rip", "rflags", "cs",  "fs", "gs"};
    }
    // Numbered names by their number, then the others as they come.
    const auto numberOf = [](const std::string& name) {
        return std::atoi(name.c_str() + std::min(name.find_first_of("0123456789"), name.size()));
    };
    std::vector<std::string> numbered;
    std::vector<std::string> others;
    for (const auto& [name, value] : registers) {
        (name.find_first_of("0123456789") == std::string::npos ? others : numbered).push_back(name);
    }
    std::ranges::sort(numbered, {}, numberOf);
    numbered.insert(numbered.end(), others.begin(), others.end());
    return numbered;
}

}  // namespace

std::string codeType(const ReportFields& system) {
    const std::string* architecture = system.text("cpu_arch");
    if (!architecture) return "Unknown";
    if (*architecture == "x86_64") return "X86_64";
    if (*architecture == "arm64") return "ARM-64";
    if (*architecture == "arm64e") return "ARM-64 (Native)";
    if (architecture->starts_with("arm")) return "ARM";
    if (*architecture == "x86" || (architecture->size() == 4 && architecture->ends_with("86"))) return "X86";
    return "Unknown";
}

std::string headerText(const ReportFields& report) {
    const ReportFields system = report.in("system");
    return headerLine("Incident Identifier", report.in("report").shown("id")) +
           headerLine("CrashReporter Key", system.shown("device_app_hash")) +
           headerLine("Hardware Model", system.shown("machine")) +
           headerLine("Process", system.shown("process_name") + " [" + system.shown("process_id") + "]") +
           headerLine("Path", system.shown("CFBundleExecutablePath")) +
           headerLine("Identifier", system.shown("CFBundleIdentifier")) +
           headerLine("Version", system.shown("CFBundleShortVersionString") + " (" +
                                     system.shown("CFBundleVersion") + ")") +
           headerLine("Code Type", codeType(system)) + headerLine("Role", "Foreground") +
           headerLine("Parent Process", "launchd [" + system.shown("parent_process_id") + "]") + "\n" +
           headerLine("Date/Time", dateText(report)) +
           headerLine("OS Version", system.shown("system_name") + " " + system.shown("system_version") +
                                        " (" + system.shown("os_version") + ")") +
           headerLine("Report Version", "104") + "\n";
}

std::string errorText(const ReportFields& report) {
    const ReportFields error = report.in("crash").in("error");
    const ReportFields mach = error.in("mach");
    const ReportFields signal = error.in("signal");
    const std::string* exceptionName = mach.text("exception_name");
    const std::string* signalName = signal.text("name");
    const std::string* codeName = mach.text("code_name");
    const std::optional<ReportFields> thread = crashedThread(report);
    return "Exception Type:  " + (exceptionName ? *exceptionName : "0") + " (" +
           (signalName ? *signalName : std::to_string(signal.number("signal"))) + ")\n" +
           "Exception Codes: " + (codeName ? *codeName : "0x00000000") + " at " +
           padded(error.number("address")) + "\n" +
           "Triggered by Thread:  " + std::to_string(thread ? thread->number("index") : 0) + "\n\n";
}

std::string applicationText(const ReportFields& report) {
    const ReportFields error = report.in("crash").in("error");
    const std::string* type = error.text("type");
    if (!type) return {};
    const auto terminating = [&error](const std::string& name) {
        return "Application Specific Information:\n*** Terminating app due to uncaught exception '" + name +
               "', reason: '" + error.shown("reason") + "'\n";
    };
    if (*type == "cpp_exception") return terminating(error.in("cpp_exception").shown("name")) + "\n";
    if (*type == "nsexception") return terminating(error.in("nsexception").shown("name")) + "\n";
    if (*type == "user") {
        const ReportFields reported = error.in("user_reported");
        std::string text = terminating(reported.shown("name")) + "Custom Backtrace:\n";
        for (const Value& line : reported.list("backtrace")) text += line.description() + "\n";
        return text + "\n";
    }
    if (*type == "deadlock")
        return "Application Specific Information:\nApplication main thread deadlocked\n\n";
    return {};
}

std::string threadsText(const ReportFields& report, KSAppleReportStyle style) {
    const std::string* ownName = report.in("system").text("CFBundleExecutable");
    std::string text;
    for (const ReportFields& thread : threadsOf(report.in("crash")))
        text += threadText(thread, style, ownName) + "\n";
    return text;
}

std::string threadStateText(const ReportFields& report) {
    const std::optional<ReportFields> thread = crashedThread(report);
    if (!thread) return {};
    const ReportFields registers = thread->in("registers").in("basic");
    const std::string type = codeType(report.in("system"));
    std::string text =
        "Thread " + std::to_string(thread->number("index")) + " crashed with " + type + " Thread State:\n";
    if (!registers.present()) return text + "\n";
    std::size_t column = 0;
    for (const std::string& name : registerOrder(type, *registers.dictionary())) {
        if (!registers.find(name)) continue;
        text += rightIn(name, 6) + ": " + padded(registers.number(name)) + " ";
        if (++column % 4 == 0) text += "\n";
    }
    if (column % 4 != 0) text += "\n";
    return text + "\n";
}

std::string imagesText(const ReportFields& report) {
    std::vector<ReportFields> images;
    for (const Value& entry : report.list("binary_images")) images.emplace_back(entry.asDictionary());
    std::ranges::sort(images, {}, [](const ReportFields& image) { return image.number("image_addr"); });
    std::string text = "Binary Images:\n";
    for (const ReportFields& image : images) {
        const std::uint64_t start = image.number("image_addr");
        std::string uuid = image.shown("uuid");
        std::erase(uuid, '-');
        std::ranges::transform(uuid, uuid.begin(),
                               [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
        text += unpadded(start) + " - " + unpadded(start + image.number("image_size") - 1) + " " +
                fileName(image.text("name")) + " " + architectureText(image) + "  <" + uuid + "> " +
                image.shown("name") + "\n";
    }
    return text + "\nEOF\n\n\n";
}

std::string extraText(const ReportFields& report, KSAppleReportStyle style) {
    std::string text = "Extra Information:\n";
    if (report.isTrue("incomplete")) text += "\nThe report is incomplete: its end is missing.\n";
    if (const ReportFields recrash = report.in("recrash_report").in("crash"); recrash.present()) {
        const ReportFields error = recrash.in("error");
        text += "\nHandler crashed while reporting: " + error.in("signal").shown("name") + " at " +
                padded(error.number("address")) + " in section '" + error.shown("reason") + "'\n";
        for (const ReportFields& thread : threadsOf(recrash)) {
            text +=
                backtraceText(thread.in("backtrace"), style, report.in("system").text("CFBundleExecutable"));
        }
    }
    if (const std::string* lines = report.in("user").text("pending_log")) {
        text += "\nLog lines that had not reached the file:\n" + *lines;
        if (!lines->ends_with('\n')) text += "\n";
    }
    return text;
}

}  // namespace zqcore::platform::crash
