#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

/// The main queue: blocks wait here until the run loop drains them on the main thread. The descriptor is
/// readable from the first waiting block until the last one has run, also while a block runs, so that a loop
/// nested in it goes on with the rest.
class MainQueue final : public DispatchQueue {
  public:
    static constexpr std::string_view kLabel = "com.apple.main-thread";

    static MainQueue& shared();
    static const std::shared_ptr<DispatchQueue>& sharedPointer();

    void async(DispatchBlock block) override;
    void sync(const std::function<void()>& block) override;
    [[nodiscard]] const std::string& label() const noexcept override { return label_; }
    [[nodiscard]] DispatchQoS qos() const noexcept override { return DispatchQoS::userInteractive; }

    /// Main thread: runs the blocks that wait now, not those they add. Gives whether any ran.
    bool drain() noexcept;
    /// Makes the descriptor readable once, without a block.
    void wake() noexcept;
    /// Lets `drain` have work although no block waits.
    void requestTurn();
    /// Main thread: what `drain` runs before (0) and after (1) the blocks.
    void setTurnHandler(std::size_t part, std::function<void()> handler) {
        turnHandlers_[part] = std::move(handler);
    }
    [[nodiscard]] bool hasWork();
    /// Made at first use; negative as long as the process has none left.
    [[nodiscard]] int fileDescriptor() noexcept;

    MainQueue();

  private:
    /// Makes a change under the lock, then the descriptor readable.
    template <typename Change>
    void change(const Change& change);

    const std::string label_{kLabel};
    std::atomic<int> descriptor_{-1};
    std::mutex mutex_;
    std::vector<DispatchBlock> incoming_;
    bool readable_ = false;
    bool batchWaits_ = false;
    bool turnRequested_ = false;

    // The main thread's alone.
    std::vector<DispatchBlock> batch_;
    std::size_t next_ = 0;
    std::array<std::function<void()>, 2> turnHandlers_;
};

}  // namespace zqcore::platform
