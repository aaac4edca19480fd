#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/Base/NSRange.h"
#include "Platform/Foundation/Text/TextRange.h"

namespace zqcore::platform {

/// A compiled pattern in the dialect of ICU's regular expressions.
/// Threads: immutable; any number of threads may match at once. Lifetime: held by shared_ptr.
/// Failure: `make` gives a null pointer for an invalid pattern; a match that runs out of its backtracking
/// room (8 MB) counts as none. Bytes of a text that aren't UTF-8 read as U+FFFD.
class ZQ_EXPORT NSRegularExpression final {
  public:
    enum Options : unsigned { none = 0, caseInsensitive = 1 };

    [[nodiscard]] static std::shared_ptr<const NSRegularExpression> make(std::string_view pattern,
                                                                         Options options = none);
    /// The same; an invalid pattern gives what is wrong with it and where (NSCocoaErrorDomain 2048).
    [[nodiscard]] static std::expected<std::shared_ptr<const NSRegularExpression>, NSError>
    regularExpressionWithPattern(std::string_view pattern, Options options = none);
    ~NSRegularExpression();
    NSRegularExpression(const NSRegularExpression&) = delete;
    NSRegularExpression& operator=(const NSRegularExpression&) = delete;

    /// Whether the pattern matches the whole of `text`, as the predicate `SELF MATCHES` asks.
    [[nodiscard]] bool matchesWhole(std::string_view text) const;

    /// The first match that lies within `range`, which also bounds what `^` and look-behind see.
    [[nodiscard]] std::optional<TextRange> rangeOfFirstMatch(std::string_view text, TextRange range) const;

    /// All matches in `text`, in order and none overlapping, in UTF-16 units.
    [[nodiscard]] std::vector<NSRange> matchesInString(std::string_view text) const;

    /// `text` with every match replaced. In the template `$0` is the match and `$n` a group, with further
    /// digits only while there is such a group; a group without part in the match is empty, a `$` without
    /// digit stands for itself, and a backslash takes the next character as it is.
    [[nodiscard]] std::string stringByReplacingMatches(std::string_view text,
                                                       std::string_view withTemplate) const;

  private:
    struct Compiled;
    explicit NSRegularExpression(std::unique_ptr<Compiled> compiled) noexcept;

    std::unique_ptr<Compiled> compiled_;
};

}  // namespace zqcore::platform
