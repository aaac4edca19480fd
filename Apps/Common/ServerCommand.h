#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include "Apps/Common/CrashRequest.h"
#include "Apps/Common/ServerMain.h"
#include "Classes/AppleScript/RequestCommand/ASBaseRequestCommand.h"

namespace demo {

/// The command of a demonstration server: it takes the paths of `Handlers`, in their order, then those of the
/// base. A path that the options leave out is unknown to it.
template <zqcore::ASRequestHandler... Handlers>
class ServerCommand : public zqcore::ASBaseRequestCommand {
  public:
    ServerCommand(zqcore::NSScriptCommandDescription description, const ServerOptions& options)
        : ASBaseRequestCommand(std::move(description)), options_(options) {}

    bool distributeToHandler(const std::string& path, const std::string& json) override {
        if (std::find(options_.without.begin(), options_.without.end(), path) != options_.without.end())
            return false;
        if ((take<Handlers>(path, json) || ...)) return true;
        if (options_.allowCrash && take<CrashRequest>(path, json)) return true;
        return ASBaseRequestCommand::distributeToHandler(path, json);
    }

  private:
    template <class H>
    bool take(const std::string& path, const std::string& json) {
        if (path != H::path()) return false;
        handle<H>(json);
        return true;
    }

    const ServerOptions& options_;
};

/// Answers with an error of that code and a text of its own.
inline void refuse(const zqcore::ASCompletion& completion, zqcore::ASError::Code code, std::string message) {
    completion(zqcore::ASCommonResponseModel::make(code, std::move(message)));
}

}  // namespace demo
