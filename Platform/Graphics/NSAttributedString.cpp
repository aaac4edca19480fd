#include "Platform/Graphics/NSAttributedString.h"

#include <algorithm>
#include <utility>

#include "Platform/Foundation/Text/Utf16.h"

namespace zqcore::platform {

NSAttributedString::NSAttributedString(std::string_view text, NSTextAttributes attributes)
    : text_(text), length_(utf16Length(text)) {
    if (length_ > 0) runs_.push_back({{0, length_}, std::move(attributes)});
}

NSTextAttributes NSAttributedString::attributesAtIndex(std::size_t index, NSRange* effectiveRange) const {
    for (const Run& run : runs_) {
        if (index >= run.range.location + run.range.length) continue;
        if (effectiveRange) *effectiveRange = run.range;
        return run.attributes;
    }
    if (effectiveRange) *effectiveRange = {length_, 0};
    return {};
}

bool NSAttributedString::isEqualToAttributedString(const NSAttributedString& other) const {
    return text_ == other.text_ && std::ranges::equal(runs_, other.runs_, [](const Run& a, const Run& b) {
               return a.range == b.range && a.attributes == b.attributes;
           });
}

std::shared_ptr<NSMutableAttributedString> NSMutableAttributedString::make(const NSAttributedString& other) {
    auto copy = make(other.string());
    copy->runs_ = other.runs();
    return copy;
}

void NSMutableAttributedString::addAttributes(const NSTextAttributes& attributes, NSRange range) {
    if (attributes.isEmpty() || range.location >= length_) return;
    const std::size_t end = range.location + std::min(range.length, length_ - range.location);
    std::vector<Run> changed;
    changed.reserve(runs_.size() + 2);
    const auto keep = [&](std::size_t from, std::size_t to, const NSTextAttributes& kept) {
        if (from < to) changed.push_back({{from, to - from}, kept});
    };
    for (const Run& run : runs_) {
        const std::size_t first = run.range.location;
        const std::size_t last = first + run.range.length;
        NSTextAttributes mixed = run.attributes;
        if (attributes.font) mixed.font = attributes.font;
        if (attributes.foregroundColor) mixed.foregroundColor = attributes.foregroundColor;
        keep(first, std::min(last, range.location), run.attributes);
        keep(std::max(first, range.location), std::min(last, end), mixed);
        keep(std::max(first, end), last, run.attributes);
    }
    runs_ = std::move(changed);
    joinEqualNeighbours();
}

void NSMutableAttributedString::appendAttributedString(const NSAttributedString& other) {
    // Copies first: a string may be appended to itself.
    const std::vector<Run> added = other.runs();
    const std::size_t addedLength = other.length();
    text_ += std::string(other.string());
    for (Run run : added) {
        run.range.location += length_;
        runs_.push_back(std::move(run));
    }
    length_ += addedLength;
    joinEqualNeighbours();
}

void NSMutableAttributedString::joinEqualNeighbours() {
    std::vector<Run> joined;
    for (Run& run : runs_) {
        if (!joined.empty() && joined.back().attributes == run.attributes) {
            joined.back().range.length += run.range.length;
        } else {
            joined.push_back(std::move(run));
        }
    }
    runs_ = std::move(joined);
}

}  // namespace zqcore::platform
