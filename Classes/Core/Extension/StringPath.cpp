#include "Classes/Core/Extension/StringPath.h"

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

}  // namespace zqcore
