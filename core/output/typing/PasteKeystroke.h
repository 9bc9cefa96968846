#pragma once

#include "models/TextTypingMode.h"
#include "models/VirtualKeyCode.h"

#include <optional>
#include <string_view>

namespace vocalith {

/// The key that carries the letter V in a keyboard layout, by its place.
struct PasteKeystroke {
    int virtualKeyCode = 0;
    std::string_view label; ///< in the log
};

/// None for the modes that paste nothing.
constexpr std::optional<PasteKeystroke> pasteKeystroke(TextTypingMode mode)
{
    switch (mode) {
    case TextTypingMode::smartPaste: return PasteKeystroke{virtual_key_code::ansiV, "Smart Paste Command+V"};
    case TextTypingMode::pasteStandard: return PasteKeystroke{virtual_key_code::ansiV, "Command+V"};
    case TextTypingMode::pasteColemak: return PasteKeystroke{virtual_key_code::ansiD, "Command+D (Colemak)"};
    case TextTypingMode::pasteDvorak: return PasteKeystroke{virtual_key_code::ansiPeriod, "Command+. (Dvorak)"};
    case TextTypingMode::pasteOptimot: return PasteKeystroke{virtual_key_code::ansiSlash, "Command+/ (Optimot)"};
    case TextTypingMode::simulateKeystrokes:
    case TextTypingMode::accessibilityAPI: break;
    }
    return std::nullopt;
}

} // namespace vocalith
