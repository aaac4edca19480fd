#include "Classes/Core/Utility/ZQQueue.h"

#include <utility>

namespace zqcore {

const std::shared_ptr<DispatchQueue>& ZQQueue::globalSerialQueue() {
    // Never ended: threads may still submit while the process goes.
    static const auto& queue = *new std::shared_ptr<DispatchQueue>(
        DispatchQueue::serial("com.tessara.ZQQueue.globalSerialQueue", DispatchQoS::unspecified));
    return queue;
}

void ZQExecuteInMainQueue(DispatchBlock block) {
    const auto& mainQueue = DispatchQueue::main();
    if (DispatchQueue::currentLabel() == mainQueue->label()) {
        block();
    } else {
        mainQueue->async(std::move(block));
    }
}

}  // namespace zqcore
