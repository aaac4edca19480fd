#include "Platform/Foundation/AXIsProcessTrusted.h"

#include <atomic>

namespace zqcore::platform {

namespace {

std::atomic<bool> processIsTrusted{true};

}  // namespace

bool AXIsProcessTrusted() noexcept { return processIsTrusted.load(std::memory_order_relaxed); }

void setProcessTrusted(bool trusted) noexcept { processIsTrusted.store(trusted, std::memory_order_relaxed); }

}  // namespace zqcore::platform
