#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zqcore::platform {

/// A text brought into the form in which two texts that count as equal are equal: canonically decomposed and,
/// as the options ask, without case, marks and widths. Each scalar of it knows its place in the text.
class FoldedText final {
  public:
    /// `options` are bits of NSStringCompareOptions.
    FoldedText(std::string_view text, unsigned options);

    static constexpr std::size_t kNoPlace = static_cast<std::size_t>(-1);

    [[nodiscard]] std::size_t size() const noexcept { return scalars_.size(); }
    [[nodiscard]] const std::vector<char32_t>& scalars() const noexcept { return scalars_; }
    /// Where the character begins (ends) that the scalar is the first (last) of; `kNoPlace` inside of one.
    [[nodiscard]] std::size_t beginAt(std::size_t index) const noexcept { return places_[index].begin; }
    [[nodiscard]] std::size_t endAt(std::size_t index) const noexcept { return places_[index].end; }

  private:
    struct Place {
        std::size_t begin;
        std::size_t end;
    };
    void append(std::string_view character, std::size_t begin, unsigned options);

    std::vector<char32_t> scalars_;
    std::vector<Place> places_;
};

}  // namespace zqcore::platform
