#include "app/overlay/DictationShortcuts.h"

#include "app/overlay/OverlayManager.h"
#include "core/session/shortcuts/KeyboardShortcutManager.h"

namespace vocalith {

DictationShortcuts::DictationShortcuts(KeyboardShortcutManager& shortcuts, OverlayManager& overlay,
                                       const ShortcutNotifier& notifier)
    : m_shortcuts(shortcuts), m_notifier(notifier)
{
    m_phase = overlay.phase.subscribe([this](DictationPhase phase) { phaseChanged(phase); });
    m_number = m_shortcuts.promptNumberChosen.subscribe([&overlay](int number) { overlay.choosePrompt(number); });
}

void DictationShortcuts::phaseChanged(DictationPhase phase)
{
    switch (phase) {
    case DictationPhase::recording: {
        const auto* running = std::get_if<keyboard_activation::Activated>(&m_notifier.state.get());
        m_shortcuts.dictationStarted(running ? running->shortcutID : Uuid());
        break;
    }
    case DictationPhase::processing: m_shortcuts.speakingEnded(); break;
    case DictationPhase::idle: m_shortcuts.dictationEnded(); break;
    }
}

} // namespace vocalith
