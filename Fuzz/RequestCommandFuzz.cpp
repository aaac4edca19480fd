// Any text as the direct parameter of a command: exactly one answer, and the server lives on.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"
#include "TestKit/LogCapture.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

/// Serves any request: answers, answers twice, throws or stays silent, as the identifier's length tells.
template <class R>
class Serving : public R {
  public:
    static void handle(const std::shared_ptr<typename R::RequestValue>& request,
                       const ASCompletion& completion) {
        switch (request->requestId ? request->requestId->size() % 4 : 0) {
            case 1:
                completion(std::make_shared<typename R::ResponseValue>());
                [[fallthrough]];
            case 0:
                completion(std::make_shared<typename R::ResponseValue>());
                break;
            case 2:
                throw std::string("thrown");
            default:
                break;
        }
    }
};

class Command : public ASBaseRequestCommand {
  public:
    using ASBaseRequestCommand::ASBaseRequestCommand;
    bool distributeToHandler(const std::string& path, const std::string& json) override {
        return serve<OrbelTranslateRequest>(path, json) || serve<OrbelHelperHotkeyRequest>(path, json) ||
               serve<OrbelHelperSelectedTextRequest>(path, json) ||
               serve<CommonHotkeyFetchRequest>(path, json) ||
               ASBaseRequestCommand::distributeToHandler(path, json);
    }

  private:
    template <class R>
    bool serve(const std::string& path, const std::string& json) {
        if (path != R::path()) return false;
        handle<Serving<R>>(json);
        return true;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static testkit::ManualClock& clock = *new testkit::ManualClock;
    static testkit::LogCapture& silence = *new testkit::LogCapture(0);
    silence.clear();
    std::string text(reinterpret_cast<const char*>(data), size);
    int answers = 0;
    std::optional<std::string> answer;
    makeObject<Command>(NSScriptCommandDescription{"request", Value(std::move(text))})
        ->execute([&](std::optional<std::string> result) {
            ++answers;
            answer = std::move(result);
        });
    clock.waitUntilQuiet();
    if (answers == 0) clock.advance(std::chrono::seconds(60));
    clock.advance(std::chrono::seconds(60));
    if (answers != 1 || !answer || !ASCommonResponseModel::fromJSONString(*answer)) std::abort();
    return 0;
}

}  // namespace zqcore
