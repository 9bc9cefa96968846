#pragma once

#include "base/Observable.h"
#include "models/KeyboardShortcut.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vocalith {

class CarbonHotkeyManager;

/// A shortcut bound to a number, for choosing a prompt by number while a dictation runs: Alt and the digit, since a
/// digit alone is what people type. Its id ends in the key's virtual key code.
struct CommandNumberShortcut {
    int number = 0; ///< 1 to 9
    KeyboardShortcut keyboardShortcut;
};
CommandNumberShortcut commandNumberShortcut(int number);

/// Ids that no user's shortcut has; the last digits are the keys' virtual key codes.
KeyboardShortcut escapeShortcut();
KeyboardShortcut returnShortcut();

/// The keys that mean something while a dictation runs, taken from the desktop for so long and not longer. A
/// desktop that does not lend keys for a while keeps them. Main thread.
class DictationKeys {
public:
    struct Wanted {
        bool escape = false;
        bool returnKey = false;
        int numbers = 0; ///< from 1 up to this
        /// The modifiers that a shortcut is held with: the keys work together with exactly these too, a digit then
        /// without its own modifier.
        std::uint64_t heldModifiers = 0;
        bool operator==(const Wanted&) const = default;
    };
    /// Whether another shortcut has the keys, which then keeps them.
    using IsUsed = std::function<bool(const KeyboardShortcut::Keys&)>;

    DictationKeys(CarbonHotkeyManager& carbonHotkeyManager, IsUsed isUsed);
    DictationKeys(const DictationKeys&) = delete;
    DictationKeys& operator=(const DictationKeys&) = delete;
    ~DictationKeys();

    void take(const Wanted& wanted);
    /// How many numbers there are keys for; 0 where the desktop lends none.
    int numberKeys() const;

    /// Told on the press.
    Signal<> escapePressed;
    Signal<> returnPressed;
    Signal<int> numberPressed;

private:
    struct Key {
        KeyboardShortcut shortcut;
        std::string description;
        std::function<void()> action;
    };
    std::vector<Key> keysFor(const Wanted& wanted);
    void registerKey(const Key& key);

    CarbonHotkeyManager& m_carbonHotkeyManager;
    const IsUsed m_isUsed;
    Wanted m_wanted;
    std::vector<Key> m_taken; ///< or not, when another had them
};

} // namespace vocalith
