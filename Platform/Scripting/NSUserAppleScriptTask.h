#pragma once

#include <atomic>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/Foundation/NSURL.h"
#include "Platform/Scripting/NSAppleEventDescriptor.h"

namespace zqcore::platform {

// Error numbers of scripting, in NSOSStatusErrorDomain.
inline constexpr long kScriptErrorNotPermitted = -1743;
inline constexpr long kScriptErrorNotHandled = -1708;
inline constexpr long kScriptErrorCoercion = -1700;
inline constexpr long kScriptErrorGeneral = -2700;

/// A run of a script that the user has installed: an executable text, run out of this process.
///
/// What the script sees: the handler's name as its first argument and the event's parameters behind it. One
/// parameter may come by standard input, and "-" stands in its place: the longest, if it has more than 256
/// bytes, or holds a NUL or is a "-" itself. (Arguments can be read by every user of the machine and are
/// limited in size; standard input is neither.) ZQ_APPLICATION_DIRECTORY in its environment names the folder
/// of the running application. What it answers: standard output, less one line end, is the result. Failure is
/// a status other than 0, with "error NUMBER: TEXT" as the last line of standard error; without such a line
/// the number is -2700.
///
/// Time: no limit; a script may run for ever. Threads: any; the handler runs on a background queue, never
/// inside the call. Lifetime: a run under way needs no one to hold the task. Failure: an `NSError` whose code
/// is the script's own error number, or of NSPOSIXErrorDomain when it could not be run.
class ZQ_EXPORT NSUserAppleScriptTask final {
    struct Private {};

  public:
    using CompletionHandler = std::move_only_function<void(std::shared_ptr<NSAppleEventDescriptor> result,
                                                           std::optional<NSError> error)>;

    NSUserAppleScriptTask(Private, std::string path) : path_(std::move(path)) {}

    /// The task for the script at a file URL; an error if there is no such file.
    [[nodiscard]] static std::expected<std::shared_ptr<NSUserAppleScriptTask>, NSError> make(
        const NSURL& url);

    /// Calls the handler that `event` names. Once for each task: a second call gives its handler an error.
    void executeWithAppleEvent(std::shared_ptr<const NSAppleEventDescriptor> event,
                               CompletionHandler completionHandler);

  private:
    std::string path_;
    std::atomic<bool> used_{false};
};

}  // namespace zqcore::platform
