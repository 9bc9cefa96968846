#include "platform/portal/remote/PortalRemoteDesktop.h"

#include "models/ModifierFlags.h"
#include "models/VirtualKeyCode.h"
#include "platform/portal/bus/PortalConnection.h"
#include "platform/portal/remote/PortalKeyEvents.h"
#include "platform/portal/remote/PortalPasteboard.h"
#include "tests/support/FakePortal.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TimeLimit.h"

#include <gmock/gmock.h>

namespace vocalith {
namespace {

using namespace vocalith::test;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// Keys and clipboard of a program on a desktop.
struct Program {
    explicit Program(FakePortal& on, std::string restoreToken = {})
        : portals("org.vocalith.Vocalith", on.address()),
          desktop(portals, std::move(restoreToken), [this](const std::string& given) { token = given; })
    {}

    Result<void, KeyEventsError> start() { return await(desktop.start()); }
    std::string read(const std::string& type)
    {
        const auto snapshot = await(pasteboard.snapshot()).value();
        for (const auto& representation : snapshot.items.at(0).representations) {
            if (representation.type == type)
                return *representation.payload;
        }
        return "nothing";
    }

    std::string token;
    SystemClock clock;
    PortalConnection portals;
    PortalRemoteDesktop desktop;
    PortalKeyEvents keyEvents{desktop};
    PortalPasteboard pasteboard{desktop, clock};
};

TEST(PortalRemoteDesktopTest, TheUserIsAskedOnce)
{
    FakePortal desktop;
    std::string token;
    {
        Program program(desktop);
        ASSERT_TRUE(program.start());
        ASSERT_TRUE(program.start()) << "it is there already";
        EXPECT_TRUE(program.desktop.hasKeyboard());
        EXPECT_TRUE(program.desktop.hasClipboard());
        token = program.token;
    }
    EXPECT_EQ(desktop.questions(), 1);
    Program again(desktop, token);
    ASSERT_TRUE(again.start());
    EXPECT_EQ(desktop.questions(), 1);
    EXPECT_NE(again.token, token) << "each is good for one session";
    desktop.endSessions();
    runUntil([&] { return !again.desktop.hasKeyboard(); });
    EXPECT_EQ(again.keyEvents.createSource(KeyEvents::SourceState::privateState), nullptr);
    ASSERT_TRUE(again.start());
    EXPECT_EQ(desktop.questions(), 1);
}

TEST(PortalRemoteDesktopTest, WhatCannotBeIsSaidWithWhatToDo)
{
    struct Way {
        FakePortal::Desktop desktop;
        KeyEventsError::Kind kind;
        const char* message;
    };
    const std::array ways{
        Way{{.hasRemoteDesktop = false},
            KeyEventsError::Kind::unavailable,
            "Vocalith cannot press keys on this desktop. It has neither a protocol nor a portal for that."},
        Way{{.saysNo = true},
            KeyEventsError::Kind::refused,
            "The desktop does not let Vocalith press keys. Allow remote control when it asks."},
    };
    for (const auto& way : ways) {
        FakePortal desktop(way.desktop);
        Program program(desktop);
        const auto started = program.start();
        ASSERT_FALSE(started);
        EXPECT_EQ(started.error().kind, way.kind);
        EXPECT_EQ(userMessage(started.error()), way.message);
        EXPECT_EQ(program.keyEvents.createSource(KeyEvents::SourceState::privateState), nullptr);
        EXPECT_EQ(await(program.pasteboard.writeText("text", true)).error().kind, PasteboardError::Kind::unavailable);
        runUntil([&] { return desktop.openSessions() == 0; });
    }
    FakePortal withoutClipboard({.hasClipboard = false});
    Program program(withoutClipboard);
    EXPECT_TRUE(program.start());
    EXPECT_FALSE(program.desktop.hasClipboard());
}

TEST(PortalRemoteDesktopTest, AStopWithdrawsTheQuestion)
{
    FakePortal desktop({.neverAnswers = true});
    Program program(desktop);
    TaskScope scope;
    std::optional<Result<void, KeyEventsError>> result;
    scope.start(storeResult(program.desktop.start(), result));
    runUntil([&] { return desktop.count("RemoteDesktop.Start") == 1; });
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_EQ(result->error().kind, KeyEventsError::Kind::cancelled);
    runUntil([&] { return desktop.count("Request.Close") == 1 && desktop.openSessions() == 0; });
}

TEST(PortalRemoteDesktopTest, AChordIsNamedByWhatItDoesOrByItsPlace)
{
    using namespace virtual_key_code;
    const auto flag = modifier_flags::command;
    const std::vector<KeyEvent> chord{
        {command, true, flag}, {ansiV, true, flag}, {ansiV, false, flag}, {command, false, 0}};
    FakePortal desktop;
    Program program(desktop);
    ASSERT_TRUE(program.start());
    const auto smart = program.keyEvents.createSource(KeyEvents::SourceState::privateState);
    ASSERT_TRUE(smart->post(chord));
    runUntil([&] { return desktop.keys().size() == 4; });
    EXPECT_THAT(desktop.keys(), ElementsAre("keycode 29 down", "keysym 118 down", "keysym 118 up", "keycode 29 up"));

    const auto plain = program.keyEvents.createSource(KeyEvents::SourceState::hidSystem);
    ASSERT_TRUE(plain->post({{ansiV, true, flag | modifier_flags::shift}}));
    runUntil([&] { return desktop.keys().size() == 9; });
    EXPECT_THAT(std::vector(desktop.keys().begin() + 4, desktop.keys().end()),
                ElementsAre("keycode 42 down", "keycode 29 down", "keycode 47 down", "keycode 42 up", "keycode 29 up"));
}

TEST(PortalRemoteDesktopTest, TypesEveryScriptInOrder)
{
    FakePortal desktop;
    Program program(desktop);
    ASSERT_TRUE(program.start());
    const auto source = program.keyEvents.createSource(KeyEvents::SourceState::privateState);
    ASSERT_TRUE(await(source->type("aÄя世👋\r\n\t")));
    std::vector<std::string> downs;
    for (const auto& key : desktop.keys()) {
        if (key.ends_with(" down"))
            downs.push_back(key.substr(7, key.size() - 12));
    }
    EXPECT_THAT(downs, ElementsAre("97", "196", "1745", "16797206", "16905291", "65293", "65289"));
    EXPECT_EQ(desktop.keys().size(), 14U);

    TaskScope scope;
    std::optional<Result<void, KeyEventsError>> result;
    scope.start(storeResult(source->type(std::string(10'000, 'x')), result));
    runUntil([&] { return desktop.keys().size() > 30; });
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    EXPECT_EQ(result->error().kind, KeyEventsError::Kind::cancelled);
    EXPECT_LT(desktop.keys().size(), 10'000U);
}

TEST(PortalRemoteDesktopTest, AKeyThatWasRefusedIsNotBlamedOnTheNextText)
{
    FakePortal desktop({.refusedKeys = 1});
    Program program(desktop);
    ASSERT_TRUE(program.start());
    const auto source = program.keyEvents.createSource(KeyEvents::SourceState::hidSystem);
    ASSERT_TRUE(source->post({{virtual_key_code::returnKey, true, 0}, {virtual_key_code::returnKey, false, 0}}));
    runUntil([&] { return desktop.keys().size() == 1; }); // what went down, perhaps, comes up
    drainMainThread();
    EXPECT_TRUE(await(source->type("text")));
}

TEST(PortalPasteboardTest, WhatTheUserHadIsBackAfterAText)
{
    for (const bool wrapsTypes : {false, true}) {
        FakePortal desktop({.wrapsTypes = wrapsTypes});
        desktop.copy({{"image/png", std::string("\0\1\2", 3)}, {"text/html", "<b>x</b>"}});
        Program program(desktop);
        ASSERT_TRUE(program.start());
        runUntil([&] { return program.pasteboard.changeCount() == 1; });
        const auto saved = await(program.pasteboard.snapshot()).value();
        EXPECT_TRUE(saved.isComplete);

        std::vector<std::string> fetched;
        const auto subscription =
            program.pasteboard.fetched.subscribe([&](const auto& fetch) { fetched.push_back(fetch.type); });
        ASSERT_TRUE(await(program.pasteboard.writeText("Grüße", true)));
        const auto ours = program.pasteboard.changeCount();
        EXPECT_THAT(desktop.offered(), Contains("x-kde-passwordManagerHint"));
        const auto text = desktop.paste("text/plain;charset=utf-8");
        const auto none = desktop.paste("image/png");
        runUntil([&] { return text->isDone && none->isDone && !fetched.empty(); });
        EXPECT_TRUE(text->isSuccess);
        EXPECT_EQ(text->bytes, "Grüße");
        EXPECT_FALSE(none->isSuccess);
        EXPECT_THAT(fetched, ElementsAre("text/plain;charset=utf-8"));
        EXPECT_EQ(program.pasteboard.changeCount(), ours) << "what the desktop says of our own text is no news";

        ASSERT_TRUE(await(program.pasteboard.restore(saved)));
        EXPECT_THAT(desktop.offered(), ElementsAre("image/png", "text/html"));
        const auto image = desktop.paste("image/png");
        runUntil([&] { return image->isDone; });
        EXPECT_EQ(image->bytes, std::string("\0\1\2", 3));
        EXPECT_EQ(program.read("text/html"), "<b>x</b>");

        const auto before = program.pasteboard.changeCount();
        desktop.copy({{"text/plain", "theirs"}});
        runUntil([&] { return program.pasteboard.changeCount() > before; });
        EXPECT_EQ(program.read("text/plain"), "theirs");
    }
}

TEST(PortalPasteboardTest, AnOwnerThatNeverAnswersCostsHalfASecond)
{
    FakePortal desktop;
    desktop.copy({{"a", "1"}, {"b", "2"}, {"c", "3"}});
    desktop.stopAnswering();
    Program program(desktop);
    ASSERT_TRUE(program.start());
    runUntil([&] { return program.pasteboard.changeCount() == 1; });
    EXPECT_TRUE(keepsLimit(std::chrono::milliseconds(800), [&] {
        const auto saved = await(program.pasteboard.snapshot()).value();
        EXPECT_FALSE(saved.isComplete);
        EXPECT_THAT(saved.items, IsEmpty());
    }));
}

} // namespace
} // namespace vocalith
