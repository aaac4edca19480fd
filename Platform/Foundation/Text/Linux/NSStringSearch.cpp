#include "Platform/Foundation/Text/NSStringSearch.h"

#include <algorithm>

#include "Platform/Foundation/Text/Linux/FoldedText.h"
#include "Platform/Foundation/Text/NSRegularExpression.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

class NSStringSearch::Method {
  public:
    virtual ~Method() = default;
    [[nodiscard]] virtual std::optional<TextRange> find(std::size_t from) const = 0;
};

class NSStringSearch::ByPattern final : public Method {
  public:
    ByPattern(std::string_view text, std::string_view pattern, unsigned options)
        : text_(text),
          anchored_((options & NSAnchoredSearch) != 0),
          pattern_(NSRegularExpression::make(pattern, options & NSCaseInsensitiveSearch
                                                          ? NSRegularExpression::caseInsensitive
                                                          : NSRegularExpression::none)) {}

    [[nodiscard]] std::optional<TextRange> find(std::size_t from) const override {
        if (!pattern_) return std::nullopt;
        const auto found = pattern_->rangeOfFirstMatch(text_, {from, text_.size()});
        return anchored_ && found && found->begin != from ? std::nullopt : found;
    }

  private:
    std::string_view text_;
    bool anchored_;
    std::shared_ptr<const NSRegularExpression> pattern_;
};

/// For texts in which every byte is a character of its own, and for literal searches.
class NSStringSearch::ByBytes final : public Method {
  public:
    ByBytes(std::string_view text, std::string_view needle, unsigned options)
        : text_(text), needle_(needle), options_(options) {}

    [[nodiscard]] std::optional<TextRange> find(std::size_t from) const override {
        const auto rest = text_.substr(from);
        std::size_t found = std::string_view::npos;
        switch (options_ & (NSAnchoredSearch | NSBackwardsSearch)) {
            case 0:
                found = rest.find(needle_);
                break;
            case NSBackwardsSearch:
                found = rest.rfind(needle_);
                break;
            case NSAnchoredSearch:
                if (rest.starts_with(needle_)) found = 0;
                break;
            default:
                if (rest.ends_with(needle_)) found = rest.size() - needle_.size();
                break;
        }
        if (found == std::string_view::npos) return std::nullopt;
        return TextRange{from + found, from + found + needle_.size()};
    }

  private:
    std::string_view text_;
    std::string_view needle_;
    unsigned options_;
};

class NSStringSearch::ByCharacters final : public Method {
  public:
    ByCharacters(std::string_view text, std::string_view needle, unsigned options)
        : text_(text, options), needle_(needle, options), options_(options) {}

    [[nodiscard]] std::optional<TextRange> find(std::size_t from) const override {
        const std::size_t first = indexAt(from);
        if (needle_.size() == 0 || first + needle_.size() > text_.size()) return std::nullopt;
        const std::size_t last = text_.size() - needle_.size();
        const bool backwards = (options_ & NSBackwardsSearch) != 0;
        if (options_ & NSAnchoredSearch) return matchAt(backwards ? last : first);
        for (std::size_t step = 0; step <= last - first; ++step) {
            if (const auto match = matchAt(backwards ? last - step : first + step)) return match;
        }
        return std::nullopt;
    }

  private:
    [[nodiscard]] std::optional<TextRange> matchAt(std::size_t index) const {
        const std::size_t begin = text_.beginAt(index);
        const std::size_t end = text_.endAt(index + needle_.size() - 1);
        if (begin == FoldedText::kNoPlace || end == FoldedText::kNoPlace) return std::nullopt;
        const auto scalars = text_.scalars().begin() + static_cast<std::ptrdiff_t>(index);
        if (!std::equal(needle_.scalars().begin(), needle_.scalars().end(), scalars)) return std::nullopt;
        return TextRange{begin, end};
    }

    /// The first scalar at or behind a place. Searches go from front to back, so it is looked for from the
    /// last answer on.
    [[nodiscard]] std::size_t indexAt(std::size_t from) const {
        if (from < lastPlace_) lastIndex_ = 0;
        lastPlace_ = from;
        while (lastIndex_ < text_.size() &&
               (text_.beginAt(lastIndex_) == FoldedText::kNoPlace || text_.beginAt(lastIndex_) < from)) {
            ++lastIndex_;
        }
        return lastIndex_;
    }

    FoldedText text_;
    FoldedText needle_;
    unsigned options_;
    mutable std::size_t lastPlace_ = 0;
    mutable std::size_t lastIndex_ = 0;
};

NSStringSearch::NSStringSearch(std::string_view text, std::string_view needle, unsigned options) {
    if (needle.empty()) return;
    constexpr unsigned kFolding =
        NSCaseInsensitiveSearch | NSDiacriticInsensitiveSearch | NSWidthInsensitiveSearch;
    if (options & NSRegularExpressionSearch) {
        method_ = std::make_unique<ByPattern>(text, needle, options);
    } else if (!(options & kFolding) && ((options & NSLiteralSearch) || (isASCII(text) && isASCII(needle)))) {
        method_ = std::make_unique<ByBytes>(text, needle, options);
    } else {
        method_ = std::make_unique<ByCharacters>(text, needle, options);
    }
}

NSStringSearch::~NSStringSearch() = default;

std::optional<TextRange> NSStringSearch::find(std::size_t from) const {
    return method_ ? method_->find(from) : std::nullopt;
}

}  // namespace zqcore::platform
