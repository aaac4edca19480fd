#pragma once

#include <memory>
#include <string>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

inline constexpr CGFloat NSFontWeightRegular = 0;
inline constexpr CGFloat NSFontWeightMedium = 0.23;
inline constexpr CGFloat NSFontWeightSemibold = 0.3;
inline constexpr CGFloat NSFontWeightBold = 0.4;

/// A font of the one family that everything is set in, by size in points and weight from -1 to 1.
/// The family is pinned, so that text measures the same on every machine that has it (TextLayout.h).
/// Threads: any; it never changes. Lifetime: shared.
/// Failure: without the family another one of the system steps in, and one line tells so; without any font
/// the metrics are the family's and nothing is drawn.
class ZQ_EXPORT NSFont final : public NSObject {
  public:
    /// A size that isn't above 0 means the system's own size.
    [[nodiscard]] static std::shared_ptr<NSFont> systemFontOfSize(CGFloat size,
                                                                  CGFloat weight = NSFontWeightRegular);
    [[nodiscard]] static std::shared_ptr<NSFont> boldSystemFontOfSize(CGFloat size) {
        return systemFontOfSize(size, NSFontWeightBold);
    }
    [[nodiscard]] static constexpr CGFloat systemFontSize() noexcept { return 13; }
    [[nodiscard]] static constexpr CGFloat smallSystemFontSize() noexcept { return 11; }

    [[nodiscard]] CGFloat pointSize() const noexcept { return size_; }
    [[nodiscard]] CGFloat weight() const noexcept { return weight_; }
    [[nodiscard]] std::string fontName() const;
    /// Above the base line; positive.
    [[nodiscard]] CGFloat ascender() const noexcept { return ascender_; }
    /// Below the base line; negative.
    [[nodiscard]] CGFloat descender() const noexcept { return descender_; }
    /// Between two lines.
    [[nodiscard]] CGFloat leading() const noexcept { return leading_; }

    [[nodiscard]] bool isEqual(const NSFont& other) const noexcept {
        return size_ == other.size_ && weight_ == other.weight_;
    }

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSFont(CGFloat size, CGFloat weight);

    CGFloat size_;
    CGFloat weight_;
    CGFloat ascender_ = 0;
    CGFloat descender_ = 0;
    CGFloat leading_ = 0;
};

}  // namespace zqcore::platform
