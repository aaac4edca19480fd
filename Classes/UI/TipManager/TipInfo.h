#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Keyboard/Key.h"
#include "Platform/Keyboard/KeyCombo.h"

namespace zqcore {

/// How soon a tip shows after it is asked for.
enum class TipDisplayStrategy {
    immediately = 0,
    /// After the pointer has rested for a second.
    delay = 1,
};

/// The side of its view on which a tip sits.
enum class TipLocation { top = 0, bottom = 1, left = 2, right = 3 };

/// How a tip above or below lines up with its view.
enum class TipHorizontalAlignment { center = 0, left = 1, right = 2 };

/// How a tip beside lines up with its view.
enum class TipVerticalAlignment { center = 0, top = 1, bottom = 2 };

/// What a person presses for the action that a line of the tip describes. Threads: a value.
class TipTrigger final {
  public:
    using Texts = std::vector<std::string>;
    using Composite = std::vector<TipTrigger>;
    using Value = std::variant<KeyCombo, Key, Texts, Composite>;

    /// One key cap for each modifier and one for the key, or one that tells of a doubled modifier.
    [[nodiscard]] static TipTrigger keyCombo(KeyCombo combo) { return TipTrigger(combo); }
    /// One key cap, in the present keyboard layout.
    [[nodiscard]] static TipTrigger key(Key key) { return TipTrigger(key); }
    /// One key cap for each text that isn't empty.
    [[nodiscard]] static TipTrigger texts(Texts texts) { return TipTrigger(std::move(texts)); }
    /// A group of key caps for each member, with thin bars between. One inside another draws nothing.
    [[nodiscard]] static TipTrigger composite(Composite members) { return TipTrigger(std::move(members)); }

    [[nodiscard]] const Value& value() const noexcept { return value_; }

  private:
    explicit TipTrigger(Value value) : value_(std::move(value)) {}
    Value value_;
};

/// What a tip says and where it wants to sit: one for each control, filled in by the application.
/// Units: points. Threads: the main thread. Lifetime: shared; who shows tips keeps it only while one is
/// pending. A change shows the next time that the tip is shown.
class ZQ_EXPORT TipInfo final {
    struct Private {};

  public:
    [[nodiscard]] static std::shared_ptr<TipInfo> make() { return std::make_shared<TipInfo>(Private()); }
    explicit TipInfo(Private) {}
    TipInfo(const TipInfo&) = delete;
    TipInfo& operator=(const TipInfo&) = delete;

    /// Absent: as `TipManager` has it.
    std::optional<TipDisplayStrategy> displayStrategy;
    /// The side that is tried first; the opposite one is taken where there is no room.
    TipLocation location = TipLocation::top;
    TipHorizontalAlignment horizontalAlignment = TipHorizontalAlignment::center;
    /// Moves a tip above or below to the right.
    CGFloat horizontalOffset = 0;
    TipVerticalAlignment verticalAlignment = TipVerticalAlignment::center;
    /// Moves a tip beside upwards.
    CGFloat verticalOffset = 0;
    /// The gap between the view and the tip's visible card.
    CGFloat spacing = 5;
    /// The first line; that of the left mouse button when there is a `rightText` too. Without it no tip
    /// shows.
    std::optional<std::string> text;
    std::optional<TipTrigger> trigger;
    /// The line of the right mouse button.
    std::optional<std::string> rightText;
    std::optional<TipTrigger> rightTrigger;
    /// Shortcuts of the whole window, listed below a rule and a heading.
    std::optional<std::vector<std::pair<std::string, TipTrigger>>> windowActions;

    /// Whether both lines have at least one character.
    [[nodiscard]] bool bothHaveText() const noexcept {
        return text && !text->empty() && rightText && !rightText->empty();
    }
};

}  // namespace zqcore
