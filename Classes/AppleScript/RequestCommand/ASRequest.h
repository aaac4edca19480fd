#pragma once

#include <concepts>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "Classes/AppleScript/RequestCommand/ASCompletion.h"
#include "Classes/AppleScript/RequestCommand/ASModel.h"

namespace zqcore {

/// A typed request: a path, the records of request and response, and one pair of them.
template <class R>
concept ASRequest = std::derived_from<typename R::RequestValue, ASRequestModel> &&
    std::derived_from<typename R::ResponseValue, ASResponseModel> && JSONRecord<typename R::RequestValue> &&
    JSONRecord<typename R::ResponseValue> && requires(R& request) {
    { R::path() } -> std::convertible_to<std::string_view>;
    { R::minVersion() } -> std::same_as<std::optional<std::string>>;
    { request.requestValue } -> std::same_as<std::shared_ptr<typename R::RequestValue>&>;
    { request.responseValue } -> std::same_as<std::shared_ptr<typename R::ResponseValue>&>;
};

/// A request that can be served in this process. `handle` calls its completion once, from any thread, now or
/// later. An application serves a request of the catalogue by a class of its own below it, which adds
/// `static void handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion)`.
template <class R>
concept ASRequestHandler = ASRequest<R> &&
    requires(const std::shared_ptr<typename R::RequestValue>& request, const ASCompletion& done) {
    R::handle(request, done);
};

namespace requestdetail {

/// Fills in what is missing of identifier, client and path, and never overwrites.
ZQ_EXPORT void prepare(ASRequestModel& value, std::string_view path);
[[nodiscard]] ZQ_EXPORT std::string describe(std::string_view path, std::string_view appId,
                                             std::string_view status,
                                             const std::optional<std::string>& requestString,
                                             const std::optional<std::string>& responseString);

/// A text that the application sets, at any time and on any thread.
class ZQ_EXPORT SettableVersion final {
  public:
    [[nodiscard]] std::optional<std::string> get() const;
    void set(std::optional<std::string> version);

  private:
    mutable std::mutex mutex_;
    std::optional<std::string> version_;
};

}  // namespace requestdetail

/// The operations that every request has by default, given the type of the request itself.
template <class Self>
class ASRequestDefaults {
  public:
    /// Fills in a missing `requestId` (a fresh UUID in upper case), `client` and `path`. Twice changes
    /// nothing more.
    void clientPrepareRequestValue() {
        auto& value = static_cast<Self&>(*this).requestValue;
        if (!value) value = Self::RequestValue::make();
        requestdetail::prepare(*value, Self::path());
    }

    /// Keeps the decoded response in `responseValue` and gives it; null, with a line in the log and
    /// `responseValue` as it was, when the text doesn't decode.
    auto decodeAndFillResponse(std::string_view json,
                               const std::source_location& where = std::source_location::current()) {
        auto response = Self::ResponseValue::fromJSONString(json, where);
        if (response) static_cast<Self&>(*this).responseValue = response;
        return response;
    }

    /// The senders' log line.
    [[nodiscard]] static std::string requestDescription(std::string_view appId, std::string_view status,
                                                        const std::optional<std::string>& requestString,
                                                        const std::optional<std::string>& responseString) {
        return requestdetail::describe(Self::path(), appId, status, requestString, responseString);
    }
};

}  // namespace zqcore

/// What all request types have in common, told once: the public part after the records of `Type`. The path is
/// a literal; a ZQ_REQUEST_MIN_VERSION... line follows.
#define ZQ_REQUEST(Type, pathLiteral)                                                      \
    std::shared_ptr<RequestValue> requestValue;                                            \
    std::shared_ptr<ResponseValue> responseValue;                                          \
    explicit Type(std::shared_ptr<RequestValue> value) : requestValue(std::move(value)) {} \
    [[nodiscard]] static std::shared_ptr<Type> make(std::shared_ptr<RequestValue> value =  \
                                                        RequestValue::make()) {            \
        return std::make_shared<Type>(std::move(value));                                   \
    }                                                                                      \
    [[nodiscard]] static constexpr std::string_view path() noexcept { return pathLiteral; }

/// The lowest version of the addressed application that knows the request.
#define ZQ_REQUEST_MIN_VERSION(literal) \
    [[nodiscard]] static std::optional<std::string> minVersion() { return literal; }

/// The same, absent until the application sets it; any thread. The store is in one source file.
#define ZQ_REQUEST_SETTABLE_MIN_VERSION()                         \
    [[nodiscard]] static std::optional<std::string> minVersion(); \
    static void setMinVersion(std::optional<std::string> version);
#define ZQ_REQUEST_MIN_VERSION_STORE(Type)                                               \
    namespace {                                                                          \
    requestdetail::SettableVersion& minVersionOf##Type() {                               \
        /* Never ended: threads may still ask while the process goes. */                 \
        static auto& version = *new requestdetail::SettableVersion;                      \
        return version;                                                                  \
    }                                                                                    \
    }                                                                                    \
    std::optional<std::string> Type::minVersion() { return minVersionOf##Type().get(); } \
    void Type::setMinVersion(std::optional<std::string> version) {                       \
        minVersionOf##Type().set(std::move(version));                                    \
    }
