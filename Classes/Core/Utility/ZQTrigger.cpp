#include "Classes/Core/Utility/ZQTrigger.h"

#include <mutex>
#include <string>

#include "Classes/Core/Utility/DateExtension.h"
#include "Platform/Base/Clock.h"
#include "Platform/Foundation/NSUserDefaults.h"

namespace zqcore {

namespace {

constexpr std::string_view kPrefix = "ZQTrigger_";

std::recursive_mutex& classLock() {
    // Never ended: threads may still ask while the process goes.
    static auto& lock = *new std::recursive_mutex;
    return lock;
}

std::string storageKey(std::string_view key) { return std::string(kPrefix).append(key); }

void trigger(std::uint64_t count, std::string_view key, const ZQTrigger::Action& execute,
             const ZQTrigger::Action& cancel, Date (*firedAt)(Date)) {
    const std::lock_guard lock(classLock());
    if (count == 0 || key.empty()) return;
    const auto& defaults = NSUserDefaults::standardUserDefaults();
    const std::string stored = storageKey(key);
    const Date now = Clock::current().wallNow();
    if (const auto object = defaults->objectForKey(stored)) {
        const auto last = object->numberAsDouble();
        const double period = static_cast<double>(count) * 24 * 60 * 60;
        if (last && !(period < secondsSince1970(now) - *last)) {
            if (cancel) cancel();
            return;
        }
    }
    defaults->setDouble(secondsSince1970(firedAt(now)), stored);
    defaults->synchronize();
    if (execute) execute();
}

}  // namespace

void ZQTrigger::triggerOnceForNumberOf24Hour(std::uint64_t count, std::string_view key, const Action& execute,
                                             const Action& cancel) {
    trigger(count, key, execute, cancel, [](Date now) { return now; });
}

void ZQTrigger::triggerOnceForNumberOfDateDay(std::uint64_t count, std::string_view key,
                                              const Action& execute, const Action& cancel) {
    trigger(count, key, execute, cancel, zq_beginningDate);
}

void ZQTrigger::resetWithKey(std::string_view key) {
    const std::lock_guard lock(classLock());
    if (key.empty()) return;
    const auto& defaults = NSUserDefaults::standardUserDefaults();
    defaults->removeObjectForKey(storageKey(key));
    defaults->synchronize();
}

void ZQTrigger::resetAll() {
    const std::lock_guard lock(classLock());
    const auto& defaults = NSUserDefaults::standardUserDefaults();
    for (const auto& [key, value] : defaults->dictionaryRepresentation()) {
        if (key.starts_with(kPrefix)) defaults->removeObjectForKey(key);
    }
    defaults->synchronize();
}

}  // namespace zqcore
