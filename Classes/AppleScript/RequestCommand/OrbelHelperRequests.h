#pragma once

#include <vector>

#include "Classes/AppleScript/RequestCommand/ASRequest.h"
#include "Platform/Base/CGGeometry.h"

// The requests that are addressed to the helper application. All are plain records: whoever sends one leaves
// it alone until its completion. Every field of a body may be absent; an enumeration's value that isn't
// listed reads as the first case.
namespace zqcore {

/// Opens one of the helper's pages. Path "open".
class ZQ_EXPORT OrbelHelperOpenRequest : public ASRequestDefaults<OrbelHelperOpenRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        ZQ_STRING_ENUM(Page, main, preference, updaterCheck, updaterCheckInBackground)

        class Body : public JSONModel<Body> {
          public:
            std::optional<Page> page;
            ZQ_FIELDS(Body, page)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(OrbelHelperOpenRequest, "open")
    ZQ_REQUEST_MIN_VERSION("0.1.0")
};

/// Registers and unregisters hotkeys. Path "hotkey".
class ZQ_EXPORT OrbelHelperHotkeyRequest : public ASRequestDefaults<OrbelHelperHotkeyRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        ZQ_STRING_ENUM(HotkeyAction, unknown, register_, unregister, unregisterAll)

        class Hotkey : public JSONModel<Hotkey> {
          public:
            /// Names the hotkey for the application that owns it.
            std::optional<std::string> identifier;
            /// This and the next two are carried as they are: how a key is written, which bit is which
            /// modifier and what doubling them means is agreed between the applications.
            std::optional<std::string> key;
            std::optional<std::int64_t> modifiers;
            std::optional<bool> doubledModifiers;
            ZQ_FIELDS(Hotkey, identifier, key, modifiers, doubledModifiers)
        };
        class Body : public JSONModel<Body> {
          public:
            std::optional<HotkeyAction> action;
            /// What to register, or what to unregister, for which the identifiers will do; `unregisterAll`
            /// wants none.
            std::optional<std::vector<std::shared_ptr<Hotkey>>> hotkeys;
            ZQ_FIELDS(Body, action, hotkeys)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(OrbelHelperHotkeyRequest, "hotkey")
    ZQ_REQUEST_MIN_VERSION("0.1.0")
};

/// Switches the helper's function on or off. Path "toggle".
class ZQ_EXPORT OrbelHelperToggleRequest : public ASRequestDefaults<OrbelHelperToggleRequest> {
  public:
    using RequestValue = ASCommonRequestModel;
    class ResponseValue : public JSONModel<ResponseValue, ASResponseModel> {
      public:
        class Body : public JSONModel<Body> {
          public:
            /// Whether the function is on from now on.
            std::optional<bool> state;
            ZQ_FIELDS(Body, state)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(ResponseValue, requestId, server, error, body)
    };
    ZQ_REQUEST(OrbelHelperToggleRequest, "toggle")
    ZQ_REQUEST_MIN_VERSION("0.1.0")
};

/// Asks for the selected text, at a place of the screen if one is given. Path "selected/text".
class ZQ_EXPORT OrbelHelperSelectedTextRequest : public ASRequestDefaults<OrbelHelperSelectedTextRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        class Body : public JSONModel<Body> {
          public:
            /// A place of the screen: an array of two numbers, x then y.
            std::optional<CGPoint> location;
            ZQ_FIELDS(Body, location)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    class ResponseValue : public JSONModel<ResponseValue, ASResponseModel> {
      public:
        /// Numbers on the wire, counted from 0.
        ZQ_INTEGER_ENUM(Status, unknown, successByFocusedElement, successByLocationElement, axNotTrusted,
                        focusedElementNotContainLocation, focusedElementNoText, locationElementNoMenuBar,
                        locationElementNoCopyItem, locationElementCopyItemDisabled, locationElementCopyFail,
                        locationElementNoText, fail)

        class Body : public JSONModel<Body> {
          public:
            /// How the text was found, or why it wasn't.
            std::optional<Status> status;
            /// The application that was asked for its selection.
            std::shared_ptr<ASClient> app;
            /// The selected text.
            std::optional<std::string> text;
            ZQ_FIELDS(Body, status, app, text)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(ResponseValue, requestId, server, error, body)
    };
    ZQ_REQUEST(OrbelHelperSelectedTextRequest, "selected/text")
    ZQ_REQUEST_MIN_VERSION("0.1.0")
};

/// Asks which application is in front, or at a place of the screen. Path "current/app".
class ZQ_EXPORT OrbelHelperCurrentAppRequest : public ASRequestDefaults<OrbelHelperCurrentAppRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        class Body : public JSONModel<Body> {
          public:
            /// A place of the screen: an array of two numbers, x then y.
            std::optional<CGPoint> location;
            ZQ_FIELDS(Body, location)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    class ResponseValue : public JSONModel<ResponseValue, ASResponseModel> {
      public:
        class Body : public JSONModel<Body> {
          public:
            std::shared_ptr<ASClient> app;
            ZQ_FIELDS(Body, app)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(ResponseValue, requestId, server, error, body)
    };
    ZQ_REQUEST(OrbelHelperCurrentAppRequest, "current/app")
    ZQ_REQUEST_MIN_VERSION("0.1.0")
};

}  // namespace zqcore
