#include "Classes/AppleScript/Scheme/SchemeParameter.h"

#include "Classes/Core/Utility/ZQInfo.h"

namespace zqcore {

std::shared_ptr<SchemeCommonParameter> SchemeCommonParameter::make(
    const std::optional<SchemeParameters>& parameters) {
    return std::shared_ptr<SchemeCommonParameter>(new SchemeCommonParameter(parameters));
}

SchemeCommonParameter::SchemeCommonParameter(const std::optional<SchemeParameters>& parameters)
    : appid(value(parameters, "appid")),
      pid(value(parameters, "pid")),
      version(value(parameters, "version")),
      build(value(parameters, "build")) {}

SchemeParameters SchemeCommonParameter::toParameters() const {
    SchemeParameters parameters;
    if (appid) parameters["appid"] = *appid;
    if (pid) parameters["pid"] = *pid;
    if (version) parameters["version"] = *version;
    if (build) parameters["build"] = *build;
    return parameters;
}

void SchemeCommonParameter::fillCurrentAppInfo() {
    appid = ZQInfo::appIdentifier();
    pid = std::to_string(ZQInfo::pid());
    version = ZQInfo::appVersion();
    build = ZQInfo::appBuild();
}

std::optional<std::string> SchemeCommonParameter::value(const std::optional<SchemeParameters>& parameters,
                                                        const std::string& key) {
    if (!parameters) return std::nullopt;
    const auto found = parameters->find(key);
    return found == parameters->end() ? std::nullopt : std::optional(found->second);
}

}  // namespace zqcore
