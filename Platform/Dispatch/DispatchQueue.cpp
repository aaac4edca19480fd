#include "Platform/Dispatch/DispatchQueue.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "Platform/Dispatch/Linux/CurrentQueue.h"
#include "Platform/Dispatch/Linux/DeadlineScheduler.h"
#include "Platform/Dispatch/Linux/MainQueue.h"
#include "Platform/Dispatch/Linux/SerialQueue.h"
#include "Platform/Dispatch/Linux/WorkerPool.h"

namespace zqcore::platform {

namespace {

class GlobalQueue final : public DispatchQueue {
  public:
    GlobalQueue(std::string label, DispatchQoS qos) : label_(std::move(label)), qos_(qos) {}

    void async(DispatchBlock block) override { WorkerPool::shared().submit(std::move(block), *this, qos_); }
    // Nothing has to be waited for: blocks here run side by side anyway.
    void sync(const std::function<void()>& block) noexcept override {
        const CurrentQueueScope scope(this);
        block();
    }
    [[nodiscard]] const std::string& label() const noexcept override { return label_; }
    [[nodiscard]] DispatchQoS qos() const noexcept override { return qos_; }

  private:
    const std::string label_;
    const DispatchQoS qos_;
};

constexpr std::string_view kDefaultRootLabel = "com.apple.root.default-qos";

using SharedQueue = std::shared_ptr<DispatchQueue>;

SharedQueue makeGlobal(std::string_view label, DispatchQoS qos) {
    return std::make_shared<GlobalQueue>(std::string(label), qos);
}

}  // namespace

std::shared_ptr<DispatchQueue> DispatchQueue::serial(std::string label, DispatchQoS qos) {
    return std::make_shared<SerialQueue>(std::move(label), qos);
}

const std::shared_ptr<DispatchQueue>& DispatchQueue::main() { return MainQueue::sharedPointer(); }

const std::shared_ptr<DispatchQueue>& DispatchQueue::global(DispatchQoS qos) {
    // Never ended: workers may run their blocks while the process goes.
    static const auto& queues = *new std::array<SharedQueue, 5>{
        makeGlobal("com.apple.root.background-qos", DispatchQoS::background),
        makeGlobal("com.apple.root.utility-qos", DispatchQoS::utility),
        makeGlobal(kDefaultRootLabel, DispatchQoS::standard),
        makeGlobal("com.apple.root.user-initiated-qos", DispatchQoS::userInitiated),
        makeGlobal("com.apple.root.user-interactive-qos", DispatchQoS::userInteractive)};
    switch (qos) {
        case DispatchQoS::background:
            return queues[0];
        case DispatchQoS::utility:
            return queues[1];
        case DispatchQoS::userInitiated:
            return queues[3];
        case DispatchQoS::userInteractive:
            return queues[4];
        default:
            return queues[2];
    }
}

void DispatchQueue::after(DispatchTime time, DispatchBlock block) {
    DeadlineScheduler::shared().submitAt(time, shared_from_this(), std::move(block));
}

std::string_view DispatchQueue::currentLabel() noexcept {
    if (const DispatchQueue* queue = CurrentQueueScope::current()) return queue->label();
    // Not by way of the queues: crash capture asks in a signal handler, where none may be made.
    return isMainThread() ? MainQueue::kLabel : kDefaultRootLabel;
}

DispatchBlockingScope::DispatchBlockingScope() noexcept : counted_(WorkerPool::shared().beginBlocking()) {}

DispatchBlockingScope::~DispatchBlockingScope() {
    if (counted_) WorkerPool::shared().endBlocking();
}

bool isMainThread() noexcept {
    static thread_local const bool isMain = syscall(SYS_gettid) == getpid();
    return isMain;
}

}  // namespace zqcore::platform
