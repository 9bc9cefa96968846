#pragma once

#include "models/KeyboardShortcut.h"

#include <optional>
#include <string>
#include <variant>

namespace vocalith {

/// `vocalith shortcuts list`
struct ShortcutsListOptions {};

/// `vocalith shortcuts set WHICH KEYS`
struct ShortcutsSetOptions {
    std::string which; ///< "main", "journal" or the name of a prompt
    std::string keys;  ///< "Ctrl+Alt+Space"; empty leaves them as they are
    std::optional<ActivationMode> mode;
};

/// `vocalith shortcuts clear WHICH`
struct ShortcutsClearOptions {
    std::string which;
};

using ShortcutsOptions = std::variant<ShortcutsListOptions, ShortcutsSetOptions, ShortcutsClearOptions>;

} // namespace vocalith
