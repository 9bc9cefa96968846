#include "tests/core/session/shortcuts/ShortcutStage.h"

#include <cctype>
#include <sstream>

using namespace vocalith;
using namespace vocalith::test;

namespace {

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

TEST_F(Shortcuts, ThatFailAreNamedOnceHoweverOftenTheScreenIsLocked)
{
    hotKeys.refused = {{keys("Ctrl+F1"), {HotKeyError::Kind::taken, 10}}};
    configure({shortcut("Ctrl+F1"), shortcut("Ctrl+F2")});
    int changes = 0;
    const auto problems = manager.problems().subscribe([&changes](const auto&) { ++changes; });
    manager.start();
    for (int i = 0; i < 3; ++i) {
        manager.setSuspended(true);
        manager.retry();
        EXPECT_EQ(messages().size(), 1u);
        manager.setSuspended(false);
    }
    EXPECT_EQ(changes, 1);
    hotKeys.refused.clear();
    manager.setSuspended(true);
    manager.setSuspended(false);
    EXPECT_TRUE(messages().empty());
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

/// A dictation that a shortcut of modifiers started or would have ended, as the hand goes on to what it is after.
class Combinations : public Shortcuts {
protected:
    /// "Ctrl+Super" holds exactly these, "0" none, "*" presses another key with them, "D+" and "D-" the hot key
    /// Ctrl+Alt+D, a number lets so many milliseconds pass, "end" ends the dictation.
    void play(const std::string& events)
    {
        const auto hotKey = keys("Ctrl+Alt+D");
        std::istringstream stream(events);
        for (std::string event; stream >> event;) {
            if (event == "end")
                manager.dictationEnded();
            else if (event == "*")
                hotKeys.hold(m_held, true);
            else if (event == "D+")
                hotKeys.press(hotKey);
            else if (event == "D-")
                hotKeys.release(hotKey);
            else if (event != "0" && std::isdigit(static_cast<unsigned char>(event[0])) != 0)
                clock.advance(std::chrono::milliseconds(std::stoi(event)));
            else
                hotKeys.hold(m_held = event == "0" ? 0 : keys(event).rawFlags);
        }
    }
    void rest()
    {
        play("0 end 1 end 10000");
        EXPECT_EQ(mode(), 0u);
        EXPECT_EQ(clock.pendingTimers(), 0u);
        news();
    }

private:
    std::uint64_t m_held = 0;
};

/// What is told, and the mode in which it ends.
struct Ending {
    const char* events;
    Lines told;
    std::size_t mode;
};

TEST_F(Combinations, CancelWhatTheirModifiersHaveStarted)
{
    configure({shortcut("Ctrl+Super")});
    manager.start();
    const Lines undone{"activated A", "idle", "escape"};
    const std::vector<Ending> endings{
        {"Ctrl+Super 999 *", undone, 0},
        {"Ctrl+Super 999 * Ctrl Ctrl+Super 1000", undone, 0}, // the hand is still on it
        {"Ctrl+Super 1000 *", {"activated A"}, 3},            // held to talk by now
        {"Ctrl+Super * 0 end 10 Ctrl+Super", {"activated A", "idle", "escape", "activated A"}, 1}, // no cooldown
        {"Ctrl+Super * 0 10 Ctrl+Super 10 end 0 1", {"activated A", "idle", "escape", "activated A"}, 2},
        {"Ctrl+Super 1500 0 end 200 Ctrl+Super * 0 99 Ctrl+Super", {"activated A", "completed A", "idle"}, 0},
    };
    for (const auto& each : endings) {
        SCOPED_TRACE(each.events);
        play(each.events);
        EXPECT_EQ(news(), each.told);
        EXPECT_EQ(mode(), each.mode);
        rest();
    }
}

TEST_F(Combinations, AreNoTaps)
{
    configure({shortcut("Shift", ActivationMode::doubleTap), shortcut("Ctrl", ActivationMode::doubleTap)});
    manager.start();
    const std::string typing = "Shift 80 * 20 0 120 Shift 30 * 20 0 100 Ctrl 20 * 0 100 Ctrl * Ctrl+Shift Ctrl 0 ";
    play(typing + "Ctrl 50 Ctrl+Shift 50 0 50 Ctrl 50 0 500");
    EXPECT_EQ(news(), Lines{}) << "two capitals, copy and paste";
    play("Shift 50 0 100 Shift 50 0 2000 " + typing);
    EXPECT_EQ(news(), Lines{"activated A"});
    EXPECT_EQ(mode(), 2u) << "and what is dictated goes on";
    play("Shift 0 100 Shift");
    EXPECT_EQ(news(), Lines{"completed A"});
}

TEST_F(Combinations, OfModifiersPassSmallerOnes)
{
    struct Case {
        ActivationMode mode;
        std::vector<Ending> endings;
    };
    const Lines replaced{"activated A", "idle", "escape", "activated B"};
    const Lines replacedAndEnded{"activated A", "idle", "escape", "activated B", "completed B"};
    const std::vector<Case> cases{
        {ActivationMode::automatic,
         {{"Ctrl 60 Ctrl+Alt 5 end 1 Ctrl 0 1000", replaced, 2},
          {"Ctrl 60 Ctrl+Alt 5 end 1 Ctrl 0 1000 Ctrl 60 Ctrl+Alt Ctrl 0", replacedAndEnded, 0},
          {"Ctrl 60 Ctrl+Alt 5 end 2000 Ctrl 0", replacedAndEnded, 0},
          {"Ctrl 60 Ctrl+Alt 5 Ctrl 0 5", {"activated A", "idle", "escape"}, 2}, // waits for the first one's end
          {"Alt Ctrl+Alt 0 500 Ctrl 60 Ctrl+Alt+Shift 0 500 Alt Ctrl+Alt", {"activated B", "completed B"}, 0},
          {"Alt Ctrl+Alt 0 500 Ctrl 60 0 500 Ctrl", {"activated B", "completed A"}, 0}}},
        {ActivationMode::toggle,
         {{"Ctrl 60 Ctrl+Alt 5 end 1 Ctrl 0 1000", replaced, 2},
          {"Ctrl 60 Ctrl+Alt 5 end 1 Ctrl 0 1000 Ctrl 60 Ctrl+Alt Ctrl 0", replacedAndEnded, 0}}},
        {ActivationMode::pushToTalk,
         {{"Ctrl 60 Ctrl+Alt 5 end 1", replaced, 3},
          {"Ctrl 60 Ctrl+Alt 5 end 1000 Ctrl 0", replacedAndEnded, 0},
          {"Ctrl 60 Ctrl+Alt 5 Ctrl 0 end 1000", {"activated A", "idle", "escape"}, 0}, // too short to begin
          {"Ctrl 1200 Ctrl+Alt 100 Ctrl 0", {"activated A", "completed B"}, 0}}},
    };
    for (const auto& [mode, endings] : cases) {
        configure({shortcut("Ctrl", mode), shortcut("Ctrl+Alt", mode)});
        manager.start();
        for (const auto& each : endings) {
            SCOPED_TRACE(each.events);
            play(each.events);
            EXPECT_EQ(news(), each.told);
            EXPECT_EQ(this->mode(), each.mode);
            rest();
        }
    }
}

/// The press of the hot key and the recording of the keys come through two connections.
TEST_F(Combinations, ThatAreHotKeysBeginWithTheirModifiersInWhateverOrderTheyCome)
{
    configure({shortcut("Ctrl+Alt"), shortcut("Ctrl+Alt+D")});
    manager.start();
    for (const std::string both : {"* 1 D+ ", "D+ 1 * ", "D+ 1 "}) {
        SCOPED_TRACE(both);
        play("Ctrl+Alt 100 " + both + "5 end 0 100 D- 0 1000");
        EXPECT_EQ(news(), (Lines{"activated A", "idle", "escape", "activated B"}));
        EXPECT_EQ(mode(), 2u);
        play("Ctrl+Alt 100 " + both + "100 D- 0");
        EXPECT_EQ(news(), Lines{"completed B"});
        rest();
    }
    play("D+ 1 Ctrl+Alt 1 * 997");
    EXPECT_EQ(mode(), 1u) << "the mode is still to be decided, as if nothing had come between";
    play("1");
    EXPECT_EQ(mode(), 3u);
    play("D-");
    EXPECT_EQ(news(), (Lines{"activated B", "completed B"}));
    rest();

    play("Ctrl+Alt 100 D+");
    manager.setSuspended(true);
    play("end 1");
    EXPECT_EQ(news(), (Lines{"activated A", "idle", "escape"})) << "no dictation begins on a locked screen";
}

} // namespace
