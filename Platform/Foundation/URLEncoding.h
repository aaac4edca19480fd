#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// The query rule of URLs: letters, digits and `- . _ ~ / ?` stand for themselves, every other byte of the
/// UTF-8 text is percent-encoded, blanks as "%20" (RFC 3986 sections 2.1 and 3.4). Threads: pure, any thread.
class ZQ_EXPORT URLEncoding final {
  public:
    URLEncoding() = delete;

    using Component = std::pair<std::string, std::string>;

    /// The pairs of encoded key and value that `value` under `key` makes: one for a plain value, one for each
    /// member `m` of a dictionary with the key `key[m]`, by ascending member, and one for each element of an
    /// array with the key `key[]`; and so on within them. An empty array or dictionary makes none. Booleans
    /// are 1 and 0.
    [[nodiscard]] static std::vector<Component> queryComponents(std::string_view key, const Value& value);

    [[nodiscard]] static std::string escape(std::string_view text);
};

/// The entries of a dictionary in ascending order of their keys, by character value.
[[nodiscard]] ZQ_EXPORT std::vector<const Value::Dictionary::Entry*> sortedByKey(
    const Value::Dictionary& dictionary);

}  // namespace zqcore::platform
