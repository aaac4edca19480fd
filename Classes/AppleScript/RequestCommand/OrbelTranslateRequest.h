#pragma once

#include "Classes/AppleScript/RequestCommand/ASRequest.h"

namespace zqcore {

/// Asks the main application to translate. Path "translate".
/// Threads: a plain record; whoever sends it leaves it alone until its completion.
class ZQ_EXPORT OrbelTranslateRequest : public ASRequestDefaults<OrbelTranslateRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        ZQ_STRING_ENUM(TranslateAction, unknown, selectionTranslate, snipTranslate, inputTranslate,
                       pasteboardTranslate, showWindow, translateText, translateImage)
        ZQ_STRING_ENUM(WindowLocation, unknown, mouse, center, statusIconBottom, last, topLeft, topRight,
                       topCenter, left, right)
        ZQ_STRING_ENUM(InputBoxState, unknown, last, alwaysFold, alwaysUnfold)

        class Body : public JSONModel<Body> {
          public:
            std::optional<TranslateAction> action;
            std::optional<std::string> text;
            std::optional<std::string> imageBase64;
            std::optional<WindowLocation> windowLocation;
            std::optional<InputBoxState> inputBoxState;
            ZQ_FIELDS(Body, action, text, imageBase64, windowLocation, inputBoxState)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(OrbelTranslateRequest, "translate")
    ZQ_REQUEST_MIN_VERSION("1.5.0")
};

}  // namespace zqcore
