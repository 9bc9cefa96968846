#include "core/session/shortcuts/DictationKeys.h"

#include "core/session/shortcuts/CarbonHotkeyManager.h"
#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace vocalith {
namespace {

KeyboardShortcut fixedShortcut(int keyCode, std::uint64_t rawFlags)
{
    KeyboardShortcut shortcut;
    shortcut.id = Uuid::parse(fmt::format("00000000-0000-0000-0000-{:012}", keyCode)).value();
    shortcut.keys = {rawFlags, keyCode};
    return shortcut;
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
    if (!m_carbonHotkeyManager.takesKeysOnDemand())
        return;
    const Wanted before = std::exchange(m_taken, wanted);
    if (wanted.escape != before.escape)
        take(wanted.escape, escapeShortcut(), "Cancel the dictation", [this] { escapePressed.emit(); });
    if (wanted.returnKey != before.returnKey)
        take(wanted.returnKey, returnShortcut(), "Finish the dictation", [this] { returnPressed.emit(); });
    const auto [fewer, more] = std::minmax(wanted.numbers, before.numbers);
    for (int number = fewer + 1; number <= more; ++number)
        take(number <= wanted.numbers, commandNumberShortcut(number).keyboardShortcut,
             fmt::format("Choose prompt {}", number), [this, number] { numberPressed.emit(number); });
}

void DictationKeys::take(bool isWanted, const KeyboardShortcut& shortcut, const std::string& description, Action action)
{
    if (!isWanted) {
        m_carbonHotkeyManager.unregister(shortcut.id);
        return;
    }
    if (m_isUsed(*shortcut.keys))
        return;
    // One that another program has is missed for this dictation; the manager has logged it.
    static_cast<void>(
        m_carbonHotkeyManager.registerShortcut(shortcut, description, [action = std::move(action)](bool isDown) {
            if (isDown)
                action();
        }));
}

} // namespace vocalith
