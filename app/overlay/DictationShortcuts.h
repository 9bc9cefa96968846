#pragma once

#include "base/Observable.h"

namespace vocalith {

class KeyboardShortcutManager;
class OverlayManager;
enum class DictationPhase;
struct ShortcutNotifier;

/// Ties the user's shortcuts to the dictations: the shortcuts are told how a dictation stands, and a prompt that is
/// chosen by its number is chosen for the dictation that runs. Lives as long as the program; main thread.
class DictationShortcuts {
public:
    DictationShortcuts(KeyboardShortcutManager& shortcuts, OverlayManager& overlay, const ShortcutNotifier& notifier);

private:
    void phaseChanged(DictationPhase phase);

    KeyboardShortcutManager& m_shortcuts;
    const ShortcutNotifier& m_notifier;
    Subscription m_phase;
    Subscription m_number;
};

} // namespace vocalith
