#include "Platform/Scripting/NSUserAppleScriptTask.h"

#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <utility>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/Text/Utf8.h"
#include "Platform/Scripting/Linux/Subprocess.h"

namespace zqcore::platform {
namespace {

using Descriptor = NSAppleEventDescriptor::Pointer;
using Outcome = std::expected<Descriptor, NSError>;

constexpr std::size_t kLargestArgument = 256;
constexpr std::string_view kByInput = "-";

NSError scriptError(long code, std::string text) { return {NSOSStatusErrorDomain, code, std::move(text)}; }

bool mustGoByInput(std::string_view text) {
    return text == kByInput || text.find('\0') != std::string_view::npos;
}

/// A handler's call as the script will see it. The input lies in the event.
struct Call {
    std::vector<std::string> arguments;
    std::string_view input;
};

/// The event's parameters as texts. A text is seen where it lies; what coerces to one is kept in `coerced`.
std::optional<std::vector<std::string_view>> parametersOf(const NSAppleEventDescriptor& event,
                                                          std::vector<std::string>& coerced) {
    std::vector<std::string_view> parameters;
    const auto list = event.paramDescriptorForKeyword(kKeyDirectObject);
    if (!list) return parameters;
    coerced.reserve(list->numberOfItems());
    for (std::size_t i = 1; i <= list->numberOfItems(); ++i) {
        const auto item = list->descriptorAtIndex(i);
        if (item->descriptorType() == kTypeText) {
            parameters.push_back(item->data());
        } else if (auto text = item->stringValue()) {
            parameters.push_back(coerced.emplace_back(std::move(*text)));
        } else {
            return std::nullopt;
        }
    }
    return parameters;
}

std::expected<Call, NSError> callOf(const std::string& path, const NSAppleEventDescriptor& event) {
    const auto name = event.paramDescriptorForKeyword(kKeySubroutineName);
    auto handler = name ? name->stringValue() : std::nullopt;
    if (!handler || event.eventClass() != fourCharCode("ascr") || event.eventID() != fourCharCode("psbr")) {
        return std::unexpected(
            scriptError(kScriptErrorNotHandled, "The event calls no handler of a script."));
    }
    std::vector<std::string> coerced;
    auto parameters = parametersOf(event, coerced);
    if (!parameters) return std::unexpected(scriptError(kScriptErrorCoercion, "A parameter is no text."));
    if (std::count_if(parameters->begin(), parameters->end(), mustGoByInput) > 1) {
        return std::unexpected(scriptError(kScriptErrorCoercion, "Two parameters need the standard input."));
    }
    Call call{{path, std::move(*handler)}, {}};
    const auto first = std::max_element(parameters->begin(), parameters->end(), [](auto a, auto b) {
        return std::pair(mustGoByInput(a), a.size()) < std::pair(mustGoByInput(b), b.size());
    });
    if (first != parameters->end() && (first->size() > kLargestArgument || mustGoByInput(*first))) {
        call.input = std::exchange(*first, kByInput);
    }
    call.arguments.insert(call.arguments.end(), parameters->begin(), parameters->end());
    return call;
}

/// The script's own number and text, from its last line "error NUMBER: TEXT".
NSError failureOf(const SubprocessResult& result) {
    std::string_view line = result.lastErrors;
    while (line.ends_with('\n') || line.ends_with('\r')) line.remove_suffix(1);
    if (const auto begin = line.rfind('\n'); begin != std::string_view::npos) line.remove_prefix(begin + 1);
    constexpr std::string_view kMark = "error ";
    if (line.starts_with(kMark)) {
        long code = 0;
        const auto [stop, error] =
            std::from_chars(line.data() + kMark.size(), line.data() + line.size(), code);
        const std::string_view rest(stop, static_cast<std::size_t>(line.data() + line.size() - stop));
        if (error == std::errc{} && rest.starts_with(':')) {
            return scriptError(code, std::string(rest.substr(std::min<std::size_t>(2, rest.size()))));
        }
    }
    if (!line.empty()) return scriptError(kScriptErrorGeneral, std::string(line));
    const bool killed = result.end == SubprocessResult::End::killed;
    return scriptError(kScriptErrorGeneral,
                       (killed ? "The script was ended by signal " : "The script ended with status ") +
                           std::to_string(result.number) + ".");
}

Outcome runScript(const std::string& path, const NSAppleEventDescriptor& event) {
    auto call = callOf(path, event);
    if (!call) return std::unexpected(std::move(call.error()));
    std::error_code ignored;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", ignored);
    auto result = runSubprocess(
        call->arguments, {"ZQ_APPLICATION_DIRECTORY=" + executable.parent_path().string()}, call->input);
    if (!result) return std::unexpected(std::move(result.error()));
    using End = SubprocessResult::End;
    // Without a status (somebody else reaped the script) its last words decide.
    const bool failed = result->end == End::unknown ? result->lastErrors.find("error -") != std::string::npos
                                                    : result->end != End::exited || result->number != 0;
    if (failed) return std::unexpected(failureOf(*result));
    auto& text = result->output;
    if (text.ends_with('\n')) text.pop_back();
    if (!isValidUTF8(text)) return NSAppleEventDescriptor::make(kTypeData, std::move(text));
    return NSAppleEventDescriptor::descriptorWithString(std::move(text));
}

void report(NSUserAppleScriptTask::CompletionHandler handler, Outcome outcome) {
    if (!handler) return;
    DispatchQueue::global(DispatchQoS::userInitiated)
        ->async([handler = std::move(handler), outcome = std::move(outcome)]() mutable {
            if (outcome) {
                handler(std::move(*outcome), std::nullopt);
            } else {
                handler(nullptr, std::move(outcome.error()));
            }
        });
}

void blockBrokenPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

}  // namespace

std::expected<std::shared_ptr<NSUserAppleScriptTask>, NSError> NSUserAppleScriptTask::make(const NSURL& url) {
    auto path = url.path();
    bool isDirectory = false;
    if (!url.isFileURL() || !NSFileManager::defaultManager().fileExistsAtPath(path, isDirectory) ||
        isDirectory) {
        return std::unexpected(
            NSError(NSCocoaErrorDomain, NSFileReadNoSuchFileError, "There is no script \"" + path + "\"."));
    }
    return std::make_shared<NSUserAppleScriptTask>(Private{}, std::move(path));
}

void NSUserAppleScriptTask::executeWithAppleEvent(std::shared_ptr<const NSAppleEventDescriptor> event,
                                                  CompletionHandler completionHandler) {
    if (used_.exchange(true)) {
        report(std::move(completionHandler),
               std::unexpected(NSError(NSPOSIXErrorDomain, EALREADY, "A script task runs only once.")));
        return;
    }
    // A script may run as long as it likes, so it has a thread of its own instead of one of the shared
    // queues'. If there is none to be had, the handler must survive the attempt.
    auto handler = std::make_shared<CompletionHandler>(std::move(completionHandler));
    const bool started = startWorkerThread("zq.script", [path = path_, event = std::move(event), handler] {
        blockBrokenPipeSignal();
        report(std::move(*handler), runScript(path, *event));
    });
    if (!started)
        report(std::move(*handler),
               std::unexpected(NSError(NSPOSIXErrorDomain, EAGAIN, "The script has no thread.")));
}

}  // namespace zqcore::platform
