#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

#include "Platform/Dispatch/BlockList.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/Futex.h"
#include "Platform/Dispatch/Linux/WorkerPool.h"

namespace zqcore::platform {

/// A serial queue on the worker pool. Producers append to one list under a short lock; whoever owns the queue
/// takes the whole list at once and runs it. The owner is a worker, or a thread inside `sync`: ownership
/// passes on, so two blocks never run at once and no thread is tied to the queue.
class SerialQueue final : public DispatchQueue, public Drainable {
  public:
    SerialQueue(std::string label, DispatchQoS qos) : label_(std::move(label)), qos_(qos) {}

    void async(DispatchBlock block) override;
    void sync(const std::function<void()>& block) override;
    [[nodiscard]] const std::string& label() const noexcept override { return label_; }
    [[nodiscard]] DispatchQoS qos() const noexcept override { return qos_; }

    void drain(const std::shared_ptr<Drainable>& self) override;

  private:
    void lingerForMore() noexcept;
    void gather() const noexcept;
    bool runBatch();
    bool takeBatchOrGo();
    void ownNowOrWait();
    void passOn();
    void submitSelf();

    // What producers write and what the owner writes lie on lines of their own; else each block run would
    // take the line from the thread that adds the next one, and back.
    static constexpr std::size_t kLine = 64;

    const std::string label_;

    alignas(kLine) BriefMutex mutex_;
    // Somebody owns the queue, or it is on its way to a worker.
    bool owned_ ZQ_GUARDED_BY(mutex_) = false;
    // What a lingering owner reads without the lock: whether anything is in `incoming_`, and who put it
    // there.
    std::atomic<bool> hasIncoming_{false};
    std::atomic<bool> foreignProducer_{false};
    BlockList incoming_ ZQ_GUARDED_BY(mutex_);

    // The owner's alone.
    alignas(kLine) BlockList batch_;
    // Set by the block that stands for a waiting `sync`: whom to give the queue to.
    OneShotSignal* successor_ = nullptr;
    int patience_ = 0;
    unsigned restsSinceTried_ = 0;
    // Its last taking brought more than one block.
    bool streams_ = false;

    const DispatchQoS qos_;
};

}  // namespace zqcore::platform
