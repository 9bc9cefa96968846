#pragma once

namespace vocalith {

/// How text gets into the focused application. The names are the stored form.
enum class TextTypingMode {
    smartPaste, ///< paste, whatever the keyboard layout, without leaving a trace in clipboard histories
    pasteStandard,
    pasteColemak,
    pasteDvorak,
    pasteOptimot,
    simulateKeystrokes, ///< type it, character by character
    accessibilityAPI    ///< hand it to the focused element
};

} // namespace vocalith
