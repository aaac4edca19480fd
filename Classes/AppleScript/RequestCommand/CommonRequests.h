#pragma once

#include <vector>

#include "Classes/AppleScript/RequestCommand/ASRequest.h"

// The requests that either application serves. Which version of it knows them differs, so an application sets
// `minVersion` for the one that it talks to; any thread. All are plain records: whoever sends one leaves it
// alone until its completion. Every field of a body may be absent.
namespace zqcore {

/// Asks an application who it is: the response's `server` tells. Path "info". The library serves it itself.
class ZQ_EXPORT CommonInfoRequest : public ASRequestDefaults<CommonInfoRequest> {
  public:
    using RequestValue = ASCommonRequestModel;
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(CommonInfoRequest, "info")
    ZQ_REQUEST_SETTABLE_MIN_VERSION()

    /// Answers at once with this process as `server`.
    static void handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion);
};

/// Starts an application, which answers when it is there. Path "launch".
class ZQ_EXPORT CommonLaunchRequest : public ASRequestDefaults<CommonLaunchRequest> {
  public:
    using RequestValue = ASCommonRequestModel;
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(CommonLaunchRequest, "launch")
    ZQ_REQUEST_SETTABLE_MIN_VERSION()
};

/// Asks for the registered hotkeys, all of them or those named. Path "hotkey/fetch".
class ZQ_EXPORT CommonHotkeyFetchRequest : public ASRequestDefaults<CommonHotkeyFetchRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        class Body : public JSONModel<Body> {
          public:
            /// True asks for all of them.
            std::optional<bool> fetchAll;
            /// Those that are asked for else.
            std::optional<std::vector<std::string>> identifiers;
            ZQ_FIELDS(Body, fetchAll, identifiers)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    class ResponseValue : public JSONModel<ResponseValue, ASResponseModel> {
      public:
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
            std::optional<std::vector<std::shared_ptr<Hotkey>>> hotkeys;
            ZQ_FIELDS(Body, hotkeys)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(ResponseValue, requestId, server, error, body)
    };
    ZQ_REQUEST(CommonHotkeyFetchRequest, "hotkey/fetch")
    ZQ_REQUEST_SETTABLE_MIN_VERSION()
};

/// Tells the application that registered a hotkey that it was pressed. Path "hotkey/handle".
class ZQ_EXPORT CommonHotkeyHandleRequest : public ASRequestDefaults<CommonHotkeyHandleRequest> {
  public:
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
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
            /// Who registered the hotkey.
            std::shared_ptr<ASClient> registerClient;
            /// The one that was pressed.
            std::shared_ptr<Hotkey> hotkey;
            ZQ_FIELDS(Body, registerClient, hotkey)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(CommonHotkeyHandleRequest, "hotkey/handle")
    ZQ_REQUEST_SETTABLE_MIN_VERSION()
};

/// Says that an application has started. It travels as a distributed notification only and has no answer.
/// Path "launch".
class ZQ_EXPORT DistributedLaunchNotification : public ASRequestDefaults<DistributedLaunchNotification> {
  public:
    using RequestValue = ASCommonRequestModel;
    using ResponseValue = ASCommonResponseModel;
    ZQ_REQUEST(DistributedLaunchNotification, "launch")
    ZQ_REQUEST_SETTABLE_MIN_VERSION()
};

}  // namespace zqcore
