#pragma once

#include <cstdint>
#include <limits>

#include "Platform/Base/Export.h"

namespace zqcore {

/// A generation counter: whoever holds a seed can tell later whether the counter has moved on since.
/// Threads: no lock; an object belongs to one thread or queue. Failure: none; the counter starts again at 0
/// before it would reach the greatest signed 64-bit number.
class ZQ_EXPORT SeedChecker final {
  public:
    /// The current seed; 0 at first.
    [[nodiscard]] std::int64_t fetch() const noexcept { return seed_; }
    /// Moves on and gives the new seed.
    std::int64_t increase() noexcept {
        seed_ = seed_ == std::numeric_limits<std::int64_t>::max() - 1 ? 0 : seed_ + 1;
        return seed_;
    }
    /// Whether `seed` is still the current one.
    [[nodiscard]] bool check(std::int64_t seed) const noexcept { return seed == seed_; }

  private:
    friend class SeedCheckerTestAccess;

    std::int64_t seed_ = 0;
};

}  // namespace zqcore
