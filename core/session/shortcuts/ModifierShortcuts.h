#pragma once

#include "base/Log.h"
#include "ports/HotKeys.h"

#include <functional>
#include <optional>
#include <vector>

namespace vocalith {

/// Serves the shortcuts that are made of modifier keys only. The keys of one are down when exactly its modifiers are
/// held, left or right; locks do not count. They come up when one of them does or another one joins. Main thread.
class ModifierShortcuts {
public:
    struct Handlers {
        std::function<void(bool isDown, const KeyboardShortcut&)> changed;
        /// The modifiers that are held for a shortcut turn out to belong to a larger combination.
        std::function<void(const KeyboardShortcut&)> combined;
    };

    ModifierShortcuts(HotKeys& hotKeys, Handlers handlers, Logger logger);

    /// Serves these, all with keys, and no others. Modifier keys are watched only while there are any.
    Result<void, HotKeyError> serve(std::vector<KeyboardShortcut> shortcuts);
    bool isDown(const Uuid& shortcutID) const { return m_down && m_down->id == shortcutID; }

private:
    void modifiersChanged(const ModifierChange& change);
    std::optional<KeyboardShortcut> shortcutOf(std::uint64_t flags) const;
    void tell(bool isDown, const KeyboardShortcut& shortcut) const;

    HotKeys& m_hotKeys;
    const Handlers m_handlers;
    const Logger m_logger;
    std::vector<KeyboardShortcut> m_shortcuts;
    std::optional<Subscription> m_monitor;
    std::uint64_t m_held = 0;
    bool m_isCombination = false; ///< what is held has been used with another key
    std::optional<KeyboardShortcut> m_down;
};

} // namespace vocalith
