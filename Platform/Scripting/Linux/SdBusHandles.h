#pragma once

#include <systemd/sd-bus.h>

#include <memory>

#include "Platform/Foundation/Linux/FileSupport.h"

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

using FileDescriptor = posix::Descriptor;

}  // namespace zqcore::platform
