#include "app/overlay/DictationShortcuts.h"

#include "app/overlay/RemoteControl.h"
#include "core/session/shortcuts/CarbonHotkeyManager.h"
#include "core/session/shortcuts/KeyboardShortcutManager.h"
#include "models/KeyboardShortcutText.h"
#include "tests/app/overlay/DictationStage.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/FakeScreenLock.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Delivered = dictation_outcome::Delivered;
using Action = InstanceRequest::Action;

namespace {

const KeyboardShortcut::Keys kKeys = parseKeys("Ctrl+F1").value();
const KeyboardShortcut::Keys kReturn = parseKeys("Return").value();
const KeyboardShortcut::Keys kEscape = parseKeys("Escape").value();

/// Keys at one end, whole dictations at the other.
class DictationByKeys : public testing::Test {
protected:
    DictationByKeys()
    {
        stage.loadConfiguration();
        manager.start();
    }

    void configure(ActivationMode mode)
    {
        stage.storage.additionalShortcuts.set({{stage.promptShortcut, kKeys, false, mode}});
    }
    void pass(std::chrono::milliseconds time)
    {
        drainMainThread();
        stage.clock.advance(time);
        drainMainThread();
    }
    void tap()
    {
        hotKeys.press(kKeys);
        pass(10ms);
        hotKeys.release(kKeys);
    }
    void expectRest()
    {
        EXPECT_EQ(stage.overlay.phase.get(), DictationPhase::idle);
        EXPECT_TRUE(std::holds_alternative<KeyboardShortcutManager::Idle>(manager.recordingMode()));
        EXPECT_EQ(hotKeys.count(), stage.storage.additionalShortcuts.get().size()) << "keys that nobody gave back";
        EXPECT_EQ(stage.input.aliveStreams(), 0u);
        stage.clock.advance(1s);
        EXPECT_EQ(stage.clock.pendingTimers(), 0u);
    }
    std::string ask(Action action)
    {
        const auto done = remote.carryOut({action, {}});
        return done ? "done" : done.error();
    }

    DictationStage stage;
    FakeHotKeys hotKeys;
    CarbonHotkeyManager carbon{hotKeys, stage.log.logger()};
    KeyboardShortcutManager manager{stage.clock, stage.storage, carbon, hotKeys, stage.notifier, stage.log.logger()};
    DictationShortcuts shortcuts{manager, stage.overlay, stage.notifier};
    FakeScreenLock screenLock;
    RemoteControl remote{stage.notifier, stage.overlay, stage.configuration, screenLock, [] {}};
};

TEST_F(DictationByKeys, WithstandsAHundredPressesInASecond)
{
    for (const auto mode :
         {ActivationMode::automatic, ActivationMode::toggle, ActivationMode::pushToTalk, ActivationMode::doubleTap}) {
        SCOPED_TRACE(static_cast<int>(mode));
        configure(mode);
        const auto ended = stage.display.outcomes.size();
        for (int press = 0; press < 100; ++press) {
            hotKeys.press(kKeys);
            pass(4ms);
            hotKeys.release(kKeys);
            pass(6ms);
        }
        if (stage.overlay.phase.get() == DictationPhase::recording)
            hotKeys.press(kReturn);
        runUntil([this] { return stage.overlay.phase.get() == DictationPhase::idle; });
        EXPECT_GT(stage.display.outcomes.size(), ended);
        EXPECT_LE(stage.display.outcomes.size(), ended + 4) << "one in 300 ms at most";
        expectRest();
    }
    EXPECT_EQ(stage.recordingsOnDisk(), 0u);
    EXPECT_EQ(stage.sounds.playedAtStart, int(stage.display.outcomes.size()));
    EXPECT_EQ(stage.sounds.restored, int(stage.display.outcomes.size()));

    configure(ActivationMode::automatic);
    tap();
    stage.speak(2s);
    tap();
    runUntil([this] { return stage.overlay.phase.get() == DictationPhase::idle; });
    EXPECT_EQ(stage.output.delivered, std::vector<std::string>{"hello world "}) << "and works as before";
    expectRest();
}

/// The text may be sent with a Return of our own.
TEST_F(DictationByKeys, TheReturnKeyIsTheApplicationsAgainWhenTheTextIsDelivered)
{
    const std::vector<std::pair<const char*, std::function<void()>>> ends{
        {"the shortcut", [this] { tap(); }},
        {"Return", [this] { hotKeys.press(kReturn); }},
        {"a command", [this] { EXPECT_EQ(ask(Action::stop), "done"); }},
        {"the microphone",
         [this] {
             stage.input.capture()->fail({AudioInputError::Kind::deviceLost, "unplugged"});
         }},
    };
    configure(ActivationMode::toggle);
    stage.output.holds = true;
    for (const auto& [name, end] : ends) {
        SCOPED_TRACE(name);
        const int asked = stage.output.asked;
        tap();
        EXPECT_TRUE(hotKeys.has(kReturn));
        stage.speak(2s);
        end();
        runUntil([&] { return stage.output.asked > asked; });
        EXPECT_FALSE(hotKeys.has(kReturn));
        EXPECT_TRUE(hotKeys.press(kEscape)) << "still cancels";
        stage.waitForOutcome();
        pass(300ms);
        expectRest();
    }
}

/// Its release would be the release of a shortcut that nobody knows, and the microphone would stay open.
TEST_F(DictationByKeys, AShortcutThatTheSettingsLoseWhileItIsHeldEndsItsDictation)
{
    configure(ActivationMode::pushToTalk);
    hotKeys.press(kKeys);
    stage.speak(2s);
    stage.forgetPromptShortcut = true;
    stage.loadConfiguration();
    stage.storage.additionalShortcuts.set({});
    EXPECT_TRUE(std::holds_alternative<Delivered>(stage.waitForOutcome()));
    expectRest();
}

/// The first one is still being thrown away when the second one is asked for.
TEST_F(DictationByKeys, TheLargerOfTwoCombinationsGetsItsOwnDictation)
{
    const auto keys = [](const char* text) { return parseKeys(text).value(); };
    const auto mode = ActivationMode::pushToTalk;
    stage.storage.additionalShortcuts.set(
        {{stage.journalShortcut, keys("Ctrl"), false, mode}, {stage.promptShortcut, keys("Ctrl+Alt"), false, mode}});
    hotKeys.hold(modifier_flags::control);
    pass(60ms);
    hotKeys.hold(modifier_flags::control | modifier_flags::option);
    EXPECT_TRUE(std::holds_alternative<dictation_outcome::Cancelled>(stage.waitForOutcome()));
    pass(1ms);
    EXPECT_EQ(stage.overlay.phase.get(), DictationPhase::recording);
    stage.speak(2s);
    hotKeys.hold(0);
    EXPECT_TRUE(std::holds_alternative<Delivered>(stage.waitForOutcome()));
    const auto entries = stage.historyEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_FALSE(std::holds_alternative<HistoryEntry::VoiceJournalEntry>(entries.front().content));
}

TEST_F(DictationByKeys, CommandsAndKeysEndWhatTheOtherHasStarted)
{
    configure(ActivationMode::automatic);
    EXPECT_EQ(ask(Action::toggle), "done");
    stage.speak(2s);
    tap();
    EXPECT_EQ(ask(Action::stop), "No dictation is running.");
    EXPECT_TRUE(std::holds_alternative<Delivered>(stage.waitForOutcome()));

    pass(300ms);
    hotKeys.press(kKeys);
    stage.speak(2s);
    pass(1500ms);
    EXPECT_EQ(ask(Action::start), "A dictation is running already. End it with: vocalith stop");
    EXPECT_EQ(ask(Action::stop), "done");
    hotKeys.release(kKeys); // late, and meant for what has ended
    EXPECT_TRUE(std::holds_alternative<Delivered>(stage.waitForOutcome()));

    EXPECT_EQ(ask(Action::start), "done") << "a command has no tail that it could be";
    stage.speak(2s);
    EXPECT_EQ(ask(Action::cancel), "done");
    EXPECT_FALSE(hotKeys.has(kReturn));
    EXPECT_TRUE(std::holds_alternative<dictation_outcome::Cancelled>(stage.waitForOutcome()));
    pass(300ms);
    expectRest();
    tap();
    EXPECT_EQ(stage.overlay.phase.get(), DictationPhase::recording) << "a cancelled command does not lock the keys";
    hotKeys.press(kEscape);
    stage.waitForOutcome();
    pass(300ms);
    expectRest();
}

} // namespace
