#pragma once

#include "Classes/AppleScript/RequestCommand/ASRequest.h"

namespace zqcore {

/// Asks the main application to translate. Path "translate".
/// Every field of the body may be absent; what an action does, and what is done without one, is the
/// receiver's business. Failure: an enumeration's text that isn't listed reads as `unknown`.
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
            /// What `translateText` translates.
            std::optional<std::string> text;
            /// What `translateImage` translates: an image file's bytes in base64 (RFC 4648 section 4), as
            /// `ZQConvert::base64StringFromData` writes it. `dataFromBase64String` passes over line breaks,
            /// but is fastest without.
            std::optional<std::string> imageBase64;
            /// Where the window is to show.
            std::optional<WindowLocation> windowLocation;
            /// How much of the window's input box is to show.
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
