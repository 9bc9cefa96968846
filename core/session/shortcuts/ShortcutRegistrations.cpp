#include "core/session/shortcuts/ShortcutRegistrations.h"

#include "core/session/shortcuts/CarbonHotkeyManager.h"

#include <algorithm>
#include <utility>

namespace vocalith {
namespace {

constexpr const char* kUsedTwice = "This key combination is already used by the app. Please use a different shortcut.";

bool isHotKey(const KeyboardShortcut& shortcut)
{
    return shortcut.keys && shortcut.keys->keyCode;
}

ShortcutProblem problemOf(const KeyboardShortcut& shortcut, std::string message)
{
    return {shortcut.id, shortcut.keys.value_or(KeyboardShortcut::Keys{}), std::move(message)};
}

} // namespace

ShortcutRegistrations::ShortcutRegistrations(PersistentAppStorage& storage, CarbonHotkeyManager& carbonHotkeyManager,
                                             HotKeys& hotKeys, ModifierShortcuts::Handlers handlers, Logger logger)
    : m_appStorage(storage), m_carbonHotkeyManager(carbonHotkeyManager), m_handlers(handlers),
      m_logger(std::move(logger)), m_modifierShortcuts(hotKeys, std::move(handlers), m_logger)
{
    m_failed = m_carbonHotkeyManager.failed.subscribe(
        [this](const Uuid& shortcutID, const HotKeyError& error) { failedLater(shortcutID, error); });
}

ShortcutRegistrations::~ShortcutRegistrations()
{
    for (const auto& shortcut : m_lastKnownShortcuts)
        m_carbonHotkeyManager.unregister(shortcut.id);
}

void ShortcutRegistrations::update()
{
    const auto wanted = assigned();
    giveBack(wanted);
    std::vector<ShortcutProblem> found;
    registerMissing(wanted, found);
    serveModifiers(wanted, found);
    if (!m_isSuspended) // what does not work then will not work afterwards either
        problems.set(std::move(found));
}

void ShortcutRegistrations::setSuspended(bool isSuspended)
{
    if (std::exchange(m_isSuspended, isSuspended) != isSuspended)
        update();
}

bool ShortcutRegistrations::has(const KeyboardShortcut::Keys& keys) const
{
    return std::ranges::any_of(m_lastKnownShortcuts, [&](const auto& shortcut) {
        return comparable(shortcut.keys.value()) == comparable(keys);
    });
}

std::vector<ConfiguredShortcut> ShortcutRegistrations::assigned() const
{
    if (m_isSuspended)
        return {};
    auto wanted = configuredShortcuts(m_appStorage);
    std::erase_if(wanted, [this](const auto& configured) {
        if (areAssigned(configured.shortcut.keys))
            return false;
        m_logger.debug("Shortcut keys are not specified: " + configured.shortcut.id.toString());
        return true;
    });
    return wanted;
}

void ShortcutRegistrations::giveBack(const std::vector<ConfiguredShortcut>& wanted)
{
    for (const auto& known : std::vector(m_lastKnownShortcuts)) {
        const auto same = std::ranges::find(wanted, known.id, [](const auto& each) { return each.shortcut.id; });
        if (same != wanted.end() && same->shortcut == known)
            continue;
        if (same != wanted.end())
            m_logger.info("Shortcut " + known.id.toString() + " has changed - unregistering old handler");
        const bool isHeld = m_carbonHotkeyManager.isDown(known.id) || m_modifierShortcuts.isDown(known.id);
        m_carbonHotkeyManager.unregister(known.id);
        std::erase(m_lastKnownShortcuts, known);
        // Nobody will tell of its release any more, and a dictation may wait for that.
        if (isHeld)
            m_handlers.changed(false, known);
    }
}

void ShortcutRegistrations::registerMissing(const std::vector<ConfiguredShortcut>& wanted,
                                            std::vector<ShortcutProblem>& found)
{
    for (const auto& configured : wanted) {
        const auto& shortcut = configured.shortcut;
        if (std::ranges::find(m_lastKnownShortcuts, shortcut) != m_lastKnownShortcuts.end())
            m_logger.debug("Shortcut " + shortcut.id.toString() + " already registered - skipping registration");
        else if (has(*shortcut.keys))
            found.push_back(problemOf(shortcut, kUsedTwice));
        else if (isHotKey(shortcut))
            registerHotKey(configured, found);
        else
            m_lastKnownShortcuts.push_back(shortcut);
    }
}

void ShortcutRegistrations::registerHotKey(const ConfiguredShortcut& configured, std::vector<ShortcutProblem>& found)
{
    const auto& shortcut = configured.shortcut;
    const auto registered = m_carbonHotkeyManager.registerShortcut(
        shortcut, configured.description, [this, shortcut](bool isDown) { m_handlers.changed(isDown, shortcut); });
    if (registered)
        m_lastKnownShortcuts.push_back(shortcut);
    else
        found.push_back(problemOf(shortcut, userMessage(registered.error(), *shortcut.keys)));
}

void ShortcutRegistrations::serveModifiers(const std::vector<ConfiguredShortcut>& wanted,
                                           std::vector<ShortcutProblem>& found)
{
    std::vector<KeyboardShortcut> served;
    for (const auto& configured : wanted) {
        const bool isKnown = std::ranges::find(m_lastKnownShortcuts, configured.shortcut) != m_lastKnownShortcuts.end();
        if (isKnown && !isHotKey(configured.shortcut))
            served.push_back(configured.shortcut);
    }
    const auto monitored = m_modifierShortcuts.serve(served);
    if (monitored)
        return;
    m_logger.error("The modifier keys cannot be monitored: " + monitored.error().detail);
    for (const auto& shortcut : served) {
        std::erase(m_lastKnownShortcuts, shortcut);
        found.push_back(problemOf(shortcut, userMessage(monitored.error(), *shortcut.keys)));
    }
}

void ShortcutRegistrations::failedLater(const Uuid& shortcutID, const HotKeyError& error)
{
    const auto known = std::ranges::find(m_lastKnownShortcuts, shortcutID, &KeyboardShortcut::id);
    if (known == m_lastKnownShortcuts.end())
        return;
    const KeyboardShortcut shortcut = *known;
    const bool isHeld = m_carbonHotkeyManager.isDown(shortcutID);
    m_lastKnownShortcuts.erase(known);
    auto found = problems.get();
    found.push_back(problemOf(shortcut, userMessage(error, *shortcut.keys)));
    problems.set(std::move(found));
    if (isHeld)
        m_handlers.changed(false, shortcut);
}

} // namespace vocalith
