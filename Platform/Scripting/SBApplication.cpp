#include "Platform/Scripting/SBApplication.h"

#include <utility>

#include "Platform/Scripting/NSWorkspace.h"
#include "Platform/Scripting/ScriptingBus.h"

namespace zqcore::platform {
namespace {

constexpr std::string_view kRequestSelector = "request:";

}  // namespace

std::shared_ptr<SBApplication> SBApplication::make(std::string bundleIdentifier) {
    // Who serves is commonly known without a question; the desktop's files and the bus are asked about the
    // rest.
    if (!ScriptingBus::current().nameHasOwner(bundleIdentifier) &&
        !NSWorkspace::shared().URLForApplicationWithBundleIdentifier(bundleIdentifier))
        return nullptr;
    return std::shared_ptr<SBApplication>(new SBApplication(std::move(bundleIdentifier)));
}

SBApplication::SBApplication(std::string bundleIdentifier) : identifier_(std::move(bundleIdentifier)) {}

std::shared_ptr<SBApplicationDelegate> SBApplication::delegate() const {
    const std::lock_guard lock(mutex_);
    return delegate_.lock();
}

void SBApplication::setDelegate(std::weak_ptr<SBApplicationDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

bool SBApplication::isRunning() const { return ScriptingBus::current().nameHasOwner(identifier_); }

void SBApplication::activate() { ScriptingBus::current().start(identifier_); }

bool SBApplication::respondsToSelector(std::string_view selector) const {
    if (selector != kRequestSelector) return false;
    auto known = ScriptingBus::current().knowsRequestCommand(identifier_);
    const std::lock_guard lock(mutex_);
    failedQuestion_ = known ? std::nullopt : std::optional(std::move(known.error()));
    return known.value_or(true);
}

std::optional<NSError> SBApplication::takeFailedQuestion() {
    const std::lock_guard lock(mutex_);
    return std::exchange(failedQuestion_, std::nullopt);
}

std::optional<std::string> SBApplication::request(std::string_view text) {
    auto failed = takeFailedQuestion();
    if (!failed) {
        auto answer = ScriptingBus::current().request(identifier_, text);
        if (answer) return *std::move(answer);
        failed = std::move(answer.error());
    }
    if (const auto heard = delegate()) heard->eventDidFail(kRequestSelector, *failed);
    return std::nullopt;
}

}  // namespace zqcore::platform
