#pragma once

#include <memory>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>
#include <utility>

#include "Classes/AppleScript/RequestCommand/ASRequest.h"

namespace zqcore {

/// A typed request without its type: what a sender needs of it on its way out and back.
/// Threads: as the request itself; a sender uses it on one thread at a time. Lifetime: it shares the request,
/// and copies share it too. Failure: a null request is one that can't be written, and takes no response.
class ZQ_EXPORT ASRequestCarrier final {
  public:
    /// What a decoded response tells a sender.
    struct Answer {
        bool decoded = false;
        bool hasError = false;
        /// `server.version` of the response.
        std::optional<std::string> serverVersion;
    };

    template <ASRequest R>
    ASRequestCarrier(std::shared_ptr<R> request)
        : request_(std::move(request)), operations_(&operationsOf<R>) {}

    [[nodiscard]] std::string_view path() const { return operations_->path(); }
    [[nodiscard]] std::optional<std::string> minVersion() const { return operations_->minVersion(); }

    /// `clientPrepareRequestValue`.
    void prepare() const {
        if (request_) operations_->prepare(request_.get());
    }
    /// The text of the request value; absent, with a line in the log, when it can't be written.
    [[nodiscard]] std::optional<std::string> encode(
        const std::source_location& where = std::source_location::current()) const;
    /// `decodeAndFillResponse`.
    [[nodiscard]] Answer decodeAndFill(
        std::string_view json, const std::source_location& where = std::source_location::current()) const;
    /// `requestDescription`.
    [[nodiscard]] std::string description(std::string_view appId, std::string_view status,
                                          const std::optional<std::string>& requestString,
                                          const std::optional<std::string>& responseString) const {
        return requestdetail::describe(path(), appId, status, requestString, responseString);
    }

  private:
    struct Operations {
        std::string_view (*path)();
        std::optional<std::string> (*minVersion)();
        void (*prepare)(void* request);
        const ASRequestModel& (*value)(void* request);
        std::shared_ptr<const ASResponseModel> (*decodeAndFill)(void* request, std::string_view json,
                                                                const std::source_location& where);
    };

    template <class R>
    static constexpr Operations operationsOf{
        [] { return std::string_view(R::path()); },
        [] { return R::minVersion(); },
        [](void* request) { static_cast<R*>(request)->clientPrepareRequestValue(); },
        [](void* request) -> const ASRequestModel& {
            auto& value = static_cast<R*>(request)->requestValue;
            if (!value) value = std::make_shared<typename R::RequestValue>();
            return *value;
        },
        [](void* request, std::string_view json,
           const std::source_location& where) -> std::shared_ptr<const ASResponseModel> {
            return static_cast<R*>(request)->decodeAndFillResponse(json, where);
        },
    };

    std::shared_ptr<void> request_;
    const Operations* operations_;
};

}  // namespace zqcore
