#include "core/session/shortcuts/ModifierShortcuts.h"

#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace vocalith {

ModifierShortcuts::ModifierShortcuts(HotKeys& hotKeys, Handlers handlers, Logger logger)
    : m_hotKeys(hotKeys), m_handlers(std::move(handlers)), m_logger(std::move(logger))
{}

Result<void, HotKeyError> ModifierShortcuts::serve(std::vector<KeyboardShortcut> shortcuts)
{
    m_shortcuts = std::move(shortcuts);
    if (m_down && std::ranges::find(m_shortcuts, *m_down) == m_shortcuts.end())
        m_down.reset();
    if (m_shortcuts.empty()) {
        m_monitor.reset();
        m_held = 0;
        m_isCombination = false;
        return {};
    }
    if (m_monitor)
        return {};
    m_logger.info("🎯 Setting up NSEvent monitors for purely modifier shortcuts");
    auto monitor = m_hotKeys.monitorModifiers([this](const ModifierChange& change) { modifiersChanged(change); });
    if (!monitor)
        return failure(monitor.error());
    m_monitor = std::move(*monitor);
    return {};
}

void ModifierShortcuts::modifiersChanged(const ModifierChange& change)
{
    const std::uint64_t flags = change.rawFlags & modifier_flags::ofShortcuts;
    const std::uint64_t before = std::exchange(m_held, flags);
    if (change.otherKeyDown) {
        m_isCombination = flags != 0;
        if (const auto combined = m_down)
            m_handlers.combined(*combined);
    }
    if (flags == before)
        return;
    if (flags == 0)
        m_isCombination = false;
    // A key that comes up presses nothing: who lets go of three keys passes two on the way.
    const bool hasGrown = (flags & ~before) != 0;
    const auto pressed = hasGrown && !m_isCombination ? shortcutOf(flags) : std::nullopt;
    const auto released = std::exchange(m_down, pressed);
    // The larger shortcut takes over from the smaller one that was passed on the way to it.
    if (pressed)
        tell(true, *pressed);
    if (released && hasGrown)
        m_handlers.combined(*released);
    if (released)
        tell(false, *released);
}

std::optional<KeyboardShortcut> ModifierShortcuts::shortcutOf(std::uint64_t flags) const
{
    const auto found = std::ranges::find_if(m_shortcuts, [flags](const auto& shortcut) {
        return (shortcut.keys.value().rawFlags & modifier_flags::ofShortcuts) == flags;
    });
    return found == m_shortcuts.end() ? std::nullopt : std::optional(*found);
}

void ModifierShortcuts::tell(bool isDown, const KeyboardShortcut& shortcut) const
{
    m_logger.debug(fmt::format("Modifier update for {} ({}), is match: {}", shortcut.id.toString(),
                               toString(shortcut.keys.value()), isDown));
    m_handlers.changed(isDown, shortcut);
}

} // namespace vocalith
