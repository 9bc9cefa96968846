#pragma once

#include "models/KeyboardShortcut.h"

#include <optional>
#include <string>
#include <string_view>

namespace vocalith {

/// The name of a key as it is printed on a US keyboard: "Space", "F5", "A".
std::string keyName(int virtualKeyCode);

/// The keys as people write them: "Ctrl+Alt+Space", "Ctrl+Super".
std::string toString(const KeyboardShortcut::Keys& keys);

/// Reads what `toString` writes, in any case and with the usual other names ("control", "win", "esc"). Nothing when a
/// part of it is no key, or there is more than one key beside the modifiers.
std::optional<KeyboardShortcut::Keys> parseKeys(std::string_view text);

} // namespace vocalith
