#pragma once

#include "Classes/AppleScript/RequestCommand/ASRequest.h"

namespace zqcore {

/// Asks the main application to read the text in an image. Path "ocr".
/// Every field of the body may be absent; what an action does, and what is done without one, is the
/// receiver's business. Failure: an enumeration's text that isn't listed reads as `unknown`.
/// Threads: a plain record; whoever sends it leaves it alone until its completion.
class ZQ_EXPORT OrbelOCRRequest : public ASRequestDefaults<OrbelOCRRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        ZQ_STRING_ENUM(OCRAction, unknown, snipOCR, fileOCR, pasteboardOCR, showWindow, ocrImage)
        ZQ_STRING_ENUM(WindowLocation, unknown, mouse, center, statusIconBottom, last, topLeft, topRight,
                       topCenter, left, right)

        class Body : public JSONModel<Body> {
          public:
            std::optional<OCRAction> action;
            /// What `ocrImage` reads: an image file's bytes in base64, as in `OrbelTranslateRequest`.
            std::optional<std::string> imageBase64;
            /// Whether it is to be done silently, as the receiver takes that.
            std::optional<bool> isSilent;
            /// Where the window is to show.
            std::optional<WindowLocation> windowLocation;
            ZQ_FIELDS(Body, action, imageBase64, isSilent, windowLocation)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(OrbelOCRRequest, "ocr")
    ZQ_REQUEST_MIN_VERSION("1.5.0")
};

}  // namespace zqcore
