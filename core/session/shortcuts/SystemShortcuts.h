#pragma once

#include "models/KeyboardShortcut.h"

namespace vocalith {

/// Whether most desktops or applications use these keys for something that people would miss: switching windows,
/// closing one, copying and pasting, locking the screen.
bool isSystemShortcut(const KeyboardShortcut::Keys& keys);

} // namespace vocalith
