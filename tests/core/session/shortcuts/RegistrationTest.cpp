#include "core/session/shortcuts/DictationKeys.h"
#include "tests/core/session/shortcuts/ShortcutStage.h"

using namespace vocalith;
using namespace vocalith::test;

namespace {

using Lines = std::vector<std::string>;
constexpr auto kCtrl = modifier_flags::control;
constexpr auto kSuper = modifier_flags::command;
constexpr auto kShift = modifier_flags::shift;

class Shortcuts : public ShortcutStage {
protected:
    Lines messages()
    {
        Lines all;
        for (const auto& problem : manager.problems().get())
            all.push_back(problem.message);
        return all;
    }
};

TEST_F(Shortcuts, OfEveryKindAreRegisteredOnceAndFollowTheSettings)
{
    auto prompt = storage.mainPrompt.get();
    prompt.shortcut = shortcut("Ctrl+F1");
    storage.mainPrompt.set(prompt);
    AIPrompt other;
    other.id = Uuid::random();
    other.name = "Mail";
    other.shortcut = shortcut("Ctrl+F2");
    storage.aiPrompts.set({other});
    auto additional = shortcut("Ctrl+F3");
    additional.keys->rawFlags |= modifier_flags::capsLock;
    configure({additional, KeyboardShortcut{Uuid::random(), std::nullopt}});
    storage.voiceJournalShortcut.set(shortcut("Ctrl+F4"));
    EXPECT_EQ(hotKeys.count(), 0u);
    manager.start();

    EXPECT_EQ(hotKeys.count(), 4u);
    EXPECT_EQ(hotKeys.asked().at(1), (HotKey{other.shortcut.id, keys("Ctrl+F2"), "Dictate: Mail"}));
    EXPECT_TRUE(hotKeys.press(keys("Ctrl+F3"))) << "without the lock";
    EXPECT_EQ(news(), Lines{"activated A"});
    EXPECT_TRUE(log.has("Shortcut keys are not specified"));
    manager.dictationEnded();

    other.shortcut.keys = keys("Ctrl+F5");
    storage.aiPrompts.set({other});
    EXPECT_FALSE(hotKeys.has(keys("Ctrl+F2")));
    EXPECT_TRUE(hotKeys.has(keys("Ctrl+F5")));
    EXPECT_EQ(hotKeys.asked().size(), 4u + 4u + 1u) << "those of the dictation and the changed one";
    EXPECT_TRUE(log.has("Settings changed, updating global hotkey"));
    EXPECT_TRUE(log.has("Shortcut " + other.shortcut.id.toString() + " has changed - unregistering old handler"));
    EXPECT_TRUE(log.has("Shortcut " + prompt.shortcut.id.toString() + " already registered - skipping registration"));

    storage.aiPrompts.set({});
    EXPECT_FALSE(hotKeys.has(keys("Ctrl+F5")));
    manager.setSuspended(true);
    EXPECT_EQ(hotKeys.count(), 0u);
    manager.setSuspended(false);
    EXPECT_EQ(hotKeys.count(), 3u);
}

TEST_F(Shortcuts, ThatFailAreNamedUntilTheyWork)
{
    hotKeys.refused = {{keys("Ctrl+F1"), {HotKeyError::Kind::taken, 10}}};
    configure({shortcut("Ctrl+F1"), shortcut("Ctrl+F2"), shortcut("Ctrl+F2"), shortcut("Fn")});
    hotKeys.monitorError = HotKeyError{HotKeyError::Kind::unsupported, 0, "Add a key."};
    manager.start();
    EXPECT_EQ(messages(),
              (Lines{"Another program uses Ctrl+F1 already. Choose other keys for the dictation, or free them there.",
                     "This key combination is already used by the app. Please use a different shortcut.",
                     "Fn cannot be used everywhere on this desktop. Add a key."}));
    EXPECT_TRUE(log.has("Failed to register keyboard shortcut (keyCode=122, modifiers=262144, status=10)"));

    hotKeys.refused.clear();
    hotKeys.monitorError.reset();
    manager.retry();
    EXPECT_EQ(messages().size(), 1u) << "only the one that is there twice";
    EXPECT_TRUE(hotKeys.press(keys("Ctrl+F1")));
    EXPECT_TRUE(hotKeys.isMonitoring());

    const auto id = storage.additionalShortcuts.get()[1].id;
    hotKeys.failed.emit(id, HotKeyError{HotKeyError::Kind::failed, 0, "It is gone."});
    EXPECT_EQ(messages().back(), "The shortcut Ctrl+F2 could not be set up: It is gone.");
    EXPECT_FALSE(hotKeys.has(keys("Ctrl+F2"))) << "what failed is not kept half alive";
    EXPECT_TRUE(log.has("Carbon keyboard shortcut callback error: "));
}

/// Nobody would tell of the release, and the dictation would go on for ever.
TEST_F(Shortcuts, ThatChangeWhileTheyAreHeldComeUp)
{
    for (const auto* text : {"Ctrl+F1", "Ctrl+Super"}) {
        configure({shortcut(text, ActivationMode::pushToTalk)});
        manager.start();
        if (!hotKeys.press(keys(text)))
            hotKeys.hold(kCtrl | kSuper);
        configure({});
        EXPECT_EQ(mode(), 0u) << text;
        EXPECT_EQ(news().size(), 2u);
        manager.dictationEnded();
        clock.advance(std::chrono::seconds(1));
        news();
    }
}

TEST_F(Shortcuts, OfModifiersOnlyGoDownWhenExactlyTheyAreHeld)
{
    struct Case {
        const char* name;
        std::vector<std::uint64_t> held;
        Lines told;
    };
    const std::vector<Case> cases{
        {"one after the other, held", {kCtrl, kCtrl | kSuper, kSuper, 0}, {"activated A", "completed A"}},
        {"locks do not count", {kCtrl | kSuper | modifier_flags::capsLock, 0}, {"activated A", "completed A"}},
        {"one less is another combination", {kSuper, 0}, {}},
        {"letting go of three keys passes two", {kCtrl | kSuper | kShift, kCtrl | kSuper, kCtrl, 0}, {}},
        {"a third one joins: it was meant for something else",
         {kCtrl | kSuper, kCtrl | kSuper | kShift, 0},
         {"activated A", "idle", "escape"}},
    };
    configure({shortcut("Ctrl+Super", ActivationMode::pushToTalk)});
    manager.start();
    for (const auto& each : cases) {
        for (const auto flags : each.held)
            hotKeys.hold(flags);
        EXPECT_EQ(news(), each.told) << each.name;
        manager.dictationEnded();
        clock.advance(std::chrono::seconds(1));
        news();
    }
    EXPECT_TRUE(log.has("Modifier update for " + storage.additionalShortcuts.get()[0].id.toString() +
                        " (Ctrl+Super), is match: true"));
    configure({});
    EXPECT_FALSE(hotKeys.isMonitoring()) << "nobody's keys are watched without need";
}

TEST_F(Shortcuts, OfModifiersOnlyAreCancelledByACombination)
{
    configure({shortcut("Ctrl+Super")});
    manager.start();
    hotKeys.hold(kCtrl | kSuper);
    clock.advance(std::chrono::milliseconds(999));
    hotKeys.hold(kCtrl | kSuper, true);
    EXPECT_EQ(news(), (Lines{"activated A", "idle", "escape"}));
    hotKeys.hold(kCtrl);
    hotKeys.hold(kCtrl | kSuper);
    clock.advance(std::chrono::seconds(1));
    EXPECT_EQ(news(), Lines{}) << "the hand is still on the same combination";
    hotKeys.hold(0);
    manager.dictationEnded();
    clock.advance(std::chrono::seconds(1));

    hotKeys.hold(kCtrl | kSuper);
    clock.advance(std::chrono::milliseconds(1000));
    hotKeys.hold(kCtrl | kSuper, true);
    EXPECT_EQ(news(), Lines{"activated A"}) << "held to talk by now";
}

TEST_F(Shortcuts, OfModifiersOnlyGiveWayToALargerOne)
{
    configure({shortcut("Ctrl+Super"), shortcut("Ctrl+Shift+Super")});
    manager.start();
    hotKeys.hold(kCtrl | kSuper);
    hotKeys.hold(kCtrl | kSuper | kShift);
    hotKeys.hold(kCtrl | kSuper);
    hotKeys.hold(0);
    EXPECT_EQ(mode(), 2u);
    hotKeys.hold(kCtrl | kShift);
    hotKeys.hold(kCtrl | kSuper | kShift);
    EXPECT_EQ(news(), (Lines{"activated A", "completed B"}));
}

class KeysOfADictation : public Shortcuts {
protected:
    KeysOfADictation()
    {
        std::vector<AIPrompt> prompts(2);
        for (auto& prompt : prompts)
            prompt.id = prompt.shortcut.id = Uuid::random();
        storage.aiPrompts.set(prompts);
        configure({shortcut("Ctrl+F1")});
        manager.start();
    }
    std::string taken() const
    {
        std::string all;
        for (const auto* text : {"Escape", "Return", "Alt+1", "Alt+3", "Alt+4"}) {
            if (hotKeys.has(keys(text)))
                all += std::string(all.empty() ? "" : " ") + text;
        }
        return all;
    }
    void tap()
    {
        hotKeys.press(keys("Ctrl+F1"));
        hotKeys.release(keys("Ctrl+F1"));
    }
};

TEST_F(KeysOfADictation, BelongToTheDesktopAtAllOtherTimes)
{
    EXPECT_EQ(taken(), "");
    tap();
    EXPECT_EQ(taken(), "Escape Return Alt+1 Alt+3") << "three prompts with the main one";
    EXPECT_EQ(hotKeys.asked().at(1).shortcutID, Uuid::parse("00000000-0000-0000-0000-000000000053"));
    EXPECT_EQ(hotKeys.asked().at(2).shortcutID, Uuid::parse("00000000-0000-0000-0000-000000000036"));
    hotKeys.press(keys("Alt+3"));
    hotKeys.press(keys("Return"));
    hotKeys.release(keys("Return"));
    EXPECT_EQ(news(), (Lines{"activated A", "3", "return"}));
    tap();
    EXPECT_EQ(taken(), "Escape") << "the text may be followed by a Return of our own";
    manager.dictationEnded();
    EXPECT_EQ(taken(), "");

    manager.dictationStarted(Uuid::random());
    EXPECT_EQ(taken(), "Escape Return Alt+1 Alt+3") << "whoever started it";
    manager.dictationEnded();
    EXPECT_EQ(taken(), "");
}

TEST_F(KeysOfADictation, AreNotAskedForWhereTheDesktopLendsNone)
{
    EXPECT_EQ(manager.numberKeys(), 9);
    hotKeys.isOnDemand = false;
    EXPECT_EQ(manager.numberKeys(), 0);
    manager.dictationStarted(Uuid::random());
    storage.enableEscapeCancelsRecording.set(false);
    manager.speakingEnded();
    manager.dictationEnded();
    EXPECT_EQ(hotKeys.asked().size(), 1u);
    EXPECT_TRUE(hotKeys.has(keys("Ctrl+F1"))) << "the user's own stays";
}

TEST_F(KeysOfADictation, EscapeCancelsWhereTheUserWantsIt)
{
    tap();
    hotKeys.press(keys("Escape"));
    EXPECT_EQ(news(), (Lines{"activated A", "idle", "escape"}));
    EXPECT_EQ(mode(), 0u);
    EXPECT_EQ(taken(), "Escape") << "until it has ended";
    manager.dictationEnded();
    EXPECT_EQ(taken(), "");

    clock.advance(std::chrono::seconds(1));
    storage.enableEscapeCancelsRecording.set(false);
    tap();
    EXPECT_EQ(taken(), "Return Alt+1 Alt+3");
    storage.enableEscapeCancelsRecording.set(true);
    EXPECT_EQ(taken(), "Escape Return Alt+1 Alt+3");
    tap(); // processing
    hotKeys.press(keys("Escape"));
    EXPECT_EQ(news().back(), "escape");
}

TEST_F(KeysOfADictation, LeaveTheUsersOwnShortcutAlone)
{
    configure({shortcut("Alt+1")});
    hotKeys.press(keys("Alt+1"));
    EXPECT_EQ(hotKeys.asked().size(), 1u + 1u + 2u + 2u) << "Escape, Return, Alt+2 and Alt+3";
    hotKeys.release(keys("Alt+1"));
    hotKeys.press(keys("Alt+1"));
    EXPECT_EQ(news(), (Lines{"activated A", "completed A"}));
    manager.dictationEnded();
    EXPECT_TRUE(hotKeys.has(keys("Alt+1")));
}

TEST_F(KeysOfADictation, GiveWayToAShortcutThatTheUserWantsMeanwhile)
{
    tap();
    auto shortcuts = storage.additionalShortcuts.get();
    shortcuts.push_back(shortcut("Alt+1", ActivationMode::toggle));
    configure(shortcuts);
    news();
    hotKeys.press(keys("Alt+1"));
    hotKeys.press(keys("Alt+1"));
    EXPECT_EQ(news(), Lines{"completed B"});
    manager.dictationEnded();
    EXPECT_TRUE(hotKeys.has(keys("Alt+1")));
    EXPECT_EQ(hotKeys.count(), 2u);
}

/// A Return that the text is sent with would come back to us.
TEST_F(KeysOfADictation, GoBackWhenTheSpeakingEndsWhoeverEndsIt)
{
    tap();
    manager.speakingEnded();
    EXPECT_EQ(taken(), "Escape");
    EXPECT_EQ(mode(), 0u);
    EXPECT_EQ(clock.pendingTimers(), 0u);
    manager.dictationEnded();
    EXPECT_EQ(taken(), "");
}

} // namespace
