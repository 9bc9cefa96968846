#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "core/session/KeyboardActivationState.h"
#include "core/session/shortcuts/DictationKeys.h"
#include "core/session/shortcuts/ShortcutRegistrations.h"

#include <map>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace vocalith {

/// Turns presses and releases of the user's shortcuts into the start and stop signals of the notifier, and takes
/// Escape, Return and the prompt numbers from the desktop while a dictation runs. Lives as long as the program; main
/// thread.
///
/// Whoever observes the notifier and starts a dictation calls `dictationStarted` within that call; one that was asked
/// for and has not started then was refused. `speakingEnded` and `dictationEnded` follow.
///
/// Modifier keys are pressed one after the other and before other keys. What the press of a shortcut of modifiers only
/// has started or switched is undone when, within the mode detection interval and while they are held, another key or
/// shortcut goes down.
class KeyboardShortcutManager {
public:
    // Instants, not dates: a clock that is set back must not lock the shortcuts.
    struct Idle {
        Instant canStartAfter; ///< a dictation may start at this instant or later
    };
    struct WaitingForRelease { ///< the key is down and the mode not decided
        Instant startTime;
    };
    struct ToggleActive {};     ///< ends at the next press
    struct PushToTalkActive {}; ///< ends at the release
    using RecordingMode = std::variant<Idle, WaitingForRelease, ToggleActive, PushToTalkActive>;

    static constexpr auto doubleTapInterval = std::chrono::milliseconds(400);
    static constexpr auto cooldownInterval = std::chrono::milliseconds(300);
    /// A key that is held so long is held to talk.
    static constexpr auto modeDetectionInterval = std::chrono::seconds(1);

    KeyboardShortcutManager(Clock& clock, PersistentAppStorage& appStorage, CarbonHotkeyManager& carbonHotkeyManager,
                            HotKeys& hotKeys, ShortcutNotifier& notifier, Logger logger);

    /// Registers the shortcuts of the settings, and from now on follows the settings.
    void start();
    /// While suspended the user's shortcuts belong to the desktop: when one is being recorded, or the screen is locked.
    void setSuspended(bool isSuspended);
    /// Tries again to register what could not be registered.
    void retry() { m_registrations.update(); }
    /// The shortcuts that do not work.
    Observable<std::vector<ShortcutProblem>>& problems() { return m_registrations.problems; }

    /// How many prompts can be chosen by the key of their number while a dictation runs.
    int numberKeys() const { return m_dictationKeys.numberKeys(); }

    /// Every press and release of every shortcut, wherever it comes from.
    void handleShortcutChange(bool isDown, const KeyboardShortcut& shortcut);

    /// Once for each dictation that has started, by a shortcut or otherwise; any press ends one that has started
    /// otherwise.
    void dictationStarted(const Uuid& shortcutID);
    /// Once nothing more is spoken, whoever saw to that: all keys but Escape go back to the desktop.
    void speakingEnded();
    /// Once for each that has ended, however it did.
    void dictationEnded();

    const RecordingMode& recordingMode() const { return m_recordingMode; }

    /// 1 to 9, while a dictation is spoken.
    Signal<int> promptNumberChosen;

private:
    enum class Dictation {
        none,
        spoken, ///< the user speaks
        ending, ///< it is being processed or cancelled
        undone  ///< it is being cancelled: the modifiers that started it belong to another shortcut or to none
    };
    struct DoubleTapState {
        Instant lastTapTime;
        Uuid shortcutID;
    };
    /// What a press has changed.
    struct Before {
        RecordingMode mode;
        std::optional<Uuid> completionShortcut;
    };
    /// A shortcut of modifiers only that is held. It may be the way to a larger combination.
    struct HeldModifiers {
        Uuid shortcutID;
        std::uint64_t rawFlags;
        Instant pressTime;
        std::optional<Before> before; ///< as long as the press can be undone
        bool isFresh(const Clock& clock) const { return clock.instant() - pressTime < modeDetectionInterval; }
    };
    /// A start that waits until the dictation that was undone has ended.
    struct WaitingActivation {
        Uuid shortcutID;
        Idle before;
    };

    bool isIdle() const { return std::holds_alternative<Idle>(m_recordingMode); }
    bool isCompletedBy(const Uuid& shortcutID) const { return m_completionShortcut == shortcutID; }

    void pressed(const KeyboardShortcut& shortcut);
    void released(const KeyboardShortcut& shortcut);
    void automaticPressed(const Uuid& shortcutID);
    void automaticReleased(const Uuid& shortcutID);
    void releasedUndecided(const Uuid& shortcutID, const WaitingForRelease& waiting);
    void togglePressed(const Uuid& shortcutID);
    void pushToTalkPressed(const Uuid& shortcutID);
    void pushToTalkReleased(const Uuid& shortcutID);
    void doubleTapPressed(const Uuid& shortcutID);
    void modifiersCombined(const Uuid& shortcutID);
    void switchBack(const Before& before);
    void detectModeAt(Instant instant);
    void modeDetectionTimerFired();

    bool isCoolingDown(std::string_view prefix) const;
    void activate(const Uuid& shortcutID, RecordingMode mode);
    void publishActivated(const Uuid& shortcutID, const Idle& before);
    void publishWaiting();
    bool switchesTo(const Uuid& shortcutID);
    void complete(const Uuid& shortcutID);
    void cancel(Dictation next, Idle idle);
    Idle afterCooldown() const { return {m_clock.instant() + cooldownInterval}; }
    void becomeIdle(Dictation next, Idle idle);
    void publish(const KeyboardActivationState& state);
    void settingsChanged();
    void updateDictationKeys();

    Clock& m_clock;
    PersistentAppStorage& m_appStorage;
    ShortcutNotifier& m_notifier;
    const Logger m_logger;
    ShortcutRegistrations m_registrations;
    DictationKeys m_dictationKeys;

    RecordingMode m_recordingMode = Idle{Instant::min()};
    Dictation m_dictation = Dictation::none;
    std::optional<Uuid> m_completionShortcut; ///< whose next press or release ends the dictation
    bool m_startedByKey = false;
    std::optional<HeldModifiers> m_heldModifiers;
    std::optional<WaitingActivation> m_waitingActivation;
    std::map<Uuid, DoubleTapState> m_doubleTapStates;
    Timer m_modeDetectionTimer;
    Timer m_waitingTimer;
    Timer m_heldTimer;     ///< until the modifiers are no longer fresh
    bool m_isBusy = false; ///< with what the keys of the dictation wait for
    std::vector<Subscription> m_cancellables;
};

} // namespace vocalith
