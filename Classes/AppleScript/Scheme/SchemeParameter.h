#pragma once

#include <concepts>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore {

/// The parameters of a URL's query, as a flat dictionary of texts.
using SchemeParameters = std::map<std::string, std::string>;

/// A parameter record: made from a dictionary that may be absent, and turned back into one.
template <class T>
concept SchemeParameter = requires(const T& record, T& mutableRecord,
                                   const std::optional<SchemeParameters>& parameters) {
    { T::make(parameters) } -> std::same_as<std::shared_ptr<T>>;
    { record.toParameters() } -> std::same_as<SchemeParameters>;
    { mutableRecord.appid } -> std::same_as<std::optional<std::string>&>;
    { mutableRecord.pid } -> std::same_as<std::optional<std::string>&>;
    { mutableRecord.version } -> std::same_as<std::optional<std::string>&>;
    { mutableRecord.build } -> std::same_as<std::optional<std::string>&>;
};

/// A call by URL: its action word, and the records of its parameters.
template <class T>
concept SchemeProtocol = SchemeParameter<typename T::RequestParameter> &&
    SchemeParameter<typename T::ResponseParameter> && requires {
    { T::action } -> std::convertible_to<std::string_view>;
};

/// What every call may tell of the application that sends it. A missing key is an absent field, and an absent
/// field no key. Threads: none; a record belongs to one thread at a time. Lifetime: held by shared_ptr.
class ZQ_EXPORT SchemeCommonParameter {
  public:
    [[nodiscard]] static std::shared_ptr<SchemeCommonParameter> make(
        const std::optional<SchemeParameters>& parameters = std::nullopt);
    virtual ~SchemeCommonParameter() = default;

    std::optional<std::string> appid;
    /// The process identifier in decimal.
    std::optional<std::string> pid;
    std::optional<std::string> version;
    std::optional<std::string> build;

    [[nodiscard]] virtual SchemeParameters toParameters() const;

    /// Sets the four fields to those of the running process.
    void fillCurrentAppInfo();

  protected:
    SchemeCommonParameter() = default;
    explicit SchemeCommonParameter(const std::optional<SchemeParameters>& parameters);

    /// The value under `key`; absent without one or without parameters.
    [[nodiscard]] static std::optional<std::string> value(const std::optional<SchemeParameters>& parameters,
                                                          const std::string& key);
};

}  // namespace zqcore
