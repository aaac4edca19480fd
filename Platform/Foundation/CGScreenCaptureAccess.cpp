#include "Platform/Foundation/CGScreenCaptureAccess.h"

#include <atomic>

#include "Platform/Foundation/AXIsProcessTrusted.h"

namespace zqcore::platform {

namespace {

std::atomic<bool> mayCapture{true};
std::atomic<int> prompts{0};

bool asked(bool granted) noexcept {
    if (!granted) prompts.fetch_add(1, std::memory_order_relaxed);
    return granted;
}

}  // namespace

bool CGPreflightScreenCaptureAccess() noexcept { return mayCapture.load(std::memory_order_relaxed); }

bool CGRequestScreenCaptureAccess() noexcept { return asked(CGPreflightScreenCaptureAccess()); }

bool AXIsProcessTrustedWithOptions(bool prompt) noexcept {
    return prompt ? asked(AXIsProcessTrusted()) : AXIsProcessTrusted();
}

void setScreenCaptureAccess(bool granted) noexcept { mayCapture.store(granted, std::memory_order_relaxed); }

int permissionPromptsForTesting() noexcept { return prompts.load(std::memory_order_relaxed); }

}  // namespace zqcore::platform
