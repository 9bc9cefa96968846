#pragma once

#include "core/session/shortcuts/CarbonHotkeyManager.h"
#include "core/session/shortcuts/KeyboardShortcutManager.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "tests/support/FakeClock.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vocalith::test {

using Lines = std::vector<std::string>;

inline constexpr auto kCtrl = modifier_flags::control;
inline constexpr auto kSuper = modifier_flags::command;
inline constexpr auto kShift = modifier_flags::shift;
inline constexpr auto kAlt = modifier_flags::option;

/// The manager with everything around it, and one who dictates as it says: a dictation starts when it is asked for,
/// unless the test refuses it, and ends when the test says so.
class ShortcutStage : public testing::Test {
protected:
    ShortcutStage()
    {
        m_subscriptions.push_back(notifier.state.subscribe([this](const auto& state) { published(state); }));
        m_subscriptions.push_back(notifier.escapeTriggered.subscribe([this] { told.emplace_back("escape"); }));
        m_subscriptions.push_back(notifier.returnTriggered.subscribe([this] { told.emplace_back("return"); }));
        m_subscriptions.push_back(
            manager.promptNumberChosen.subscribe([this](int number) { told.push_back(std::to_string(number)); }));
    }

    static KeyboardShortcut::Keys keys(const std::string& text) { return parseKeys(text).value(); }
    static KeyboardShortcut shortcut(const std::string& text, ActivationMode mode = ActivationMode::automatic)
    {
        return {Uuid::random(), keys(text), false, mode};
    }
    /// Makes these the only shortcuts.
    void configure(std::vector<KeyboardShortcut> shortcuts) { storage.additionalShortcuts.set(std::move(shortcuts)); }
    /// What was told since the last time: "activated A", "completed B", "idle", "escape", "return", "3".
    std::vector<std::string> news() { return std::exchange(told, {}); }
    std::size_t mode() const { return manager.recordingMode().index(); }

    TemporaryFolder folder;
    FakeClock clock;
    RecordedLog log;
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
    FakeHotKeys hotKeys;
    ShortcutNotifier notifier;
    CarbonHotkeyManager carbon{hotKeys, log.logger()};
    KeyboardShortcutManager manager{clock, storage, carbon, hotKeys, notifier, log.logger()};
    std::vector<std::string> told;
    bool refuses = false;

private:
    void published(const KeyboardActivationState& state)
    {
        if (const auto* activated = std::get_if<keyboard_activation::Activated>(&state)) {
            told.push_back("activated " + name(activated->shortcutID));
            if (!refuses)
                manager.dictationStarted(activated->shortcutID);
        } else if (const auto* completed = std::get_if<keyboard_activation::Completed>(&state))
            complete(completed->shortcutID);
        else
            told.emplace_back("idle");
    }
    void complete(const Uuid& id)
    {
        told.push_back("completed " + name(id));
        manager.speakingEnded();
    }
    /// A for the first of the shortcuts, B for the second.
    std::string name(const Uuid& id) const
    {
        char letter = 'A';
        for (const auto& each : storage.additionalShortcuts.get()) {
            if (each.id == id)
                return {letter};
            ++letter;
        }
        return "?";
    }

    std::vector<Subscription> m_subscriptions;
};

} // namespace vocalith::test
