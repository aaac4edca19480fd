#include "Platform/CrashCapture/KSCrashReportStore.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

#include "Platform/Base/Clock.h"
#include "Platform/CrashCapture/Linux/CrashHandler.h"
#include "Platform/CrashCapture/Linux/ReportLock.h"
#include "Platform/CrashCapture/Symbolication.h"
#include "Platform/CrashCapture/TornReport.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/Text/Utf16.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

namespace {

constexpr std::size_t kNumberDigits = 16;

std::string digitsOf(std::uint64_t number) {
    std::array<char, kNumberDigits + 1> text;
    (void)std::snprintf(text.data(), text.size(), "%016llx", static_cast<unsigned long long>(number));
    return text.data();
}

std::optional<std::uint64_t> numberIn(std::string_view digits) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
    if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
    // Only the one way of writing it that the store uses itself.
    return digits == digitsOf(number) ? std::optional(number) : std::nullopt;
}

}  // namespace

KSCrashReportStore::KSCrashReportStore(const std::string& path, std::string name)
    : directory_(stringByAppendingPathComponent(path, "Reports")), name_(std::move(name)) {}

std::expected<void, NSError> KSCrashReportStore::prepare() {
    auto made = NSFileManager::defaultManager().createDirectoryAtPath(directory_, true);
    if (!made) return made;
    const std::vector<std::uint64_t> all = numbers();
    for (std::size_t i = 0; i + kMaximumCount < all.size(); ++i) remove(all[i]);
    return {};
}

std::string KSCrashReportStore::reportPrefix() const {
    return stringByAppendingPathComponent(directory_, name_ + "-report-");
}

std::string KSCrashReportStore::filePath(std::uint64_t number, const char* extension) const {
    return reportPrefix() + digitsOf(number) + extension;
}

std::vector<std::uint64_t> KSCrashReportStore::numbers() const {
    std::vector<std::uint64_t> result;
    const auto names = NSFileManager::defaultManager().contentsOfDirectoryAtPath(directory_);
    if (!names) return result;
    const std::string prefix = name_ + "-report-";
    for (std::string_view name : *names) {
        if (!name.starts_with(prefix) || !name.ends_with(crash::kReportExtension)) continue;
        name.remove_prefix(prefix.size());
        name.remove_suffix(std::string_view(crash::kReportExtension).size());
        if (const auto number = numberIn(name)) result.push_back(*number);
    }
    std::ranges::sort(result);
    return result;
}

std::uint64_t KSCrashReportStore::nextNumber() const {
    // The time makes it rise from run to run, even when all earlier reports are gone.
    const auto now =
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::current().wallNow().time_since_epoch());
    const std::vector<std::uint64_t> all = numbers();
    const auto byTime = static_cast<std::uint64_t>(std::max<std::int64_t>(now.count(), 1));
    return all.empty() ? byTime : std::max(byTime, all.back() + 1);
}

std::vector<std::uint64_t> KSCrashReportStore::readyReports() const {
    std::vector<std::uint64_t> result = numbers();
    std::erase_if(result, [this](std::uint64_t number) {
        return crash::isBeingWritten(filePath(number, crash::kReportExtension));
    });
    return result;
}

std::optional<Value::Dictionary> KSCrashReportStore::read(std::uint64_t number) const {
    const NSFileManager& files = NSFileManager::defaultManager();
    const auto text = files.contentsAtPath(filePath(number, crash::kReportExtension));
    if (!text) return std::nullopt;
    Value::Dictionary report = crash::parseStoredReport(text->view());
    if (const auto lines = files.contentsAtPath(filePath(number, crash::kLogExtension));
        lines && !lines->empty()) {
        Value* user = report.find("user");
        Value::Dictionary members =
            user && user->asDictionary() ? *user->asDictionary() : Value::Dictionary();
        // A line may hold any bytes, and the last one may be cut; the report is a text.
        members.set("pending_log", isValidUTF8(lines->view()) ? std::string(lines->view())
                                                              : fromUTF16(toUTF16(lines->view())));
        report.set("user", std::move(members));
    }
    crash::symbolicate(report);
    return report;
}

void KSCrashReportStore::remove(std::uint64_t number) const {
    const NSFileManager& files = NSFileManager::defaultManager();
    (void)files.removeItemAtPath(filePath(number, crash::kReportExtension));
    (void)files.removeItemAtPath(filePath(number, crash::kLogExtension));
}

}  // namespace zqcore::platform
