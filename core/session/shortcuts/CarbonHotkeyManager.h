#pragma once

#include "base/Log.h"
#include "ports/HotKeys.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>

namespace vocalith {

/// Holds the shortcuts with a key that are registered with the desktop, each under its id. Lives as long as the
/// program; main thread.
class CarbonHotkeyManager {
public:
    /// Called with true on key down and with false on key up.
    using Handler = std::function<void(bool isDown)>;

    CarbonHotkeyManager(HotKeys& hotKeys, Logger logService);

    /// The shortcut has keys, one of them no modifier. One that is registered under its id is given back first.
    Result<void, HotKeyError> registerShortcut(const KeyboardShortcut& shortcut, const std::string& description,
                                               Handler handler);
    /// Gives the keys back to the desktop. The handler is not called any more, not even for a key that is held.
    void unregister(const Uuid& shortcutID);
    /// Whether keys can be had for as long as a dictation runs, and not longer.
    bool takesKeysOnDemand() const { return m_hotKeys.takesKeysOnDemand(); }
    bool isRegistered(const Uuid& shortcutID) const { return m_registeredKeys.contains(shortcutID); }
    /// Whether its key is held now.
    bool isDown(const Uuid& shortcutID) const;

    /// A registered shortcut stopped working; it is not registered any more.
    Signal<Uuid, HotKeyError> failed;

private:
    using HotKeyNumber = std::uint32_t;

    /// Unregisters the hot key when it is destroyed.
    struct CarbonAutoUnregisteringToken {
        KeyboardShortcut shortcut;
        Subscription hotKeyReference;
    };
    struct HotKeyMetadata {
        HotKeyNumber carbonHotkeyID = 0;
        CarbonAutoUnregisteringToken token;
        Handler handler;
        bool isDown = false;
    };

    void carbonCallback(HotKeyNumber hotKeyID, bool isDown);
    void registrationFailed(const Uuid& shortcutID, const HotKeyError& error);
    void logFailure(const KeyboardShortcut::Keys& keys, const HotKeyError& error) const;

    HotKeys& m_hotKeys;
    const Logger m_logService;
    std::map<Uuid, HotKeyMetadata> m_registeredKeys;
    HotKeyNumber m_currentID = 0;
    Subscription m_failed;
};

} // namespace vocalith
