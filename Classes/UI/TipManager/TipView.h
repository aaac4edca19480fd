#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Classes/UI/TipManager/TipInfo.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Base/Export.h"

namespace zqcore {

namespace platform {
class NSStackView;
}

/// The card of a tip: lines of text with key caps, made from a `TipInfo`. Its size is its `fittingSize`.
/// Units: points. Threads: main thread. Lifetime: as its window. Failure: a tip without text leaves it empty.
class ZQ_EXPORT TipView final : public NSView {
  public:
    /// The clear margin that the window leaves round the card, for its shadow.
    static constexpr CGFloat shadowHorizontalInset = 10;
    static constexpr CGFloat shadowVerticalInset = 10;

    /// Left and right of a line.
    const CGFloat standardInset = 15;
    /// Left of a line that begins with the picture of a mouse.
    const CGFloat imageInset = 12;
    /// Of every line and key cap.
    const CGFloat lineHeight = 20;
    /// Above the first line, between lines and below the last.
    const CGFloat lineSpacing = 9;

    /// Replaces all content.
    void update(const TipInfo& info);

    // The parts of a card. Each is null or absent where there is nothing to show.
    /// The text, and the caps of the trigger behind it.
    [[nodiscard]] std::shared_ptr<NSStackView> generateSingleLine(const std::optional<std::string>& text,
                                                                  const std::optional<TipTrigger>& trigger);
    using Views = std::vector<std::shared_ptr<NSView>>;
    /// The caps of each member of a composite; of any other trigger as one group.
    [[nodiscard]] std::optional<std::vector<Views>> generateTriggerViewGroups(
        const std::optional<TipTrigger>& trigger);
    [[nodiscard]] std::optional<Views> generateSingleTriggerView(const TipTrigger& trigger);
    /// One key cap: square for a single character.
    [[nodiscard]] std::shared_ptr<NSView> generateTextContainerView(std::string_view text);
    /// What stands on the key in the present keyboard layout.
    [[nodiscard]] std::optional<std::string> generateKeyText(Key key);

  protected:
    void setup() override;

  private:
    class Lines;
};

}  // namespace zqcore
