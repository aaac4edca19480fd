#pragma once

#include <memory>
#include <optional>
#include <source_location>
#include <string>

#include "Classes/AppleScript/RequestCommand/ASClient.h"
#include "Classes/AppleScript/RequestCommand/ASError.h"

namespace zqcore {

/// What every request on the wire has; a request with a body adds the field `body`.
/// Threads: a plain record, shared by reference; whoever shares it doesn't change it.
class ZQ_EXPORT ASRequestModel {
  public:
    virtual ~ASRequestModel() = default;

    /// Chosen by the client; a server only copies it.
    std::optional<std::string> requestId;
    /// The sending process.
    std::shared_ptr<ASClient> client;
    /// The request's name, which selects the handler.
    std::optional<std::string> path;

    /// The JSON text; absent, with a line in the log, when a field can't be written.
    [[nodiscard]] virtual std::optional<std::string> encodeToJSONString(
        const std::source_location& where = std::source_location::current()) const = 0;
};

/// What every response has. One without `error` is a success.
class ZQ_EXPORT ASResponseModel {
  public:
    virtual ~ASResponseModel() = default;

    /// That of the request answered.
    std::optional<std::string> requestId;
    /// The answering process.
    std::shared_ptr<ASClient> server;
    std::shared_ptr<ASError> error;

    [[nodiscard]] virtual std::optional<std::string> encodeToJSONString(
        const std::source_location& where = std::source_location::current()) const = 0;
};

/// The envelope of a request without body.
class ZQ_EXPORT ASCommonRequestModel : public JSONModel<ASCommonRequestModel, ASRequestModel> {
  public:
    ZQ_FIELDS(ASCommonRequestModel, requestId, client, path)
};

/// The envelope of a response without body.
class ZQ_EXPORT ASCommonResponseModel : public JSONModel<ASCommonResponseModel, ASResponseModel> {
  public:
    ZQ_FIELDS(ASCommonResponseModel, requestId, server, error)

    using JSONModel::make;
    /// A failure that this process answers with; the code's own text unless a message is given, be it empty.
    [[nodiscard]] static std::shared_ptr<ASCommonResponseModel> make(
        ASError::Code code, std::optional<std::string> message = std::nullopt);
};

}  // namespace zqcore
