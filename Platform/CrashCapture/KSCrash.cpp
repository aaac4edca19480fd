#include "Platform/CrashCapture/KSCrash.h"

#include <string_view>
#include <utility>
#include <vector>

#include "Platform/CrashCapture/KSCrashReportStore.h"
#include "Platform/CrashCapture/Linux/CrashHandler.h"
#include "Platform/CrashCapture/Linux/SystemFacts.h"
#include "Platform/Foundation/JSON/JSONWriter.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/NSSearchPath.h"
#include "Platform/Foundation/UUID.h"

namespace zqcore::platform {

namespace {

constexpr const char* kErrorDomain = "KSCrash";
constexpr const char* kReportVersion = "3.3.0";

std::string standardPath() {
    const std::vector<std::string> caches =
        NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory::caches, NSUserDomainMask, true);
    const std::string base = stringByAppendingPathComponent(caches.empty() ? "" : caches.front(), "KSCrash");
    return stringByAppendingPathComponent(base, crash::reportName());
}

// The members of an object as JSON, without its braces.
std::string jsonMembers(const Value::Dictionary& dictionary) {
    JSONWriter writer;
    writer.value(Value(dictionary));
    const std::string text = writer.take().value_or("{}");
    return text.substr(1, text.size() - 2);
}

bool isToDelete(KSCrashDeleteBehavior behavior, bool completed) {
    return behavior == KSCrashDeleteBehavior::always ||
           (behavior == KSCrashDeleteBehavior::onSuccess && completed);
}

}  // namespace

KSCrash::KSCrash() = default;

KSCrash& KSCrash::sharedInstance() {
    // Never ended: what it installs isn't either.
    static KSCrash& shared = *new KSCrash;
    return shared;
}

KSCrashReportStore& KSCrash::store() {
    if (!store_) {
        const std::string path =
            configuration_.installPath().empty() ? standardPath() : configuration_.installPath();
        store_ = std::make_unique<KSCrashReportStore>(path, crash::reportName());
    }
    return *store_;
}

std::expected<void, NSError> KSCrash::installWithConfiguration(const KSCrashConfiguration& configuration) {
    configuration_ = configuration;
    store_.reset();
    if (auto prepared = store().prepare(); !prepared) return prepared;

    const Value::Dictionary system = crash::systemFacts();
    Value::Dictionary report{{"version", kReportVersion}, {"id", makeUUIDString()}};
    if (const Value* name = system.find("process_name")) report.set("process_name", *name);
    crash::installHandlers({.reportPrefix = store().reportPrefix(),
                            .firstNumber = store().nextNumber(),
                            .reportMembers = jsonMembers(report),
                            .systemMembers = jsonMembers(system),
                            .pendingLogWriter = configuration.pendingLogWriter(),
                            .sectionTimeLimit = configuration.sectionTimeLimit()});
    return {};
}

void KSCrash::setSink(std::shared_ptr<KSCrashReportFilter> sink) { sink_ = std::move(sink); }

void KSCrash::sendAllReportsWithCompletion(const KSCrashReportFilterCompletion& onCompletion) {
    std::vector<std::uint64_t> numbers;
    KSCrashReports reports;
    for (const std::uint64_t number : store().readyReports()) {
        // Another process of the application may have sent it by now.
        auto report = store().read(number);
        if (!report) continue;
        numbers.push_back(number);
        reports.push_back(KSCrashReportDictionary::make(*std::move(report)));
    }
    if (reports.empty()) {
        if (onCompletion) onCompletion(reports, true, std::nullopt);
        return;
    }
    if (!sink_) {
        const NSError error(kErrorDomain, 0, "No sink set. Crash reports not sent.");
        if (onCompletion) onCompletion(reports, false, error);
        return;
    }
    sink_->filterReports(
        reports, [this, numbers, onCompletion](const std::optional<KSCrashReports>& filtered, bool completed,
                                               const std::optional<NSError>& error) {
            if (isToDelete(configuration_.deleteBehaviorAfterSendAll(), completed)) {
                for (const std::uint64_t number : numbers) store().remove(number);
            }
            if (onCompletion) onCompletion(filtered, completed, error);
        });
}

}  // namespace zqcore::platform
