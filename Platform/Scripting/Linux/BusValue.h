#pragma once

#include "Platform/Base/Value.h"
#include "Platform/Scripting/Linux/SdBusHandles.h"

namespace zqcore::platform {

// Property-list values in messages. A value is a variant: boolean b, integer x (t beyond the signed range),
// real d, text s, bytes ay, date (x) in nanoseconds since 1970, array av, dictionary a{sv}.

/// Appends `value` as a variant. Negative errno: EINVAL for a null or a text that can't travel, EMSGSIZE for
/// nesting beyond what the bus takes.
[[nodiscard]] int appendVariant(sd_bus_message* message, const Value& value);
/// Appends a dictionary as a{sv}.
[[nodiscard]] int appendDictionary(sd_bus_message* message, const ValueDictionary& dictionary);

/// Reads a variant; a kind that no property list has reads as null. Negative errno for a damaged message.
[[nodiscard]] int readVariant(sd_bus_message* message, Value& value);
[[nodiscard]] int readDictionary(sd_bus_message* message, ValueDictionary& dictionary);

}  // namespace zqcore::platform
