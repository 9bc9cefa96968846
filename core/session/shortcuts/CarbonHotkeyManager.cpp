#include "core/session/shortcuts/CarbonHotkeyManager.h"

#include "core/session/shortcuts/ConfiguredShortcuts.h"
#include "models/KeyboardShortcutText.h"

#include <algorithm>
#include <fmt/format.h>

namespace vocalith {

CarbonHotkeyManager::CarbonHotkeyManager(HotKeys& hotKeys, Logger logService)
    : m_hotKeys(hotKeys), m_logService(std::move(logService))
{
    m_failed = m_hotKeys.failed.subscribe(
        [this](const Uuid& shortcutID, const HotKeyError& error) { registrationFailed(shortcutID, error); });
}

Result<void, HotKeyError> CarbonHotkeyManager::registerShortcut(const KeyboardShortcut& shortcut,
                                                                const std::string& description, Handler handler)
{
    unregister(shortcut.id);
    const HotKeyNumber number = ++m_currentID;
    const auto keys = comparable(shortcut.keys.value());
    auto registered = m_hotKeys.registerHotKey({shortcut.id, keys, description},
                                               [this, number](bool isDown) { carbonCallback(number, isDown); });
    if (!registered) {
        logFailure(keys, registered.error());
        return failure(registered.error());
    }
    m_registeredKeys[shortcut.id] = {number, {shortcut, std::move(*registered)}, std::move(handler)};
    return {};
}

void CarbonHotkeyManager::unregister(const Uuid& shortcutID)
{
    m_registeredKeys.erase(shortcutID);
}

bool CarbonHotkeyManager::isDown(const Uuid& shortcutID) const
{
    const auto known = m_registeredKeys.find(shortcutID);
    return known != m_registeredKeys.end() && known->second.isDown;
}

void CarbonHotkeyManager::carbonCallback(HotKeyNumber hotKeyID, bool isDown)
{
    const auto known = std::ranges::find_if(
        m_registeredKeys, [hotKeyID](const auto& entry) { return entry.second.carbonHotkeyID == hotKeyID; });
    if (known == m_registeredKeys.end()) {
        m_logService.error(fmt::format("Shortcut not found in registry (hotKeyID={})", hotKeyID));
        return;
    }
    known->second.isDown = isDown;
    const auto handler = known->second.handler; // it may unregister itself
    handler(isDown);
}

void CarbonHotkeyManager::registrationFailed(const Uuid& shortcutID, const HotKeyError& error)
{
    const auto known = m_registeredKeys.find(shortcutID);
    if (known == m_registeredKeys.end())
        return;
    const auto keys = comparable(known->second.token.shortcut.keys.value());
    m_logService.error("Carbon keyboard shortcut callback error: " + userMessage(error, keys));
    failed.emit(shortcutID, error);
    unregister(shortcutID);
}

void CarbonHotkeyManager::logFailure(const KeyboardShortcut::Keys& keys, const HotKeyError& error) const
{
    if (error.kind == HotKeyError::Kind::unsupported)
        m_logService.error(fmt::format("Failed to install Carbon event handler (status={})", error.status));
    else
        m_logService.error(fmt::format("Failed to register keyboard shortcut (keyCode={}, modifiers={}, status={})",
                                       keys.keyCode.value_or(-1), keys.rawFlags, error.status));
    m_logService.info("The shortcut is " + toString(keys) + ". " + error.detail);
}

} // namespace vocalith
