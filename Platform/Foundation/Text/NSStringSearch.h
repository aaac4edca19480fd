#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/Text/TextRange.h"

namespace zqcore::platform {

/// How to search, as bits.
enum NSStringCompareOptions : unsigned {
    NSCaseInsensitiveSearch = 1,
    NSLiteralSearch = 2,    ///< unit by unit, without regard to composed characters
    NSBackwardsSearch = 4,  ///< the last match
    NSAnchoredSearch = 8,   ///< only at the beginning, or backwards at the end
    NSDiacriticInsensitiveSearch = 128,
    NSWidthInsensitiveSearch = 256,
    NSRegularExpressionSearch = 1024  ///< the needle is a pattern; of the others case and anchor count
};

/// Searches one text again and again for one needle, as the platform's `rangeOfString:options:range:`.
/// Without options canonically equivalent texts match, and only whole composed characters: "e" isn't found in
/// an "e" that bears a mark. What has to be worked out for that is worked out once. Threads: an object
/// belongs to one thread. Lifetime: refers to text and needle. Failure: an empty needle and an invalid
/// pattern are never found.
class ZQ_EXPORT NSStringSearch final {
  public:
    NSStringSearch(std::string_view text, std::string_view needle, unsigned options);
    ~NSStringSearch();
    NSStringSearch(const NSStringSearch&) = delete;
    NSStringSearch& operator=(const NSStringSearch&) = delete;

    /// The match in what follows `from`, a place between two characters.
    [[nodiscard]] std::optional<TextRange> find(std::size_t from) const;

  private:
    class Method;
    class ByPattern;
    class ByBytes;
    class ByCharacters;

    std::unique_ptr<Method> method_;
};

}  // namespace zqcore::platform
