#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "core/session/shortcuts/ConfiguredShortcuts.h"
#include "core/session/shortcuts/ModifierShortcuts.h"

#include <string>
#include <vector>

namespace vocalith {

class CarbonHotkeyManager;

/// Why a shortcut of the settings does not work.
struct ShortcutProblem {
    Uuid shortcutID;
    KeyboardShortcut::Keys keys;
    std::string message; ///< for the user: what is wrong and what to do
    bool operator==(const ShortcutProblem&) const = default;
};

/// Keeps what is registered with the desktop equal to the shortcuts of the settings. Main thread.
class ShortcutRegistrations {
public:
    ShortcutRegistrations(PersistentAppStorage& storage, CarbonHotkeyManager& carbonHotkeyManager, HotKeys& hotKeys,
                          ModifierShortcuts::Handlers handlers, Logger logger);
    ShortcutRegistrations(const ShortcutRegistrations&) = delete;
    ShortcutRegistrations& operator=(const ShortcutRegistrations&) = delete;
    ~ShortcutRegistrations();

    /// Registers what is new or changed, gives back what is gone, and tries again what failed before.
    void update();
    /// While suspended nothing is registered.
    void setSuspended(bool isSuspended);
    /// Whether one of the registered shortcuts has these keys.
    bool has(const KeyboardShortcut::Keys& keys) const;

    Observable<std::vector<ShortcutProblem>> problems;

private:
    std::vector<ConfiguredShortcut> assigned() const;
    void giveBack(const std::vector<ConfiguredShortcut>& wanted);
    void registerMissing(const std::vector<ConfiguredShortcut>& wanted, std::vector<ShortcutProblem>& found);
    void registerHotKey(const ConfiguredShortcut& configured, std::vector<ShortcutProblem>& found);
    void serveModifiers(const std::vector<ConfiguredShortcut>& wanted, std::vector<ShortcutProblem>& found);
    void failedLater(const Uuid& shortcutID, const HotKeyError& error);

    PersistentAppStorage& m_appStorage;
    CarbonHotkeyManager& m_carbonHotkeyManager;
    const ModifierShortcuts::Handlers m_handlers;
    const Logger m_logger;
    ModifierShortcuts m_modifierShortcuts;
    std::vector<KeyboardShortcut> m_lastKnownShortcuts; ///< those that are registered
    bool m_isSuspended = false;
    Subscription m_failed;
};

} // namespace vocalith
