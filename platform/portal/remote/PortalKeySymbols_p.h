#pragma once

#include "models/KeyboardShortcut.h"

#include <cstdint>
#include <string>

namespace vocalith {

/// The X keysym of a key on a US keyboard without Shift, by its name ("space", "a", "Page_Up"); empty for a key that
/// has none.
std::string keysymName(int virtualKeyCode);
/// The same as a number; 0 for none.
std::uint32_t keysym(int virtualKeyCode);
/// The keysym that types a character; 0 for none.
std::uint32_t keysymOf(char32_t character);

/// The keys in the form of the XDG shortcuts specification: "CTRL+ALT+space". Empty when they cannot be said in it.
std::string triggerText(const KeyboardShortcut::Keys& keys);

} // namespace vocalith
