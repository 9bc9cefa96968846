#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vocalith {

/// Virtual key codes: the place of a key on the keyboard, whatever the layout makes of it. They are part of what is
/// stored. Keys that the encoding has no code for have `foreign` plus their Linux input event code.
namespace virtual_key_code {
inline constexpr int ansiD = 2;
inline constexpr int ansiV = 9;
inline constexpr int returnKey = 36;
inline constexpr int ansiSlash = 44;
inline constexpr int ansiPeriod = 47;
inline constexpr int tab = 48;
inline constexpr int space = 49;
inline constexpr int deleteKey = 51;
inline constexpr int escape = 53;
inline constexpr int rightCommand = 54;
inline constexpr int command = 55;
inline constexpr int shift = 56;
inline constexpr int capsLock = 57;
inline constexpr int option = 58;
inline constexpr int control = 59;
inline constexpr int rightShift = 60;
inline constexpr int rightOption = 61;
inline constexpr int rightControl = 62;
inline constexpr int function = 63;
inline constexpr int foreign = 0x1000;
} // namespace virtual_key_code

/// The code of the same key in linux/input-event-codes.h, which is the X11 key code less 8. None for an unknown code.
std::optional<int> inputEventCode(int virtualKeyCode);
/// The other way round; every positive code has a virtual one.
int virtualKeyCode(int inputEventCode);

/// The flag of a modifier key, or 0 for any other key.
std::uint64_t modifierFlag(int virtualKeyCode);
bool isFunctionKey(int virtualKeyCode); ///< F1 to F20

/// The key of a digit of the main row, 0 to 9.
int digitKeyCode(int digit);

} // namespace vocalith
