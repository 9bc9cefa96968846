#include "core/session/shortcuts/DictationKeys.h"

#include "core/session/shortcuts/CarbonHotkeyManager.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace vocalith {
namespace {

KeyboardShortcut fixedShortcut(int keyCode, std::uint64_t rawFlags, int variant = 0)
{
    KeyboardShortcut shortcut;
    shortcut.id = Uuid::parse(fmt::format("00000000-0000-0000-{:04}-{:012}", variant, keyCode)).value();
    shortcut.keys = {rawFlags, keyCode};
    return shortcut;
}

/// The same key for as long as a shortcut is held.
KeyboardShortcut withHeld(std::uint64_t modifiers, const KeyboardShortcut& shortcut)
{
    return fixedShortcut(shortcut.keys->keyCode.value(), modifiers, 1);
}

bool contains(const auto& keys, const KeyboardShortcut& shortcut)
{
    return std::ranges::any_of(keys, [&](const auto& key) { return key.shortcut == shortcut; });
}

} // namespace

CommandNumberShortcut commandNumberShortcut(int number)
{
    return {number, fixedShortcut(digitKeyCode(number), modifier_flags::option)};
}

KeyboardShortcut escapeShortcut()
{
    return fixedShortcut(virtual_key_code::escape, 0);
}

KeyboardShortcut returnShortcut()
{
    return fixedShortcut(virtual_key_code::returnKey, 0);
}

DictationKeys::DictationKeys(CarbonHotkeyManager& carbonHotkeyManager, IsUsed isUsed)
    : m_carbonHotkeyManager(carbonHotkeyManager), m_isUsed(std::move(isUsed))
{}

int DictationKeys::numberKeys() const
{
    constexpr int kDigits = 9;
    return m_carbonHotkeyManager.takesKeysOnDemand() ? kDigits : 0;
}

DictationKeys::~DictationKeys()
{
    take(Wanted{});
}

void DictationKeys::take(const Wanted& wanted)
{
    if (!m_carbonHotkeyManager.takesKeysOnDemand() || wanted == m_wanted)
        return;
    m_wanted = wanted;
    const auto before = std::exchange(m_taken, keysFor(wanted));
    for (const auto& key : before) {
        if (!contains(m_taken, key.shortcut))
            m_carbonHotkeyManager.unregister(key.shortcut.id);
    }
    for (const auto& key : m_taken) {
        if (!contains(before, key.shortcut))
            registerKey(key);
    }
}

std::vector<DictationKeys::Key> DictationKeys::keysFor(const Wanted& wanted)
{
    std::vector<Key> keys;
    const auto add = [&](const KeyboardShortcut& shortcut, const std::string& description,
                         const std::function<void()>& action) {
        keys.push_back({shortcut, description, action});
        if (wanted.heldModifiers == 0 || wanted.heldModifiers == shortcut.keys->rawFlags)
            return;
        keys.push_back({withHeld(wanted.heldModifiers, shortcut), description, action});
    };
    if (wanted.escape)
        add(escapeShortcut(), "Cancel the dictation", [this] { escapePressed.emit(); });
    if (wanted.returnKey)
        add(returnShortcut(), "Finish the dictation", [this] { returnPressed.emit(); });
    for (int number = 1; number <= wanted.numbers; ++number)
        add(commandNumberShortcut(number).keyboardShortcut, fmt::format("Choose prompt {}", number),
            [this, number] { numberPressed.emit(number); });
    return keys;
}

void DictationKeys::registerKey(const Key& key)
{
    if (m_isUsed(*key.shortcut.keys))
        return;
    // One that another program has is missed for this dictation; the manager has logged it.
    static_cast<void>(
        m_carbonHotkeyManager.registerShortcut(key.shortcut, key.description, [action = key.action](bool isDown) {
            if (isDown)
                action();
        }));
}

} // namespace vocalith
