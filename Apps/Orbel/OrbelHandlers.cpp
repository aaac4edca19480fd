#include "Apps/Orbel/OrbelHandlers.h"

#include <array>
#include <string>
#include <string_view>

#include "Apps/Common/ServerCommand.h"
#include "Apps/Orbel/OrbelWindow.h"
#include "Classes/Core/Utility/ZQConvert.h"
#include "Classes/Log/Log/ZQLog.h"

namespace demo {

using namespace zqcore;
using Code = ASError::Code;

namespace {

/// The hotkeys that the main application would have the helper register for it.
struct OwnHotkey {
    std::string_view identifier;
    std::string_view key;
};
constexpr std::array kOwnHotkeys{OwnHotkey{"selectionTranslate", "D"}, OwnHotkey{"snipTranslate", "S"},
                                 OwnHotkey{"inputTranslate", "A"}};

/// The bytes of an image that came as text; absent if there is none.
std::optional<Data> imageOf(const std::optional<std::string>& base64) {
    if (!base64) return std::nullopt;
    auto data = ZQConvert::dataFromBase64String(*base64);
    return data && !data->empty() ? std::move(data) : std::nullopt;
}

}  // namespace

void ServeTranslate::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    using Action = RequestValue::TranslateAction;
    const auto& body = request->body;
    const auto action = body && body->action ? *body->action : Action::unknown;
    switch (action) {
        case Action::unknown:
            return refuse(completion, Code::invalidParameter, "unsupported action");
        case Action::translateText:
            if (!body->text || body->text->empty())
                return refuse(completion, Code::invalidParameter, "no text");
            ZQLogInfo([&] { return "text to translate: " + std::to_string(body->text->size()) + " bytes"; });
            break;
        case Action::translateImage: {
            const auto image = imageOf(body->imageBase64);
            if (!image) return refuse(completion, Code::invalidParameter, "no image");
            ZQLogInfo([&] { return "image to translate: " + std::to_string(image->size()) + " bytes"; });
            break;
        }
        default:
            ZQLogInfo([&] { return "translation asked for: " + std::string(caseText(action)); });
            if (action == Action::showWindow) showMainWindow("Translation");
    }
    completion(ResponseValue::make());
}

void ServeOCR::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    using Action = RequestValue::OCRAction;
    const auto& body = request->body;
    const auto action = body && body->action ? *body->action : Action::unknown;
    if (action == Action::unknown) return refuse(completion, Code::invalidParameter, "unsupported action");
    if (action == Action::ocrImage && !imageOf(body->imageBase64)) {
        return refuse(completion, Code::invalidParameter, "no image");
    }
    ZQLogInfo([&] { return "recognition asked for: " + std::string(caseText(action)); });
    if (action == Action::showWindow) showMainWindow("Text recognition");
    completion(ResponseValue::make());
}

std::vector<std::shared_ptr<ServedHotkey>> servedHotkeys() {
    std::vector<std::shared_ptr<ServedHotkey>> hotkeys;
    for (const auto& [identifier, key] : kOwnHotkeys) {
        const auto& hotkey = hotkeys.emplace_back(ServedHotkey::make());
        hotkey->identifier = std::string(identifier);
        hotkey->key = std::string(key);
        hotkey->doubledModifiers = false;
    }
    return hotkeys;
}

}  // namespace demo
