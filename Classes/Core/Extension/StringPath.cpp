#include "Classes/Core/Extension/StringPath.h"

#include "Platform/Foundation/NSURL.h"
#include "Platform/Scripting/NSWorkspace.h"

namespace zqcore {

std::string appendingHTTPPath(std::string_view url, std::string_view path) {
    const bool slashBefore = url.ends_with('/');
    const bool slashAfter = path.starts_with('/');
    std::string result(url);
    if (slashBefore && slashAfter) path.remove_prefix(1);
    if (!slashBefore && !slashAfter) result += '/';
    result += path;
    return result;
}

bool openUrl(std::string_view url) {
    const auto made = NSURL::URLWithString(url);
    return made && NSWorkspace::shared().openURL(*made);
}

}  // namespace zqcore
