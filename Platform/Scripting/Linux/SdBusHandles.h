#pragma once

#include <systemd/sd-bus.h>

#include <memory>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Foundation/Linux/FileSupport.h"

namespace zqcore::platform {

// The counters inside aren't atomic: take and drop these only under the connection's lock.
using SdBusHandle = std::unique_ptr<sd_bus, ReleasedBy<sd_bus_close_unref>>;
using SdMessageHandle = std::unique_ptr<sd_bus_message, ReleasedBy<sd_bus_message_unref>>;
using SdSlotHandle = std::unique_ptr<sd_bus_slot, ReleasedBy<sd_bus_slot_unref>>;

using FileDescriptor = posix::Descriptor;

}  // namespace zqcore::platform
