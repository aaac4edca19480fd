#pragma once

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <memory>
#include <utility>

namespace zqcore::platform {

/// Pairs each sd-bus type with its release function. The counters inside aren't atomic: take and drop these
/// only under the connection's lock.
template <auto Release>
struct SdBusDeleter {
    template <class T>
    void operator()(T* object) const noexcept {
        Release(object);
    }
};

using SdBusHandle = std::unique_ptr<sd_bus, SdBusDeleter<&sd_bus_close_unref>>;
using SdMessageHandle = std::unique_ptr<sd_bus_message, SdBusDeleter<&sd_bus_message_unref>>;
using SdSlotHandle = std::unique_ptr<sd_bus_slot, SdBusDeleter<&sd_bus_slot_unref>>;

/// A file descriptor that closes itself; -1 for none. Any thread.
class FileDescriptor final {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }

    [[nodiscard]] int get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

  private:
    int descriptor_ = -1;
};

}  // namespace zqcore::platform
