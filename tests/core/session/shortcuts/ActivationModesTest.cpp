#include "tests/core/session/shortcuts/ShortcutStage.h"

#include <sstream>

using namespace vocalith;
using namespace vocalith::test;

namespace {

/// A little story: "A+" and "A-" press and release the first shortcut, "B+" the second, a number lets so many
/// milliseconds pass, "end" ends the dictation, "remote" starts one without a key.
struct Story {
    const char* name;
    ActivationMode mode;
    const char* events;
    std::vector<std::string> told;
    std::size_t finalMode; ///< 0 idle, 1 waiting for release, 2 toggle, 3 push to talk
};

constexpr auto kAutomatic = ActivationMode::automatic;
constexpr auto kToggle = ActivationMode::toggle;
constexpr auto kPushToTalk = ActivationMode::pushToTalk;
constexpr auto kDoubleTap = ActivationMode::doubleTap;

const std::vector<Story> kStories{
    {"a tap goes on until the next press", kAutomatic, "A+ 500 A- 5000 A+ A-", {"activated A", "completed A"}, 0},
    {"a tap of 999 ms is a tap", kAutomatic, "A+ 999 A-", {"activated A"}, 2},
    {"at 1 s the key is held to talk", kAutomatic, "A+ 1000", {"activated A"}, 3},
    {"a held key ends at its release", kAutomatic, "A+ 1500 A-", {"activated A", "completed A"}, 0},
    {"the timer of a tap is gone", kAutomatic, "A+ 500 A- 5000", {"activated A"}, 2},
    {"200 ms after the end nothing starts",
     kAutomatic,
     "A+ 1500 A- end 200 A+",
     {"activated A", "completed A", "idle"},
     0},
    {"299 ms after the end nothing starts",
     kAutomatic,
     "A+ 1500 A- end 299 A+",
     {"activated A", "completed A", "idle"},
     0},
    {"300 ms after the end one starts",
     kAutomatic,
     "A+ 1500 A- end 300 A+",
     {"activated A", "completed A", "idle", "activated A"},
     1},
    {"the cooldown runs since the release, however long the text took",
     kAutomatic,
     "A+ 1500 A- 250 end 50 A+",
     {"activated A", "completed A", "idle", "activated A"},
     1},
    {"a press that was ignored has no release",
     kAutomatic,
     "A+ 1500 A- end 200 A+ 200 A-",
     {"activated A", "completed A", "idle"},
     0},
    {"an end from elsewhere while the key is held", kAutomatic, "A+ 500 end 100 A- 1000", {"activated A", "idle"}, 0},
    {"after an end from elsewhere the same key starts",
     kAutomatic,
     "A+ 100 A- end 300 A+",
     {"activated A", "idle", "activated A"},
     1},
    {"a held key that nobody saw going down", kAutomatic, "A-", {}, 0},

    {"toggle, however long it is held", kToggle, "A+ 5000 A- A+ A-", {"activated A", "completed A"}, 0},
    {"toggle cools down", kToggle, "A+ A- A+ end 299 A+", {"activated A", "completed A", "idle"}, 0},
    {"toggle starts again", kToggle, "A+ A- A+ end 300 A+", {"activated A", "completed A", "idle", "activated A"}, 2},

    {"push to talk, however short", kPushToTalk, "A+ 1 A-", {"activated A", "completed A"}, 0},
    {"push to talk cools down", kPushToTalk, "A+ 1 A- end 299 A+ A-", {"activated A", "completed A", "idle"}, 0},
    {"push to talk starts again",
     kPushToTalk,
     "A+ 1 A- end 300 A+",
     {"activated A", "completed A", "idle", "activated A"},
     3},

    {"one tap is nothing", kDoubleTap, "A+ A- 5000", {}, 0},
    {"taps 400 ms apart", kDoubleTap, "A+ A- 400 A+ A-", {"activated A"}, 2},
    {"taps 401 ms apart, then one more", kDoubleTap, "A+ A- 401 A+ A- 400 A+", {"activated A"}, 2},
    {"the third of three taps is a first one", kDoubleTap, "A+ 100 A+ 100 A+ 5000", {"activated A"}, 2},
    {"two taps end it", kDoubleTap, "A+ 100 A+ 900 A+ 100 A+", {"activated A", "completed A"}, 0},
    {"the tail of a double tap",
     kDoubleTap,
     "A+ 100 A+ 900 A+ 50 A+ end 50 A+ 50 A+",
     {"activated A", "completed A", "idle"},
     0},

    {"another shortcut takes over, then ends it", kToggle, "A+ A- 500 B+ B- 500 B+", {"activated A", "completed B"}, 0},
    {"the first one takes over again", kToggle, "A+ B+ A+ A+", {"activated A", "completed A"}, 0},
    {"the release of the key that was taken over",
     kPushToTalk,
     "A+ 100 B+ 100 A- 100 B-",
     {"activated A", "completed B"},
     0},
    {"taken over before the mode was decided",
     kAutomatic,
     "A+ 100 B+ 100 A- 900 B-",
     {"activated A", "completed B"},
     0},

    {"started elsewhere, ended by any key", kToggle, "remote 2000 B+", {"completed B"}, 0},
    {"started elsewhere, ended by a tap", kAutomatic, "remote 2000 A+ A-", {"completed A"}, 0},
    {"started elsewhere, ended elsewhere", kAutomatic, "remote 2000 end 300 A+", {"activated A"}, 1},
};

class ActivationModes : public ShortcutStage {
protected:
    void play(const std::string& events)
    {
        const auto shortcuts = storage.additionalShortcuts.get();
        std::istringstream stream(events);
        for (std::string event; stream >> event;) {
            if (event == "end")
                manager.dictationEnded();
            else if (event == "remote")
                manager.dictationStarted(Uuid::random());
            else if (event[0] == 'A' || event[0] == 'B')
                manager.handleShortcutChange(event[1] == '+', shortcuts[event[0] == 'A' ? 0 : 1]);
            else
                clock.advance(std::chrono::milliseconds(std::stoi(event)));
        }
    }
};

TEST_F(ActivationModes, StartAndEndAtTheirBoundaries)
{
    for (const auto& story : kStories) {
        SCOPED_TRACE(std::string(story.name) + ": " + story.events);
        configure({shortcut("Ctrl+F1", story.mode), shortcut("Ctrl+F2", story.mode)});
        play(story.events);
        EXPECT_EQ(news(), story.told);
        EXPECT_EQ(mode(), story.finalMode);
        manager.dictationEnded();
        clock.advance(std::chrono::seconds(10));
        EXPECT_EQ(clock.pendingTimers(), 0u);
        news();
    }
}

TEST_F(ActivationModes, SayWhatTheyDecide)
{
    configure({shortcut("Ctrl+F1"), shortcut("Ctrl+F2")});
    play("A+ 500 A- 100 B+ 100 B+ 100 A+ B- end 5000 A+ 1000 A-");
    const auto shortcuts = storage.additionalShortcuts.get();
    for (const std::string& line :
         {std::string("🔽 Key released, invalidating timer"),
          std::string("📏 Release duration: 0.500s (threshold: 1.0s)"),
          std::string("⚡ Quick release: waitingForRelease → toggleActive"),
          "🔄 Switching completion shortcut from " + shortcuts[0].id.toString() + " to " + shortcuts[1].id.toString(),
          std::string("toggleActive → completed (same key pressed again)"),
          std::string("Cooldown active until 2026-03-01T12:00:01.000Z"),
          std::string("❓ Key released in unexpected state: idle"),
          std::string("⏰ Timer fired: waitingForRelease → pushToTalkActive"),
          std::string("🎤 pushToTalkActive → completed")})
        EXPECT_TRUE(log.has(line)) << line;
}

/// The timer and the release race for the same instant; whoever wins, the dictation ends.
TEST_F(ActivationModes, EndAtASlowReleaseThatOvertakesTheTimer)
{
    configure({shortcut("Ctrl+F1")});
    const auto racer = clock.after(KeyboardShortcutManager::modeDetectionInterval, [this] { play("A-"); });
    play("A+ 1000");
    EXPECT_EQ(news(), (std::vector<std::string>{"activated A", "completed A"}));
    EXPECT_TRUE(log.has("🐌 Slow release: waitingForRelease → completed"));
    EXPECT_EQ(clock.pendingTimers(), 0u);
}

TEST_F(ActivationModes, WithstandAHundredPressesInASecond)
{
    for (const auto mode : {kAutomatic, kToggle, kPushToTalk, kDoubleTap}) {
        configure({shortcut("Ctrl+F1", mode)});
        bool isRunning = false;
        int starts = 0;
        const auto counted = notifier.state.subscribe([&](const KeyboardActivationState& state) {
            if (std::holds_alternative<keyboard_activation::Activated>(state)) {
                EXPECT_FALSE(std::exchange(isRunning, true)) << "a start follows an end";
                ++starts;
            } else if (std::holds_alternative<keyboard_activation::Completed>(state)) {
                EXPECT_TRUE(std::exchange(isRunning, false)) << "an end follows a start";
                manager.dictationEnded();
            }
        });
        for (int i = 0; i < 100; ++i)
            play("A+ 4 A- 6");
        EXPECT_GE(starts, 3);
        EXPECT_LE(starts, 4) << "one in 300 ms at most";
        manager.dictationEnded();
        clock.advance(std::chrono::seconds(1));
    }
}

TEST_F(ActivationModes, DoNotCareWhetherTheClockIsSetBack)
{
    configure({shortcut("Ctrl+F1")});
    play("A+ 1500 A- end");
    clock.setDate(clock.now() - std::chrono::hours(1));
    play("300 A+");
    EXPECT_EQ(mode(), 1u);
}

/// A dictation that is none must not keep the user's Return.
TEST_F(ActivationModes, RecoverFromAStartThatIsRefused)
{
    configure({shortcut("Ctrl+F1")});
    refuses = true;
    play("A+ 500 A- 500 A+");
    EXPECT_EQ(news(), (std::vector<std::string>{"activated A", "idle", "activated A", "idle"}));
    EXPECT_EQ(mode(), 0u);
    EXPECT_TRUE(hotKeys.asked().empty());
    EXPECT_EQ(clock.pendingTimers(), 0u);

    refuses = false;
    play("A- 500 A+ 1500 A- 500");
    refuses = true; // it is still being processed
    play("A+ A-");
    EXPECT_EQ(news(), (std::vector<std::string>{"activated A", "completed A", "activated A", "idle"}));
    EXPECT_EQ(hotKeys.count(), 1u) << "Escape still cancels the first one";
    play("end");
    refuses = false;
    play("A+");
    EXPECT_EQ(mode(), 1u) << "what was refused has nothing to cool down from";
}

TEST_F(ActivationModes, FollowWhatTheCommandLinePublishes)
{
    configure({shortcut("Ctrl+F1")});
    const auto id = Uuid::random();
    notifier.state.set(keyboard_activation::Activated{id});
    EXPECT_EQ(mode(), 2u);
    play("A+ A-");
    EXPECT_EQ(news(), (std::vector<std::string>{"activated ?", "completed A"}));
    play("end 300 A+ 100 A-");
    notifier.state.set(keyboard_activation::Completed{id});
    EXPECT_EQ(mode(), 0u);
    play("end 300 A+");
    EXPECT_EQ(mode(), 1u) << "the next press starts";

    play("end 300");
    news();
    refuses = true;
    const auto first = storage.additionalShortcuts.get()[0].id;
    notifier.state.set(keyboard_activation::Activated{first});
    EXPECT_EQ(mode(), 0u);
    refuses = false;
    play("A+");
    EXPECT_EQ(news(), (std::vector<std::string>{"activated A", "idle", "activated A"}))
        << "told although it is the same";
}

} // namespace
