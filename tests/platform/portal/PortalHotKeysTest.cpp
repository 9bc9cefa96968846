#include "platform/portal/shortcuts/PortalHotKeys.h"

#include "models/KeyboardShortcutText.h"
#include "platform/portal/bus/PortalConnection.h"
#include "tests/support/FakePortal.h"
#include "tests/support/MainLoop.h"
#include "tests/support/RecordedLog.h"

#include <gmock/gmock.h>

namespace vocalith {
namespace {

using namespace vocalith::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

HotKey hotKey(const std::string& keys, const std::string& description = "Dictate")
{
    return {Uuid::random(), parseKeys(keys).value(), description};
}

/// The shortcuts of a program on a desktop.
struct Program {
    explicit Program(FakePortal& on) : desktop(on), portals("org.vocalith.Vocalith", on.address())
    {
        onFailed = hotKeys.failed.subscribe(
            [this](const Uuid& id, const HotKeyError& error) { failures.emplace_back(id, error); });
    }
    ~Program()
    {
        tasks.requestStop();
        await(tasks.untilEmpty());
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    Subscription add(const HotKey& key)
    {
        auto added = hotKeys.registerHotKey(
            key, [this, name = key.description](bool isDown) { heard.push_back(name + (isDown ? " down" : " up")); });
        EXPECT_TRUE(added);
        return std::move(added).value();
    }
    void waitUntilBound(std::size_t count)
    {
        runUntil([&] { return hotKeys.triggers().size() == count; });
    }

    FakePortal& desktop;
    TaskScope tasks;
    PortalConnection portals;
    RecordedLog log;
    PortalHotKeys hotKeys{portals, tasks, log.logger()};
    std::vector<std::string> heard;
    std::vector<std::pair<Uuid, HotKeyError>> failures;
    Subscription onFailed;
};

TEST(PortalHotKeysTest, OneQuestionForAllShortcutsThenPressAndRelease)
{
    FakePortal desktop;
    Program program(desktop);
    const auto dictate = hotKey("Ctrl+Alt+Space");
    const auto translate = hotKey("Super+Shift+A", "Translate");
    const auto first = program.add(dictate);
    const auto second = program.add(translate);
    program.waitUntilBound(2);
    const auto id = dictate.shortcutID.toString();
    EXPECT_EQ(desktop.count("GlobalShortcuts.BindShortcuts"), 1);
    EXPECT_EQ(desktop.applicationID(), "org.vocalith.Vocalith");
    EXPECT_EQ(desktop.calls().front(), "Registry.Register") << "later it would be refused";
    EXPECT_THAT(desktop.shortcuts(),
                ElementsAre(FakePortal::Shortcut{id, "Dictate", "CTRL+ALT+space"},
                            FakePortal::Shortcut{translate.shortcutID.toString(), "Translate", "SHIFT+LOGO+a"}));
    desktop.press(id);
    desktop.press(id); // as some desktops do while it is held
    desktop.release(id);
    desktop.release(id);
    desktop.press(translate.shortcutID.toString());
    runUntil([&] { return program.heard.size() >= 3; });
    EXPECT_THAT(program.heard, ElementsAre("Dictate down", "Dictate up", "Translate down"));

    EXPECT_EQ(program.hotKeys.triggers().at(dictate.shortcutID), "Press CTRL+ALT+space");
    desktop.chooseTrigger(id, "F9");
    runUntil([&] { return program.hotKeys.triggers().at(dictate.shortcutID) == "Press F9"; });
    EXPECT_THAT(program.failures, IsEmpty());
}

TEST(PortalHotKeysTest, AsksAgainOnlyForNewShortcuts)
{
    FakePortal desktop;
    Program program(desktop);
    const auto dictate = hotKey("Ctrl+Alt+Space");
    auto subscription = program.add(dictate);
    program.waitUntilBound(1);
    subscription.reset(); // as when the settings are read again
    subscription = program.add(dictate);
    drainMainThread();
    EXPECT_EQ(desktop.count("GlobalShortcuts.BindShortcuts"), 1);
    desktop.press(dictate.shortcutID.toString());
    desktop.release(dictate.shortcutID.toString());
    runUntil([&] { return program.heard.size() == 2; });

    const auto more = program.add(hotKey("F9", "More"));
    program.waitUntilBound(2);
    EXPECT_EQ(desktop.count("GlobalShortcuts.BindShortcuts"), 2);
    EXPECT_EQ(desktop.openSessions(), 1) << "the session before it is closed";
    subscription.reset();
    desktop.press(dictate.shortcutID.toString());
    desktop.press(desktop.shortcuts().back().id);
    runUntil([&] { return program.heard.size() == 3; });
    EXPECT_THAT(program.heard, ElementsAre("Dictate down", "Dictate up", "More down"));
}

TEST(PortalHotKeysTest, AKeyThatIsHeldWhileTheSessionIsMadeAnewIsReleased)
{
    FakePortal desktop;
    Program program(desktop);
    const auto dictate = hotKey("Ctrl+Alt+Space");
    const auto id = dictate.shortcutID.toString();
    const auto subscription = program.add(dictate);
    program.waitUntilBound(1);
    desktop.press(id);
    runUntil([&] { return program.heard.size() == 1; });
    const auto more = program.add(hotKey("F9", "More"));
    program.waitUntilBound(2);
    EXPECT_THAT(program.heard, ElementsAre("Dictate down", "Dictate up"));
    desktop.press(id);
    runUntil([&] { return program.heard.size() == 3; });
    EXPECT_EQ(program.heard.back(), "Dictate down");
    EXPECT_THAT(program.failures, IsEmpty());
}

TEST(PortalHotKeysTest, AnEventWithoutAUsableIdentityIsLogged)
{
    FakePortal desktop;
    Program program(desktop);
    const auto subscription = program.add(hotKey("Ctrl+Alt+Space"));
    program.waitUntilBound(1);
    desktop.press("dictate");
    EXPECT_TRUE(runUntil([&] { return program.log.has("Failed to get event parameter (status="); }));
    EXPECT_THAT(program.heard, IsEmpty());
}

TEST(PortalHotKeysTest, ASessionThatEndsReleasesTheKeyAndIsTold)
{
    for (const bool isCrash : {false, true}) {
        FakePortal desktop;
        Program program(desktop);
        const auto dictate = hotKey("Ctrl+Alt+Space");
        const auto subscription = program.add(dictate);
        program.waitUntilBound(1);
        desktop.press(dictate.shortcutID.toString());
        runUntil([&] { return program.heard.size() == 1; });
        if (isCrash)
            desktop.leaveBus();
        else
            desktop.endSessions();
        runUntil([&] { return !program.failures.empty(); });
        EXPECT_THAT(program.heard, ElementsAre("Dictate down", "Dictate up"));
        EXPECT_EQ(program.failures[0].first, dictate.shortcutID);
        EXPECT_EQ(program.failures[0].second.kind, HotKeyError::Kind::failed);
    }
}

struct Way {
    const char* name;
    FakePortal::Desktop desktop;
    HotKeyError::Kind kind;
    const char* message;
};

TEST(PortalHotKeysTest, WhatCannotBeIsSaidWithWhatToDo)
{
    const std::array ways{
        Way{"no such portal",
            {.hasShortcuts = false},
            HotKeyError::Kind::unsupported,
            "Ctrl+Alt+Space cannot be used everywhere on this desktop. It has no portal for shortcuts. Bind the "
            "command "
            "`vocalith toggle`, or `vocalith start` and `vocalith stop`, to keys in the settings of your desktop "
            "instead."},
        Way{"declined",
            {.saysNo = true},
            HotKeyError::Kind::failed,
            "The shortcut Ctrl+Alt+Space could not be set up: the question about it was declined. Bind the command "
            "`vocalith toggle`, or `vocalith start` and `vocalith stop`, to keys in the settings of your desktop "
            "instead."},
        Way{"unknown to it",
            {.hasRegistry = false, .insistsOnIdentifier = true},
            HotKeyError::Kind::failed,
            "The shortcut Ctrl+Alt+Space could not be set up: An app id is required. Bind the command `vocalith "
            "toggle`, or `vocalith start` and `vocalith stop`, to keys in the settings of your desktop instead."},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.name);
        FakePortal desktop(way.desktop);
        Program program(desktop);
        const auto key = hotKey("Ctrl+Alt+Space");
        const auto subscription = program.add(key);
        runUntil([&] { return !program.failures.empty(); });
        EXPECT_THAT(program.failures, SizeIs(1));
        EXPECT_EQ(program.failures[0].second.kind, way.kind);
        EXPECT_EQ(userMessage(program.failures[0].second, key.keys), way.message);
    }
}

TEST(PortalHotKeysTest, WorksWithPortalsOfEveryAge)
{
    const std::array desktops{
        FakePortal::Desktop{.hasRegistry = false},
        FakePortal::Desktop{.insistsOnIdentifier = true},
    };
    for (const auto& how : desktops) {
        FakePortal desktop(how);
        Program program(desktop);
        const auto dictate = hotKey("Ctrl+Alt+Space");
        const auto subscription = program.add(dictate);
        program.waitUntilBound(1);
        desktop.press(dictate.shortcutID.toString());
        runUntil([&] { return program.heard.size() == 1; });
    }
}

TEST(PortalHotKeysTest, KeysThatAllProgramsNeedAreRefused)
{
    FakePortal desktop;
    Program program(desktop);
    for (const auto* keys : {"Escape", "Return", "Shift+A", "Ctrl+Super"}) {
        const auto refused = program.hotKeys.registerHotKey(hotKey(keys), [](bool) {});
        ASSERT_FALSE(refused) << keys;
        EXPECT_EQ(refused.error().kind, HotKeyError::Kind::unsupported);
    }
    EXPECT_FALSE(program.hotKeys.takesKeysOnDemand()) << "each dictation would be a question";
    EXPECT_FALSE(program.hotKeys.monitorModifiers([](const auto&) {}));
    drainMainThread();
    EXPECT_THAT(desktop.calls(), Not(Contains("GlobalShortcuts.CreateSession")));
}

TEST(PortalHotKeysTest, AnUnansweredQuestionIsWithdrawnAtTheEnd)
{
    FakePortal desktop({.neverAnswers = true});
    {
        Program program(desktop);
        const auto subscription = program.add(hotKey("Ctrl+Alt+Space"));
        runUntil([&] { return desktop.count("GlobalShortcuts.BindShortcuts") == 1; });
        program.tasks.requestStop();
        await(program.tasks.untilEmpty());
        EXPECT_THAT(program.failures, IsEmpty());
    }
    runUntil([&] { return desktop.openSessions() == 0 && desktop.count("Request.Close") == 1; });
}

TEST(PortalHotKeysTest, SaysWhichPortalsThereAre)
{
    FakePortal some({.hasClipboard = false});
    PortalConnection portals("org.vocalith.Vocalith", some.address());
    EXPECT_EQ(await(portals.offer()), (PortalOffer{1, 1, 0}));
    some.leaveBus();
    EXPECT_EQ(await(portals.offer()), PortalOffer());
    PortalConnection nowhere("org.vocalith.Vocalith", "unix:path=/nonexistent/bus");
    EXPECT_FALSE(nowhere.isConnected());
    EXPECT_EQ(await(nowhere.offer()), PortalOffer());
}

} // namespace
} // namespace vocalith
