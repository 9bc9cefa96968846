#include "models/KeyboardShortcutText.h"

#include "base/Text.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <linux/input-event-codes.h>
#include <span>

namespace vocalith {
namespace {

struct ModifierName {
    std::string_view name;
    std::uint64_t flag;
};

// The first name of a flag is the one that is written.
constexpr std::array kModifierNames{
    ModifierName{"Ctrl", modifier_flags::control},      ModifierName{"Alt", modifier_flags::option},
    ModifierName{"Shift", modifier_flags::shift},       ModifierName{"Super", modifier_flags::command},
    ModifierName{"Fn", modifier_flags::function},       ModifierName{"Control", modifier_flags::control},
    ModifierName{"Option", modifier_flags::option},     ModifierName{"Command", modifier_flags::command},
    ModifierName{"Cmd", modifier_flags::command},       ModifierName{"Meta", modifier_flags::command},
    ModifierName{"Win", modifier_flags::command},       ModifierName{"Windows", modifier_flags::command},
    ModifierName{"Function", modifier_flags::function},
};
constexpr std::size_t kWrittenModifiers = 5;

struct KeyName {
    std::string_view name;
    int inputEventCode;
};

// The first name of a key is the one that is written.
constexpr std::array kKeyNames{
    KeyName{"Space", KEY_SPACE},
    KeyName{"Return", KEY_ENTER},
    KeyName{"Enter", KEY_ENTER},
    KeyName{"Escape", KEY_ESC},
    KeyName{"Esc", KEY_ESC},
    KeyName{"Tab", KEY_TAB},
    KeyName{"Backspace", KEY_BACKSPACE},
    KeyName{"Delete", KEY_DELETE},
    KeyName{"Insert", KEY_INSERT},
    KeyName{"Home", KEY_HOME},
    KeyName{"End", KEY_END},
    KeyName{"PageUp", KEY_PAGEUP},
    KeyName{"PageDown", KEY_PAGEDOWN},
    KeyName{"Left", KEY_LEFT},
    KeyName{"Right", KEY_RIGHT},
    KeyName{"Up", KEY_UP},
    KeyName{"Down", KEY_DOWN},
    KeyName{"Menu", KEY_COMPOSE},
    KeyName{"Pause", KEY_PAUSE},
    KeyName{"Print", KEY_SYSRQ},
    KeyName{"ScrollLock", KEY_SCROLLLOCK},
    KeyName{"CapsLock", KEY_CAPSLOCK},
    KeyName{"NumLock", KEY_NUMLOCK},
    KeyName{"LessGreater", KEY_102ND},
    KeyName{"KeypadEnter", KEY_KPENTER},
    KeyName{"KeypadPlus", KEY_KPPLUS},
    KeyName{"KeypadMinus", KEY_KPMINUS},
    KeyName{"Keypad*", KEY_KPASTERISK},
    KeyName{"Keypad/", KEY_KPSLASH},
    KeyName{"Keypad.", KEY_KPDOT},
    KeyName{"Keypad=", KEY_KPEQUAL},
    KeyName{"Keypad0", KEY_KP0},
    KeyName{"Keypad1", KEY_KP1},
    KeyName{"Keypad2", KEY_KP2},
    KeyName{"Keypad3", KEY_KP3},
    KeyName{"Keypad4", KEY_KP4},
    KeyName{"Keypad5", KEY_KP5},
    KeyName{"Keypad6", KEY_KP6},
    KeyName{"Keypad7", KEY_KP7},
    KeyName{"Keypad8", KEY_KP8},
    KeyName{"Keypad9", KEY_KP9},
    KeyName{"VolumeUp", KEY_VOLUMEUP},
    KeyName{"VolumeDown", KEY_VOLUMEDOWN},
    KeyName{"Mute", KEY_MUTE},
    KeyName{"Plus", KEY_EQUAL},
};

struct PrintedKey {
    char name;
    int inputEventCode;
};

constexpr std::array kPrintedKeys{
    PrintedKey{'A', KEY_A},          PrintedKey{'B', KEY_B},          PrintedKey{'C', KEY_C},
    PrintedKey{'D', KEY_D},          PrintedKey{'E', KEY_E},          PrintedKey{'F', KEY_F},
    PrintedKey{'G', KEY_G},          PrintedKey{'H', KEY_H},          PrintedKey{'I', KEY_I},
    PrintedKey{'J', KEY_J},          PrintedKey{'K', KEY_K},          PrintedKey{'L', KEY_L},
    PrintedKey{'M', KEY_M},          PrintedKey{'N', KEY_N},          PrintedKey{'O', KEY_O},
    PrintedKey{'P', KEY_P},          PrintedKey{'Q', KEY_Q},          PrintedKey{'R', KEY_R},
    PrintedKey{'S', KEY_S},          PrintedKey{'T', KEY_T},          PrintedKey{'U', KEY_U},
    PrintedKey{'V', KEY_V},          PrintedKey{'W', KEY_W},          PrintedKey{'X', KEY_X},
    PrintedKey{'Y', KEY_Y},          PrintedKey{'Z', KEY_Z},          PrintedKey{'1', KEY_1},
    PrintedKey{'2', KEY_2},          PrintedKey{'3', KEY_3},          PrintedKey{'4', KEY_4},
    PrintedKey{'5', KEY_5},          PrintedKey{'6', KEY_6},          PrintedKey{'7', KEY_7},
    PrintedKey{'8', KEY_8},          PrintedKey{'9', KEY_9},          PrintedKey{'0', KEY_0},
    PrintedKey{'-', KEY_MINUS},      PrintedKey{'=', KEY_EQUAL},      PrintedKey{'[', KEY_LEFTBRACE},
    PrintedKey{']', KEY_RIGHTBRACE}, PrintedKey{';', KEY_SEMICOLON},  PrintedKey{'\'', KEY_APOSTROPHE},
    PrintedKey{'`', KEY_GRAVE},      PrintedKey{'\\', KEY_BACKSLASH}, PrintedKey{',', KEY_COMMA},
    PrintedKey{'.', KEY_DOT},        PrintedKey{'/', KEY_SLASH},
};

constexpr std::array kFunctionKeys{KEY_F1,  KEY_F2,  KEY_F3,  KEY_F4,  KEY_F5,  KEY_F6,  KEY_F7,
                                   KEY_F8,  KEY_F9,  KEY_F10, KEY_F11, KEY_F12, KEY_F13, KEY_F14,
                                   KEY_F15, KEY_F16, KEY_F17, KEY_F18, KEY_F19, KEY_F20};
constexpr std::string_view kNumbered = "Key";

std::optional<int> numberAfter(std::string_view prefix, std::string_view text)
{
    if (text.size() <= prefix.size() || !sameIgnoringCase(text.substr(0, prefix.size()), prefix))
        return std::nullopt;
    int number = 0;
    const char* const end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data() + prefix.size(), end, number);
    if (error != std::errc() || read != end)
        return std::nullopt;
    return number;
}

/// The input event code of a key by its name.
std::optional<int> keyNamed(std::string_view name)
{
    if (name.size() == 1) {
        const auto* const printed = std::ranges::find_if(
            kPrintedKeys, [&](const auto& key) { return sameIgnoringCase(name, std::string_view(&key.name, 1)); });
        return printed == kPrintedKeys.end() ? std::nullopt : std::optional(printed->inputEventCode);
    }
    const auto* const found =
        std::ranges::find_if(kKeyNames, [&](const auto& key) { return sameIgnoringCase(name, key.name); });
    if (found != kKeyNames.end())
        return found->inputEventCode;
    if (const auto number = numberAfter("F", name); number && *number >= 1 && *number <= int(kFunctionKeys.size()))
        return kFunctionKeys.at(std::size_t(*number - 1));
    if (const auto number = numberAfter(kNumbered, name); number && *number > 0 && *number < 0x1000)
        return number;
    return std::nullopt;
}

} // namespace

std::string keyName(int virtualKeyCode)
{
    const auto code = inputEventCode(virtualKeyCode);
    if (!code)
        return std::string(kNumbered) + "?" + std::to_string(virtualKeyCode);
    if (const auto* const named = std::ranges::find(kKeyNames, *code, &KeyName::inputEventCode);
        named != kKeyNames.end() && named->name != "Plus")
        return std::string(named->name);
    if (const auto* const printed = std::ranges::find(kPrintedKeys, *code, &PrintedKey::inputEventCode);
        printed != kPrintedKeys.end())
        return {printed->name};
    if (const auto* const function = std::ranges::find(kFunctionKeys, *code); function != kFunctionKeys.end())
        return "F" + std::to_string(function - kFunctionKeys.begin() + 1);
    return std::string(kNumbered) + std::to_string(*code);
}

std::string toString(const KeyboardShortcut::Keys& keys)
{
    std::string text;
    const auto add = [&text](std::string_view name) {
        if (!text.empty())
            text += '+';
        text += name;
    };
    for (const auto& modifier : std::span(kModifierNames).first(kWrittenModifiers)) {
        if (keys.rawFlags & modifier.flag)
            add(modifier.name);
    }
    if (keys.keyCode)
        add(keyName(*keys.keyCode));
    return text;
}

std::optional<KeyboardShortcut::Keys> parseKeys(std::string_view text)
{
    KeyboardShortcut::Keys keys;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('+'), text.size());
        const std::string_view name = text.substr(0, length);
        text.remove_prefix(std::min(length + 1, text.size()));
        const auto* const modifier = std::ranges::find_if(
            kModifierNames, [&](const auto& candidate) { return sameIgnoringCase(name, candidate.name); });
        if (modifier != kModifierNames.end()) {
            keys.rawFlags |= modifier->flag;
            continue;
        }
        const auto key = keyNamed(name);
        if (!key || keys.keyCode)
            return std::nullopt;
        keys.keyCode = virtualKeyCode(*key);
    }
    if (keys == KeyboardShortcut::Keys{})
        return std::nullopt;
    return keys;
}

} // namespace vocalith
