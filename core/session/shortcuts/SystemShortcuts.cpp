#include "core/session/shortcuts/SystemShortcuts.h"

#include "core/session/shortcuts/ConfiguredShortcuts.h"
#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vocalith {
namespace {

constexpr std::array<std::string_view, 48> kSystemShortcuts{
    "Alt+Tab",      "Alt+Shift+Tab", "Alt+F4",        "Alt+F2",         "Alt+F1",      "Alt+Space",   "Alt+Escape",
    "Super+Tab",    "Super+L",       "Super+D",       "Super+E",        "Super+R",     "Super+A",     "Super+S",
    "Super+V",      "Super+Left",    "Super+Right",   "Super+Up",       "Super+Down",  "Super+Space", "Ctrl+Alt+Delete",
    "Ctrl+Alt+L",   "Ctrl+Alt+T",    "Ctrl+Alt+Left", "Ctrl+Alt+Right", "Ctrl+Escape", "Ctrl+A",      "Ctrl+C",
    "Ctrl+V",       "Ctrl+X",        "Ctrl+Z",        "Ctrl+Shift+Z",   "Ctrl+Y",      "Ctrl+S",      "Ctrl+F",
    "Ctrl+N",       "Ctrl+O",        "Ctrl+P",        "Ctrl+Q",         "Ctrl+W",      "Ctrl+Tab",    "Ctrl+Shift+Tab",
    "Shift+Insert", "Print",         "Alt+Print",     "Shift+Print",    "F1",          "F11"};

/// Ctrl+Alt+F1 to F12 switch to a text console; no program gets them.
bool isConsoleSwitch(const KeyboardShortcut::Keys& keys)
{
    constexpr auto kBoth = modifier_flags::control | modifier_flags::option;
    return keys.rawFlags == kBoth && keys.keyCode && isFunctionKey(*keys.keyCode);
}

} // namespace

bool isSystemShortcut(const KeyboardShortcut::Keys& keys)
{
    const auto wanted = comparable(keys);
    return isConsoleSwitch(wanted) || std::ranges::any_of(kSystemShortcuts, [&wanted](std::string_view text) {
               return parseKeys(text) == wanted;
           });
}

} // namespace vocalith
