#include "core/session/shortcuts/DictationKeys.h"
#include "tests/core/session/shortcuts/ShortcutStage.h"

using namespace vocalith;
using namespace vocalith::test;

namespace {

class KeysOfADictation : public ShortcutStage {
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

TEST_F(KeysOfADictation, WorkTogetherWithModifiersThatAreHeldForIt)
{
    configure({shortcut("Ctrl+Super", ActivationMode::pushToTalk), shortcut("Alt", ActivationMode::pushToTalk),
               shortcut("Ctrl+Super+2", ActivationMode::toggle)});
    hotKeys.hold(kCtrl | kSuper);
    EXPECT_EQ(taken(), "Escape Return Alt+1 Alt+3");
    EXPECT_EQ(hotKeys.count(), 1u + 5u + 4u) << "but what is the user's own";
    hotKeys.press(keys("Ctrl+Super+3"));
    hotKeys.press(keys("Ctrl+Super+Return"));
    hotKeys.press(keys("Ctrl+Super+Escape"));
    EXPECT_EQ(news(), (Lines{"activated A", "3", "return", "idle", "escape"}));
    EXPECT_TRUE(hotKeys.has(keys("Ctrl+Super+Escape"))) << "until it has ended";
    hotKeys.hold(0);
    EXPECT_EQ(hotKeys.count(), 1u + 1u);
    manager.dictationEnded();

    clock.advance(std::chrono::seconds(1));
    hotKeys.hold(kAlt);
    clock.advance(std::chrono::seconds(1));
    EXPECT_TRUE(hotKeys.has(keys("Alt+Escape")));
    EXPECT_EQ(hotKeys.count(), 1u + 4u + 3u) << "a digit has it already";
    hotKeys.hold(0);
    manager.dictationEnded();
    EXPECT_EQ(hotKeys.count(), 1u);
}

TEST_F(KeysOfADictation, LeaveALoneModifierToThoseWhoTypeWithIt)
{
    configure({shortcut("Shift", ActivationMode::pushToTalk)});
    hotKeys.hold(kShift);
    clock.advance(std::chrono::milliseconds(999));
    EXPECT_FALSE(hotKeys.has(keys("Shift+1"))) << "an exclamation mark";
    clock.advance(std::chrono::milliseconds(1));
    EXPECT_TRUE(hotKeys.has(keys("Shift+1")));
    EXPECT_TRUE(hotKeys.has(keys("Shift+Escape")));
    hotKeys.hold(0);
    EXPECT_FALSE(hotKeys.has(keys("Shift+Escape")));
    EXPECT_EQ(clock.pendingTimers(), 0u);
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
