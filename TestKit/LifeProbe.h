#pragma once

#include <atomic>
#include <memory>
#include <utility>

namespace zqcore::testkit {

/// Counts what happens to a value and all its copies: captured in a closure or kept in a field, it tells when
/// that ended. Threads: any. Lifetime: the counts live as long as any probe of the family or reader.
class LifeProbe final {
  public:
    struct Counts {
        std::atomic<int> copies{0};
        std::atomic<int> moves{0};
        std::atomic<int> ends{0};
        /// Probes alive now; those that were moved from are no longer counted.
        std::atomic<int> alive{1};
    };

    LifeProbe() : counts_(std::make_shared<Counts>()) {}
    LifeProbe(const LifeProbe& other) : counts_(other.counts_) {
        if (!counts_) return;
        ++counts_->copies;
        ++counts_->alive;
    }
    LifeProbe(LifeProbe&& other) noexcept : counts_(std::move(other.counts_)) {
        if (counts_) ++counts_->moves;
    }
    LifeProbe& operator=(const LifeProbe& other) {
        LifeProbe copy(other);
        std::swap(counts_, copy.counts_);
        return *this;
    }
    LifeProbe& operator=(LifeProbe&& other) noexcept {
        LifeProbe taken(std::move(other));
        std::swap(counts_, taken.counts_);
        return *this;
    }
    ~LifeProbe() {
        if (!counts_) return;
        ++counts_->ends;
        --counts_->alive;
    }

    [[nodiscard]] std::shared_ptr<const Counts> counts() const { return counts_; }

  private:
    std::shared_ptr<Counts> counts_;
};

}  // namespace zqcore::testkit
