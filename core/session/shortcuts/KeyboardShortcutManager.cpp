#include "core/session/shortcuts/KeyboardShortcutManager.h"

#include "base/Iso8601.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <algorithm>
#include <bit>
#include <fmt/format.h>
#include <utility>

namespace vocalith {
namespace {

std::string describe(const KeyboardShortcutManager::RecordingMode& mode)
{
    static constexpr std::array kNames{"idle", "waitingForRelease", "toggleActive", "pushToTalkActive"};
    return kNames.at(mode.index());
}

} // namespace

KeyboardShortcutManager::KeyboardShortcutManager(Clock& clock, PersistentAppStorage& appStorage,
                                                 CarbonHotkeyManager& carbonHotkeyManager, HotKeys& hotKeys,
                                                 ShortcutNotifier& notifier, Logger logger)
    : m_clock(clock), m_appStorage(appStorage), m_notifier(notifier), m_logger(std::move(logger)),
      m_registrations(appStorage, carbonHotkeyManager, hotKeys,
                      {[this](bool isDown, const auto& shortcut) { handleShortcutChange(isDown, shortcut); },
                       [this](const auto& shortcut) { modifiersCombined(shortcut.id); }},
                      m_logger),
      m_dictationKeys(carbonHotkeyManager, [this](const auto& keys) { return m_registrations.has(keys); })
{
    m_cancellables.push_back(
        m_dictationKeys.escapePressed.subscribe([this] { cancel(Dictation::ending, afterCooldown()); }));
    m_cancellables.push_back(m_dictationKeys.returnPressed.subscribe([this] { m_notifier.returnTriggered.emit(); }));
    m_cancellables.push_back(
        m_dictationKeys.numberPressed.subscribe([this](int number) { promptNumberChosen.emit(number); }));
}

void KeyboardShortcutManager::start()
{
    for (auto& subscription : observeShortcuts(m_appStorage, [this] { settingsChanged(); }))
        m_cancellables.push_back(std::move(subscription));
    m_cancellables.push_back(
        m_appStorage.enableEscapeCancelsRecording.subscribe([this](bool) { updateDictationKeys(); }));
    m_registrations.update();
}

void KeyboardShortcutManager::setSuspended(bool isSuspended)
{
    if (isSuspended && m_waitingActivation)
        becomeIdle(m_dictation, m_waitingActivation->before);
    m_registrations.setSuspended(isSuspended);
}

void KeyboardShortcutManager::settingsChanged()
{
    m_logger.info("Settings changed, updating global hotkey");
    m_dictationKeys.take({}); // the user may want one of them for a shortcut
    const bool isNested = std::exchange(m_isBusy, true);
    m_registrations.update();
    m_isBusy = isNested;
    updateDictationKeys();
}

void KeyboardShortcutManager::handleShortcutChange(bool isDown, const KeyboardShortcut& shortcut)
{
    isDown ? pressed(shortcut) : released(shortcut);
    updateDictationKeys(); // which keys they are depends on what is held
}

void KeyboardShortcutManager::pressed(const KeyboardShortcut& shortcut)
{
    if (m_heldModifiers && m_heldModifiers->shortcutID != shortcut.id)
        modifiersCombined(m_heldModifiers->shortcutID);
    const bool isOfModifiersOnly = shortcut.keys && !shortcut.keys->keyCode;
    if (isOfModifiersOnly)
        m_heldModifiers = {shortcut.id, comparable(*shortcut.keys).rawFlags, m_clock.instant(), std::nullopt};
    const Before before{m_recordingMode, m_completionShortcut};
    switch (shortcut.activationMode) {
    case ActivationMode::automatic: automaticPressed(shortcut.id); break;
    case ActivationMode::toggle: togglePressed(shortcut.id); break;
    case ActivationMode::pushToTalk: pushToTalkPressed(shortcut.id); break;
    case ActivationMode::doubleTap: doubleTapPressed(shortcut.id); break;
    }
    if (isOfModifiersOnly)
        m_heldTimer = m_clock.after(modeDetectionInterval, [this] { updateDictationKeys(); });
    const bool isNowItsOwn = isCompletedBy(shortcut.id) && before.completionShortcut != shortcut.id;
    if (isOfModifiersOnly && m_heldModifiers && isNowItsOwn)
        m_heldModifiers->before = before;
}

void KeyboardShortcutManager::released(const KeyboardShortcut& shortcut)
{
    if (m_heldModifiers && m_heldModifiers->shortcutID == shortcut.id) {
        m_heldModifiers.reset();
        m_heldTimer.reset();
    }
    if (shortcut.activationMode == ActivationMode::automatic)
        automaticReleased(shortcut.id);
    else if (shortcut.activationMode == ActivationMode::pushToTalk)
        pushToTalkReleased(shortcut.id);
}

void KeyboardShortcutManager::automaticPressed(const Uuid& shortcutID)
{
    if (isIdle()) {
        if (isCoolingDown("Cooldown active until"))
            return;
        const auto now = m_clock.instant();
        detectModeAt(now + modeDetectionInterval);
        activate(shortcutID, WaitingForRelease{now});
    } else if (!switchesTo(shortcutID) && std::holds_alternative<ToggleActive>(m_recordingMode)) {
        m_logger.info("toggleActive → completed (same key pressed again)");
        complete(shortcutID);
    }
}

void KeyboardShortcutManager::detectModeAt(Instant instant)
{
    const auto delay = std::max(instant - m_clock.instant(), Duration::zero());
    m_modeDetectionTimer = m_clock.after(delay, [this] { modeDetectionTimerFired(); });
}

void KeyboardShortcutManager::modeDetectionTimerFired()
{
    if (!std::holds_alternative<WaitingForRelease>(m_recordingMode))
        return;
    m_logger.info("⏰ Timer fired: waitingForRelease → pushToTalkActive");
    m_recordingMode = PushToTalkActive{};
}

void KeyboardShortcutManager::automaticReleased(const Uuid& shortcutID)
{
    const auto* waiting = std::get_if<WaitingForRelease>(&m_recordingMode);
    if (waiting && isCompletedBy(shortcutID)) {
        releasedUndecided(shortcutID, WaitingForRelease(*waiting));
    } else if (std::holds_alternative<PushToTalkActive>(m_recordingMode) && isCompletedBy(shortcutID)) {
        m_logger.info("🎤 pushToTalkActive → completed");
        complete(shortcutID);
    } else if (!std::holds_alternative<ToggleActive>(m_recordingMode)) {
        m_logger.info("❓ Key released in unexpected state: " + describe(m_recordingMode));
    }
}

void KeyboardShortcutManager::releasedUndecided(const Uuid& shortcutID, const WaitingForRelease& waiting)
{
    m_logger.info("🔽 Key released, invalidating timer");
    m_modeDetectionTimer.reset();
    const auto duration = m_clock.instant() - waiting.startTime;
    m_logger.info(fmt::format("📏 Release duration: {:.3f}s (threshold: {:.1f}s)", toSeconds(duration),
                              toSeconds(modeDetectionInterval)));
    if (duration < modeDetectionInterval) {
        m_logger.info("⚡ Quick release: waitingForRelease → toggleActive");
        m_recordingMode = ToggleActive{};
    } else {
        m_logger.info("🐌 Slow release: waitingForRelease → completed");
        complete(shortcutID);
    }
}

void KeyboardShortcutManager::togglePressed(const Uuid& shortcutID)
{
    if (isIdle()) {
        if (!isCoolingDown("Toggle cooldown active until"))
            activate(shortcutID, ToggleActive{});
    } else if (!switchesTo(shortcutID)) {
        complete(shortcutID);
    }
}

void KeyboardShortcutManager::pushToTalkPressed(const Uuid& shortcutID)
{
    if (isIdle()) {
        if (!isCoolingDown("PushToTalk cooldown active until"))
            activate(shortcutID, PushToTalkActive{});
    } else if (switchesTo(shortcutID)) {
        m_modeDetectionTimer.reset();
        m_recordingMode = PushToTalkActive{};
    } else if (std::holds_alternative<ToggleActive>(m_recordingMode)) {
        complete(shortcutID);
    }
}

void KeyboardShortcutManager::pushToTalkReleased(const Uuid& shortcutID)
{
    if (std::holds_alternative<PushToTalkActive>(m_recordingMode) && isCompletedBy(shortcutID))
        complete(shortcutID);
}

void KeyboardShortcutManager::doubleTapPressed(const Uuid& shortcutID)
{
    const auto now = m_clock.instant();
    const auto last = m_doubleTapStates.find(shortcutID);
    if (last == m_doubleTapStates.end() || now - last->second.lastTapTime > doubleTapInterval) {
        m_doubleTapStates[shortcutID] = {now, shortcutID};
        return;
    }
    m_doubleTapStates.erase(last);
    if (isIdle()) {
        if (!isCoolingDown("DoubleTap cooldown active until"))
            activate(shortcutID, ToggleActive{});
        return;
    }
    const bool wasToggled = std::holds_alternative<ToggleActive>(m_recordingMode);
    switchesTo(shortcutID);
    m_modeDetectionTimer.reset();
    m_recordingMode = ToggleActive{};
    if (wasToggled)
        complete(shortcutID);
    else
        publish(keyboard_activation::Activated{shortcutID});
}

/// Whatever the modifiers of the shortcut are held for, it is not the shortcut.
void KeyboardShortcutManager::modifiersCombined(const Uuid& shortcutID)
{
    m_doubleTapStates.erase(shortcutID);
    if (!m_heldModifiers || m_heldModifiers->shortcutID != shortcutID || !m_heldModifiers->before)
        return;
    if (!m_heldModifiers->isFresh(m_clock))
        return;
    const Before before = *m_heldModifiers->before;
    m_heldModifiers->before.reset();
    if (const auto* idle = std::get_if<Idle>(&before.mode)) {
        m_logger.info("The modifier keys belong to another combination, cancelling");
        cancel(Dictation::undone, *idle);
    } else {
        m_logger.info("The modifier keys belong to another combination, switching back");
        switchBack(before);
    }
}

void KeyboardShortcutManager::switchBack(const Before& before)
{
    m_completionShortcut = before.completionShortcut;
    m_recordingMode = before.mode;
    m_modeDetectionTimer.reset();
    if (const auto* waiting = std::get_if<WaitingForRelease>(&before.mode))
        detectModeAt(waiting->startTime + modeDetectionInterval);
}

bool KeyboardShortcutManager::isCoolingDown(std::string_view prefix) const
{
    const auto canStartAfter = std::get<Idle>(m_recordingMode).canStartAfter;
    const auto now = m_clock.instant();
    if (now >= canStartAfter)
        return false;
    const auto remaining = std::chrono::ceil<std::chrono::milliseconds>(canStartAfter - now);
    m_logger.info(fmt::format("{} {}", prefix, toIso8601(m_clock.now() + remaining)));
    return true;
}

void KeyboardShortcutManager::activate(const Uuid& shortcutID, RecordingMode mode)
{
    const auto before = std::get<Idle>(std::exchange(m_recordingMode, mode));
    m_completionShortcut = shortcutID;
    m_startedByKey = true;
    if (m_dictation == Dictation::undone)
        m_waitingActivation = {shortcutID, before};
    else
        publishActivated(shortcutID, before);
}

void KeyboardShortcutManager::publishActivated(const Uuid& shortcutID, const Idle& before)
{
    const keyboard_activation::Activated activated{shortcutID};
    if (m_notifier.state.get() == KeyboardActivationState(activated)) // refused to somebody else
        publish(keyboard_activation::Idle{});
    publish(activated);
    if (m_dictation == Dictation::spoken || isIdle())
        return;
    m_logger.info("The dictation was refused");
    becomeIdle(m_dictation, before);
    publish(keyboard_activation::Idle{});
}

void KeyboardShortcutManager::publishWaiting()
{
    if (const auto waiting = std::exchange(m_waitingActivation, std::nullopt))
        publishActivated(waiting->shortcutID, waiting->before);
}

/// Whether the press does nothing but make this shortcut the one that ends the dictation.
bool KeyboardShortcutManager::switchesTo(const Uuid& shortcutID)
{
    if (isCompletedBy(shortcutID))
        return false;
    if (m_completionShortcut)
        m_logger.info(fmt::format("🔄 Switching completion shortcut from {} to {}", m_completionShortcut->toString(),
                                  shortcutID.toString()));
    m_completionShortcut = shortcutID;
    return std::exchange(m_startedByKey, true);
}

void KeyboardShortcutManager::complete(const Uuid& shortcutID)
{
    if (m_waitingActivation) { // nobody knows of it yet
        becomeIdle(m_dictation, afterCooldown());
        return;
    }
    becomeIdle(Dictation::ending, afterCooldown());
    publish(keyboard_activation::Completed{shortcutID});
}

void KeyboardShortcutManager::cancel(Dictation next, Idle idle)
{
    if (m_waitingActivation) {
        becomeIdle(m_dictation, idle);
        return;
    }
    becomeIdle(next, idle);
    publish(keyboard_activation::Idle{});
    m_notifier.escapeTriggered.emit();
}

void KeyboardShortcutManager::becomeIdle(Dictation next, Idle idle)
{
    m_modeDetectionTimer.reset();
    m_waitingTimer.reset();
    m_waitingActivation.reset();
    if (m_heldModifiers)
        m_heldModifiers->before.reset();
    m_recordingMode = idle;
    m_completionShortcut.reset();
    m_dictation = next;
}

void KeyboardShortcutManager::dictationStarted(const Uuid& shortcutID)
{
    m_dictation = Dictation::spoken;
    m_waitingActivation.reset();
    if (isIdle()) {
        m_recordingMode = ToggleActive{};
        m_completionShortcut = shortcutID;
        m_startedByKey = false;
    }
    updateDictationKeys();
}

void KeyboardShortcutManager::speakingEnded()
{
    if (m_dictation != Dictation::spoken)
        return;
    becomeIdle(Dictation::ending, afterCooldown());
    updateDictationKeys();
}

void KeyboardShortcutManager::dictationEnded()
{
    if (m_dictation == Dictation::none && isIdle())
        return;
    if (m_waitingActivation) // later: not everybody knows yet that this one has ended
        m_waitingTimer = m_clock.after(Duration::zero(), [this] { publishWaiting(); });
    else if (!isIdle())
        becomeIdle(Dictation::none, afterCooldown());
    m_dictation = Dictation::none; // the cooldown runs since the user ended it
    publish(keyboard_activation::Idle{});
}

void KeyboardShortcutManager::publish(const KeyboardActivationState& state)
{
    const bool isNested = std::exchange(m_isBusy, true);
    m_notifier.state.set(state);
    m_isBusy = isNested;
    updateDictationKeys();
}

void KeyboardShortcutManager::updateDictationKeys()
{
    // Asking the desktop for keys takes its time; the microphone and the user's own shortcuts come first.
    if (m_isBusy)
        return;
    DictationKeys::Wanted wanted;
    wanted.escape = m_dictation != Dictation::none && m_appStorage.enableEscapeCancelsRecording.get();
    // Given back before the text is delivered: that may press Return itself.
    wanted.returnKey = m_dictation == Dictation::spoken;
    const auto prompts = static_cast<int>(m_appStorage.aiPrompts.get().size());
    if (m_dictation == Dictation::spoken && prompts > 0)
        wanted.numbers = std::min(numberKeys(), prompts + 1); // the main prompt is among them
    // A lone modifier is typed with, until it has been held for long.
    if (m_heldModifiers && (std::popcount(m_heldModifiers->rawFlags) > 1 || !m_heldModifiers->isFresh(m_clock)))
        wanted.heldModifiers = m_heldModifiers->rawFlags;
    m_dictationKeys.take(wanted);
}

} // namespace vocalith
