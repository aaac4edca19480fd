#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Finds the nearest place that keeps a rectangle inside another, on the sides that count.
/// Units: points; y grows upwards. Threads: any. Failure: none; what doesn't fit sticks out at the right and
/// at the bottom.
class ZQ_EXPORT FrameCalculator final {
  public:
    FrameCalculator() = delete;

    /// A set of sides, in one byte.
    class LimitDirections final {
      public:
        std::uint8_t rawValue = 0;

        constexpr LimitDirections() noexcept = default;
        constexpr explicit LimitDirections(std::uint8_t raw) noexcept : rawValue(raw) {}
        constexpr LimitDirections(std::initializer_list<LimitDirections> members) noexcept {
            for (const auto member : members) formUnion(member);
        }

        static const LimitDirections top;
        static const LimitDirections left;
        static const LimitDirections bottom;
        static const LimitDirections right;
        static const LimitDirections allCases;

        [[nodiscard]] constexpr bool isEmpty() const noexcept { return rawValue == 0; }
        [[nodiscard]] constexpr bool contains(LimitDirections member) const noexcept {
            return (rawValue & member.rawValue) == member.rawValue;
        }
        [[nodiscard]] constexpr bool isSubset(LimitDirections of) const noexcept {
            return of.contains(*this);
        }
        [[nodiscard]] constexpr bool isSuperset(LimitDirections of) const noexcept { return contains(of); }
        [[nodiscard]] constexpr bool isDisjoint(LimitDirections with) const noexcept {
            return intersection(with).isEmpty();
        }

        /// `union`, a word that C++ keeps for itself.
        [[nodiscard]] constexpr LimitDirections union_(LimitDirections other) const noexcept {
            return raw(rawValue | other.rawValue);
        }
        [[nodiscard]] constexpr LimitDirections intersection(LimitDirections other) const noexcept {
            return raw(rawValue & other.rawValue);
        }
        [[nodiscard]] constexpr LimitDirections symmetricDifference(LimitDirections other) const noexcept {
            return raw(rawValue ^ other.rawValue);
        }
        [[nodiscard]] constexpr LimitDirections subtracting(LimitDirections other) const noexcept {
            return raw(rawValue & ~other.rawValue);
        }
        constexpr void formUnion(LimitDirections other) noexcept { *this = union_(other); }
        constexpr void formIntersection(LimitDirections other) noexcept { *this = intersection(other); }
        constexpr void formSymmetricDifference(LimitDirections other) noexcept {
            *this = symmetricDifference(other);
        }

        /// Puts the member in; gives whether it was not yet wholly there.
        constexpr bool insert(LimitDirections member) noexcept {
            const bool inserted = !contains(member);
            formUnion(member);
            return inserted;
        }
        /// Takes the member out; gives what of it was there, or absent.
        constexpr std::optional<LimitDirections> remove(LimitDirections member) noexcept {
            const auto found = intersection(member);
            *this = subtracting(member);
            return found.isEmpty() ? std::nullopt : std::optional(found);
        }
        /// Puts the member in; gives what of it was there before, or absent.
        constexpr std::optional<LimitDirections> update(LimitDirections member) noexcept {
            const auto found = intersection(member);
            formUnion(member);
            return found.isEmpty() ? std::nullopt : std::optional(found);
        }

        friend constexpr bool operator==(LimitDirections, LimitDirections) noexcept = default;

      private:
        static constexpr LimitDirections raw(int value) noexcept {
            return LimitDirections(static_cast<std::uint8_t>(value));
        }
    };

    /// Rounds `contentFrame` outwards to whole points and moves it so that it keeps at least `minInsets` (a
    /// negative one counts as 0) from the edges of `visibleFrame`, on the sides in `limitDirections`. Its
    /// size is never changed but by the rounding. Where it doesn't fit, left wins over right and top over
    /// bottom.
    [[nodiscard]] static CGRect calculateSuitable(const CGRect& contentFrame, const CGRect& visibleFrame,
                                                  const NSEdgeInsets& minInsets,
                                                  LimitDirections limitDirections) noexcept;
};

inline constexpr FrameCalculator::LimitDirections FrameCalculator::LimitDirections::top{std::uint8_t{1}};
inline constexpr FrameCalculator::LimitDirections FrameCalculator::LimitDirections::left{std::uint8_t{2}};
inline constexpr FrameCalculator::LimitDirections FrameCalculator::LimitDirections::bottom{std::uint8_t{4}};
inline constexpr FrameCalculator::LimitDirections FrameCalculator::LimitDirections::right{std::uint8_t{8}};
inline constexpr FrameCalculator::LimitDirections FrameCalculator::LimitDirections::allCases{
    std::uint8_t{15}};

}  // namespace zqcore
