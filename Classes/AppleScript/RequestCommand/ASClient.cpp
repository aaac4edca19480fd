#include "Classes/AppleScript/RequestCommand/ASClient.h"

#include <string_view>

#include "Classes/Core/Utility/ZQInfo.h"
#include "Platform/Foundation/NSBundle.h"

namespace zqcore {

std::shared_ptr<ASClient> ASClient::current() {
    // Every request and every answer carries one. Each look at the dictionary asks the file system whether it
    // is still the same, so one look serves all four texts, which then also belong together.
    const auto information = NSBundle::mainBundle()->infoDictionary();
    const auto text = [&information](std::string_view key) {
        const Value* value = information->find(key);
        return value && value->asString() ? *value->asString() : std::string();
    };
    auto client = make();
    client->pid = ZQInfo::pid();
    client->identifier = text("CFBundleIdentifier");
    client->name = text("CFBundleName");
    client->version = text("CFBundleShortVersionString");
    client->build = text("CFBundleVersion");
    return client;
}

}  // namespace zqcore
