#pragma once

#include <cstdint>

namespace zqcore::platform {

/// The modifier keys that are held, as bits in the platform's numbers. Threads: a value.
using NSEventModifierFlags = std::uint64_t;
inline constexpr NSEventModifierFlags NSEventModifierFlagCapsLock = 1 << 16;
inline constexpr NSEventModifierFlags NSEventModifierFlagShift = 1 << 17;
inline constexpr NSEventModifierFlags NSEventModifierFlagControl = 1 << 18;
inline constexpr NSEventModifierFlags NSEventModifierFlagOption = 1 << 19;
inline constexpr NSEventModifierFlags NSEventModifierFlagCommand = 1 << 20;
inline constexpr NSEventModifierFlags NSEventModifierFlagFunction = 1 << 23;

}  // namespace zqcore::platform
