#pragma once

#include <cstdint>

namespace vocalith {

/// Modifier keys in the device-independent encoding that stored shortcuts use. Left and right keys count alike.
namespace modifier_flags {
inline constexpr std::uint64_t capsLock = 0x10000;
inline constexpr std::uint64_t shift = 0x20000;
inline constexpr std::uint64_t control = 0x40000;
inline constexpr std::uint64_t option = 0x80000;   ///< Alt on a PC keyboard
inline constexpr std::uint64_t command = 0x100000; ///< Super on a PC keyboard
inline constexpr std::uint64_t function = 0x800000;
/// Those that a shortcut may be made of: not the lock.
inline constexpr std::uint64_t ofShortcuts = shift | control | option | command | function;
} // namespace modifier_flags

} // namespace vocalith
