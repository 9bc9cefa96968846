#include "platform/portal/remote/PortalKeySymbols_p.h"

#include "base/Text.h"
#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <xkbcommon/xkbcommon.h>

namespace vocalith {
namespace {

struct Named {
    std::string_view key; ///< as keyName has it
    std::string_view keysym;
};

// Keys whose keysym is not called as they are.
constexpr std::array kNamed{
    Named{"Space", "space"},
    Named{"Backspace", "BackSpace"},
    Named{"PageUp", "Page_Up"},
    Named{"PageDown", "Page_Down"},
    Named{"ScrollLock", "Scroll_Lock"},
    Named{"CapsLock", "Caps_Lock"},
    Named{"NumLock", "Num_Lock"},
    Named{"LessGreater", "less"},
    Named{"KeypadEnter", "KP_Enter"},
    Named{"KeypadPlus", "KP_Add"},
    Named{"KeypadMinus", "KP_Subtract"},
    Named{"Keypad*", "KP_Multiply"},
    Named{"Keypad/", "KP_Divide"},
    Named{"Keypad.", "KP_Decimal"},
    Named{"Keypad=", "KP_Equal"},
    Named{"VolumeUp", "XF86AudioRaiseVolume"},
    Named{"VolumeDown", "XF86AudioLowerVolume"},
    Named{"Mute", "XF86AudioMute"},
};

struct TriggerModifier {
    std::uint64_t flag;
    std::string_view name;
};

constexpr std::array kTriggerModifiers{
    TriggerModifier{modifier_flags::control, "CTRL+"},
    TriggerModifier{modifier_flags::option, "ALT+"},
    TriggerModifier{modifier_flags::shift, "SHIFT+"},
    TriggerModifier{modifier_flags::command, "LOGO+"},
};

std::uint32_t symbolNamed(const std::string& name)
{
    return xkb_keysym_from_name(name.c_str(), XKB_KEYSYM_NO_FLAGS);
}

} // namespace

std::string keysymName(int virtualKeyCode)
{
    const auto key = keyName(virtualKeyCode);
    if (key.size() == 1) {
        std::array<char, 64> name{};
        const auto symbol = keysymOf(static_cast<unsigned char>(asciiLower(key[0])));
        return xkb_keysym_get_name(symbol, name.data(), name.size()) > 0 ? name.data() : std::string();
    }
    const auto* const named = std::ranges::find(kNamed, key, &Named::key);
    if (named != kNamed.end())
        return std::string(named->keysym);
    const auto digit = "KP_" + key.substr(std::min(key.size(), std::string_view("Keypad").size()));
    const auto name = key.starts_with("Keypad") ? digit : key;
    return symbolNamed(name) == XKB_KEY_NoSymbol ? std::string() : name;
}

std::uint32_t keysym(int virtualKeyCode)
{
    const auto name = keysymName(virtualKeyCode);
    return name.empty() ? 0 : symbolNamed(name);
}

std::uint32_t keysymOf(char32_t character)
{
    if (character == U'\n')
        return XKB_KEY_Return;
    if (character == U'\t')
        return XKB_KEY_Tab;
    const bool isControl = character < U' ' || (character >= U'\x7f' && character < U'\xa0');
    return isControl ? 0 : xkb_utf32_to_keysym(character);
}

std::string triggerText(const KeyboardShortcut::Keys& keys)
{
    if (!keys.keyCode)
        return {};
    const auto name = keysymName(*keys.keyCode);
    if (name.empty())
        return {};
    std::string text;
    for (const auto& modifier : kTriggerModifiers) {
        if (keys.rawFlags & modifier.flag)
            text += modifier.name;
    }
    return text + name;
}

} // namespace vocalith
