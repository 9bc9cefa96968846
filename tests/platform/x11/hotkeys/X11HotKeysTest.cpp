#include "platform/x11/hotkeys/X11HotKeys.h"

#include "models/KeyboardShortcutText.h"
#include "models/ModifierFlags.h"
#include "tests/platform/x11/hotkeys/Keyboard.h"
#include "tests/support/FakeHotKeys.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/XDisplay.h"

#include <gtest/gtest.h>

#include <X11/X.h>

namespace {

using namespace vocalith;
using namespace vocalith::test;
using Lines = std::vector<std::string>;

constexpr auto kControl = modifier_flags::control;
constexpr auto kCommand = modifier_flags::command;
constexpr auto kShift = modifier_flags::shift;
constexpr auto kOption = modifier_flags::option;

class X11HotKeysTest : public testing::Test {
protected:
    X11HotKeysTest() { monitorStop(); }

    std::unique_ptr<X11HotKeys> open() const { return X11HotKeys::open(display.name(), log.logger()).value(); }
    /// Notes "NAME down" and "NAME up".
    HotKeys::Handler noting(const std::string& name)
    {
        return [this, name](bool isDown) { told.push_back(name + (isDown ? " down" : " up")); };
    }
    static HotKey hotKey(const std::string& keys) { return {Uuid::random(), parseKeys(keys).value(), "Dictate"}; }
    Subscription registered(const std::string& keys)
    {
        auto subscription = hotKeys->registerHotKey(hotKey(keys), noting(keys));
        EXPECT_TRUE(subscription) << keys;
        return std::move(*subscription);
    }
    /// What was told until now. Events of one connection come in order, so the last key says that all are here.
    Lines news()
    {
        keyboard.tap("F12");
        runUntil([this] { return std::exchange(hasStopped, false); });
        return std::exchange(told, {});
    }

    XDisplay display;
    RecordedLog log;
    std::unique_ptr<X11HotKeys> hotKeys = open();
    Keyboard keyboard{display.name()};
    Lines told;
    bool hasStopped = false;

private:
    void monitorStop()
    {
        m_stop = hotKeys->registerHotKey(hotKey("F12"), [this](bool isDown) { hasStopped = !isDown; }).value();
    }
    Subscription m_stop;
};

TEST_F(X11HotKeysTest, TellPressAndReleaseOnceHoweverLongAKeyRepeats)
{
    const auto space = registered("Ctrl+Alt+Space");
    int repeats = 0; // seen by another program, whose hot key it is not
    const auto other = open();
    const auto watched = other->monitorModifiers([&](const ModifierChange& change) { repeats += change.otherKeyDown; });
    ASSERT_TRUE(watched);
    keyboard.repeatEvery(20);
    keyboard.press("Ctrl+Alt+Space");
    runUntil([&] { return repeats >= 5; });
    keyboard.release("Ctrl+Alt+Space");
    EXPECT_EQ(news(), (Lines{"Ctrl+Alt+Space down", "Ctrl+Alt+Space up"}));

    for (int i = 0; i < 100; ++i)
        keyboard.tap("Ctrl+Alt+Space");
    EXPECT_EQ(news().size(), 200u);
    EXPECT_EQ(keyboard.typed(), 0) << "the window gets none of it";
}

TEST_F(X11HotKeysTest, HoldWhateverLocksAndLayoutAreOn)
{
    display.setLayout("us,de");
    const auto space = registered("Ctrl+Alt+Space");
    const auto plain = registered("F5");
    for (const unsigned locks : {0U, unsigned(LockMask), unsigned(Mod2Mask), unsigned(LockMask | Mod2Mask)}) {
        for (const unsigned group : {0U, 1U}) {
            keyboard.lock(locks);
            keyboard.lockGroup(group);
            keyboard.tap("Ctrl+Alt+Space");
            keyboard.tap("F5");
            EXPECT_EQ(news().size(), 4u) << "locks " << locks << " group " << group;
        }
    }
    keyboard.lock(0);
    keyboard.tap("Ctrl+Space");
    keyboard.tap("Ctrl+Alt+Shift+Space");
    keyboard.tap("Shift+F5");
    EXPECT_EQ(news(), Lines{}) << "but only with exactly their modifiers";
}

TEST_F(X11HotKeysTest, NameTheKeysThatAnotherProgramHas)
{
    for (const unsigned locks : {0U, unsigned(Mod2Mask)}) {
        ASSERT_TRUE(keyboard.grab("Ctrl+Alt+Space", ControlMask | Mod1Mask | locks));
        const auto wanted = hotKey("Ctrl+Alt+Space");
        const auto refused = hotKeys->registerHotKey(wanted, noting(""));
        ASSERT_FALSE(refused) << "even if it has them in one state of the locks only";
        EXPECT_EQ(refused.error().kind, HotKeyError::Kind::taken);
        EXPECT_EQ(refused.error().status, BadAccess);
        EXPECT_EQ(
            userMessage(refused.error(), wanted.keys),
            "Another program uses Ctrl+Alt+Space already. Choose other keys for the dictation, or free them there.");
        keyboard.ungrab("Ctrl+Alt+Space", ControlMask | Mod1Mask | locks);
    }
    for (const unsigned locks : {0U, unsigned(LockMask), unsigned(Mod2Mask), unsigned(LockMask | Mod2Mask)}) {
        EXPECT_TRUE(keyboard.grab("Ctrl+Alt+Space", ControlMask | Mod1Mask | locks))
            << "a failure leaves nothing taken";
        keyboard.ungrab("Ctrl+Alt+Space", ControlMask | Mod1Mask | locks);
    }
    const auto now = registered("Ctrl+Alt+Space");
    keyboard.tap("Ctrl+Alt+Space");
    EXPECT_EQ(news().size(), 2u);
    EXPECT_EQ(hotKeys->registerHotKey(hotKey("Fn+F1"), noting("")).error().kind, HotKeyError::Kind::unknownKey);
    EXPECT_EQ(hotKeys->registerHotKey(hotKey("Key700"), noting("")).error().kind, HotKeyError::Kind::unknownKey);
}

TEST_F(X11HotKeysTest, GiveTheirKeysBack)
{
    auto escape = registered("Escape");
    keyboard.tap("Escape");
    EXPECT_EQ(news(), (Lines{"Escape down", "Escape up"}));
    EXPECT_EQ(keyboard.typed(), 0);
    escape.reset();
    runUntil([&] { // the server handles the clients in its own order
        keyboard.tap("Escape");
        return keyboard.typed() > 0;
    });
    EXPECT_EQ(news(), Lines{});

    escape = registered("Escape");
    keyboard.press("Escape");
    runUntil([&] { return told == Lines{"Escape down"}; });
    escape.reset();
    keyboard.release("Escape");
    EXPECT_EQ(news(), Lines{"Escape down"}) << "a key that is given back while it is held is told no more";
    hotKeys.reset();
    keyboard.tap("Escape");
    EXPECT_GT(keyboard.typed(), 0);
}

TEST_F(X11HotKeysTest, CountAmongTheKeysThatOneOfThemSwallows)
{
    const auto space = registered("Ctrl+Alt+Space");
    const auto escape = registered("Escape");
    const auto three = registered("Alt+3");
    keyboard.press("Ctrl+Alt+Space");
    keyboard.tap("Escape"); // with Ctrl and Alt still held
    keyboard.tap("3");
    keyboard.tap("X");
    keyboard.release("Ctrl+Alt+Space");
    EXPECT_EQ(news(), (Lines{"Ctrl+Alt+Space down", "Escape down", "Escape up", "Alt+3 down", "Alt+3 up",
                             "Ctrl+Alt+Space up"}));
    keyboard.tap("Ctrl+Alt+Escape");
    EXPECT_EQ(news(), Lines{}) << "without it the modifiers count";
}

TEST_F(X11HotKeysTest, FollowTheKeyboardMap)
{
    const auto key = registered("Super+F9");
    keyboard.tap("Super+F9");
    EXPECT_EQ(news().size(), 2u);
    keyboard.moveModifier(Mod4MapIndex, Mod3MapIndex);
    runUntil([&] {
        keyboard.tap("Super+F9");
        drainMainThread();
        return !told.empty();
    });
    news();

    keyboard.press("Super+F9");
    runUntil([&] { return told.size() == 1; });
    display.setLayout("de", "dvorak"); // in the middle; it resets the modifiers too
    keyboard.release("Super+F9");
    EXPECT_EQ(news(), (Lines{"Super+F9 down", "Super+F9 up"}));
    runUntil([&] {
        keyboard.tap("Super+F9");
        drainMainThread();
        return !told.empty();
    });
}

/// "command+shift", "command *" with another key.
std::string toString(const ModifierChange& change)
{
    const KeyboardShortcut::Keys keys{change.rawFlags, std::nullopt};
    return vocalith::toString(keys) + (change.otherKeyDown ? " *" : "");
}

TEST_F(X11HotKeysTest, WatchTheModifierKeysWhoeverHasTheKeyboard)
{
    display.setLayout("de");
    constexpr unsigned char kRightAlt = 108; // AltGr on this keyboard
    constexpr unsigned char kRightShift = 62;
    keyboard.press("Shift");
    auto watched =
        hotKeys->monitorModifiers([this](const ModifierChange& change) { told.push_back(toString(change)); });
    ASSERT_TRUE(watched);
    keyboard.release("Shift");
    runUntil([this] { return told == Lines{""}; });
    told.clear();

    keyboard.grabAll();
    keyboard.press("Ctrl+Super");
    keyboard.tap("A");
    keyboard.release("Ctrl+Super");
    keyboard.tap("A");
    keyboard.changeCode(kRightAlt, true);
    keyboard.tap("Q");
    keyboard.changeCode(kRightAlt, false);
    keyboard.press("Shift");
    keyboard.changeCode(kRightShift, true);
    keyboard.release("Shift");
    keyboard.changeCode(kRightShift, false);
    keyboard.tap("Alt");
    const Lines wanted{"Ctrl", "Ctrl+Super", "Ctrl+Super *", "Ctrl", "", "Shift", "", "Alt", ""};
    runUntil([&] { return told.size() == wanted.size(); });
    EXPECT_EQ(told, wanted) << "AltGr makes characters, and one Shift of two is Shift";
    keyboard.ungrabAll();

    told.clear();
    watched->reset();
    drainMainThread();
    keyboard.tap("Ctrl");
    EXPECT_EQ(news(), Lines{});
}

TEST_F(X11HotKeysTest, TellWhatMakesACombinationOfTheModifierKeys)
{
    const auto escape = registered("Ctrl+Super+Escape");
    Lines changes;
    const auto watched =
        hotKeys->monitorModifiers([&](const ModifierChange& change) { changes.push_back(toString(change)); });
    ASSERT_TRUE(watched);
    constexpr unsigned kLeftButton = 1;
    constexpr unsigned kWheelUp = 4;
    keyboard.click(kLeftButton);
    keyboard.press("Ctrl+Super");
    keyboard.tap("Escape"); // ours
    runUntil([this] { return told == Lines{"Ctrl+Super+Escape down", "Ctrl+Super+Escape up"}; });
    keyboard.release("Ctrl+Super");
    keyboard.press("Alt");
    keyboard.click(kLeftButton);
    keyboard.click(kWheelUp);
    keyboard.tap("Escape");
    keyboard.release("Alt");
    const Lines wanted{"Ctrl", "Ctrl+Super", "Ctrl", "", "Alt", "Alt *", "Alt *", "Alt *", ""};
    runUntil([&] { return changes.size() >= wanted.size(); });
    EXPECT_EQ(changes, wanted);
}

TEST_F(X11HotKeysTest, SayThatTheServerIsGone)
{
    auto first = hotKey("Ctrl+F1");
    auto kept = hotKeys->registerHotKey(first, noting("")).value();
    const auto modifiers = hotKeys->monitorModifiers([](const ModifierChange&) {});
    std::vector<std::pair<Uuid, HotKeyError>> failures;
    const auto failed = hotKeys->failed.subscribe([&](const Uuid& id, const HotKeyError& error) {
        failures.emplace_back(id, error);
        if (id == first.shortcutID)
            kept.reset();
    });
    display.kill();
    runUntil([&] { return failures.size() == 2; });
    EXPECT_EQ(failures.back().first, first.shortcutID);
    EXPECT_EQ(failures.back().second.detail, "The connection to the X server is lost.");
    EXPECT_FALSE(hotKeys->registerHotKey(first, noting("")));
    EXPECT_FALSE(hotKeys->monitorModifiers([](const ModifierChange&) {}));
    EXPECT_FALSE(X11HotKeys::open(display.name(), log.logger()));
}

/// What holds for every implementation, the fake among them.
void expectContract(HotKeys& hotKeys, const std::function<void(bool isDown)>& changeKey)
{
    const HotKey hotKey{Uuid::random(), parseKeys("Ctrl+Alt+K").value(), "Dictate"};
    std::vector<bool> told;
    Subscription subscription;
    const auto handler = [&](bool isDown) {
        told.push_back(isDown);
        if (told.size() == 3)
            subscription.reset(); // within its own call
    };
    subscription = hotKeys.registerHotKey(hotKey, handler).value();
    changeKey(true);
    changeKey(false);
    runUntil([&] { return told.size() == 2; });
    changeKey(true);
    runUntil([&] { return told.size() == 3; });
    changeKey(false);
    subscription = hotKeys.registerHotKey(hotKey, handler).value();
    changeKey(true);
    runUntil([&] { return told.size() == 4; });
    changeKey(false);
    runUntil([&] { return told.size() == 5; });
    EXPECT_EQ(told, (std::vector<bool>{true, false, true, true, false}));

    const HotKey everybodys{Uuid::random(), parseKeys("Escape").value(), "Cancel"};
    const auto lent = hotKeys.registerHotKey(everybodys, [](bool) {});
    EXPECT_EQ(lent.has_value(), hotKeys.takesKeysOnDemand());
}

TEST_F(X11HotKeysTest, KeepTheContract)
{
    expectContract(*hotKeys,
                   [this](bool isDown) { isDown ? keyboard.press("Ctrl+Alt+K") : keyboard.release("Ctrl+Alt+K"); });
    FakeHotKeys fake;
    expectContract(fake, [&fake](bool isDown) {
        const auto keys = parseKeys("Ctrl+Alt+K").value();
        isDown ? fake.press(keys) : fake.release(keys);
    });
    auto outlives = hotKeys->registerHotKey(hotKey("Ctrl+F8"), noting("")).value();
    auto watches = hotKeys->monitorModifiers([](const ModifierChange&) {}).value();
    hotKeys.reset();
    outlives.reset();
    watches.reset();
    drainMainThread();
}

} // namespace
