#pragma once

#include <functional>
#include <mutex>
#include <unordered_set>
#include <utility>
#include <vector>

namespace zqcore {

/// A bounded pool of idle objects that are made when none is at hand.
/// An object that is idle already is in the pool once; objects are told apart by hash and equality, shared
/// pointers by identity. Threads: any; the handlers, and the ends of dropped objects, run on the caller's
/// thread under no lock, so they may call the pool. Lifetime: idle objects end with the pool, without a
/// handler. Failure: none of its own; an exception of a handler passes through.
template <class Element>
class ZQReusePool final {
  public:
    using Generate = std::function<Element()>;
    using Handler = std::function<void(const Element&)>;

    /// `recoveryHandler` prepares an object for the pool, `reuseHandler` for its next use.
    explicit ZQReusePool(Generate generateHandler, Handler recoveryHandler = nullptr,
                         Handler reuseHandler = nullptr)
        : generateHandler_(std::move(generateHandler)),
          recoveryHandler_(std::move(recoveryHandler)),
          reuseHandler_(std::move(reuseHandler)) {}

    /// An idle object, whichever, or a new one. Both go through `reuseHandler` first.
    [[nodiscard]] Element dequeueReusableObject() {
        Element object = takeOrGenerate();
        if (reuseHandler_) reuseHandler_(object);
        return object;
    }

    /// Gives an object back. It goes through `recoveryHandler` also if the pool is full and drops it.
    void recoveryObject(Element object) {
        if (recoveryHandler_) recoveryHandler_(object);
        const std::lock_guard lock(lock_);
        if (reusePool_.size() < static_cast<std::size_t>(maxCacheCount_)) reusePool_.insert(object);
    }

    /// Drops all idle objects.
    void clear() {
        Pool dropped;
        const std::lock_guard lock(lock_);
        reusePool_.swap(dropped);
    }

    /// Keeps at most `count` idle objects from now on, 5 at first; a negative count is ignored. Those that
    /// are too many go through `recoveryHandler` once more and are dropped.
    void setMaxCacheCount(int count) {
        if (count < 0) return;
        std::vector<Element> removed;
        {
            const std::lock_guard lock(lock_);
            maxCacheCount_ = count;
            while (reusePool_.size() > static_cast<std::size_t>(count)) {
                removed.push_back(std::move(reusePool_.extract(reusePool_.begin()).value()));
            }
        }
        if (!recoveryHandler_) return;
        for (const Element& object : removed) recoveryHandler_(object);
    }

  private:
    using Pool = std::unordered_set<Element>;

    Element takeOrGenerate() {
        {
            const std::lock_guard lock(lock_);
            if (!reusePool_.empty()) return std::move(reusePool_.extract(reusePool_.begin()).value());
        }
        return generateHandler_();
    }

    const Generate generateHandler_;
    const Handler recoveryHandler_;
    const Handler reuseHandler_;
    Pool reusePool_;
    std::mutex lock_;
    int maxCacheCount_ = 5;
};

}  // namespace zqcore
