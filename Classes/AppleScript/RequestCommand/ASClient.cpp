#include "Classes/AppleScript/RequestCommand/ASClient.h"

#include "Classes/Core/Utility/ZQInfo.h"

namespace zqcore {

std::shared_ptr<ASClient> ASClient::current() {
    auto client = make();
    client->pid = ZQInfo::pid();
    client->identifier = ZQInfo::appIdentifier();
    client->name = ZQInfo::appBundleName();
    client->version = ZQInfo::appVersion();
    client->build = ZQInfo::appBuild();
    return client;
}

}  // namespace zqcore
