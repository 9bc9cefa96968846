#include "tests/platform/x11/insertion/X11Desk.h"

#include "models/ModifierFlags.h"
#include "tests/support/FakeClock.h"
#include "tests/support/TimeLimit.h"

#include <algorithm>
#include <array>
#include <csignal>

namespace {

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Kind = TextEditor::Kind;
using Reader = PasteboardFetch::Reader;

constexpr auto kCommand = modifier_flags::command;
constexpr auto kTerminal = modifier_flags::command | modifier_flags::shift;

PasteboardSnapshot::Payload bytes(std::string value)
{
    return std::make_shared<const std::string>(std::move(value));
}

/// Every byte value, in an order that no chance gives.
std::string noise(std::size_t size)
{
    std::string value(size, '\0');
    std::uint32_t state = 2463534242;
    for (auto& byte : value) {
        state ^= state << 13U;
        state ^= state >> 17U;
        state ^= state << 5U;
        byte = static_cast<char>(state);
    }
    return value;
}

double seconds(Duration duration)
{
    return std::chrono::duration<double>(duration).count();
}

TEST(X11Paste, IsExactAndLeavesTheClipboardAsItWas)
{
    const std::string text = "Grüße — 日本 🎉, \"quoted\"\nand a second line";
    for (const auto kind : {Kind::mousepad, Kind::featherpad, Kind::xterm}) {
        SCOPED_TRACE(nameOf(kind));
        X11Desk desk;
        // The user has copied something with formatting and a picture.
        const auto connection = desk.connect();
        X11Pasteboard application(*connection, desk.clock, {});
        const auto picture = noise(300'000);
        const PasteboardSnapshot copied{{{{{"text/html", bytes("<b>bold</b>")},
                                           {"UTF8_STRING", bytes("bold")},
                                           {"image/png", bytes(picture)},
                                           {"text/uri-list", bytes("")}}}}};
        EXPECT_TRUE(await(application.restore(copied)));
        const TextEditor editor(desk.display, kind);

        desk.paste(kind == Kind::xterm ? "Grüße — 日本" : text, kind == Kind::xterm ? kTerminal : kCommand);
        editor.expectText(kind == Kind::xterm ? "Grüße — 日本" : text);

        EXPECT_EQ(desk.read("text/html"), "<b>bold</b>");
        EXPECT_EQ(desk.read("UTF8_STRING"), "bold");
        EXPECT_EQ(desk.read("image/png"), picture);
        EXPECT_EQ(desk.read("text/uri-list"), "");
        // The text itself is nowhere any more, and what was put back can be taken up again.
        const auto primary = desk.display.run({"/bin/sh", "-c", "xclip -selection primary -o -t TARGETS || true"});
        EXPECT_EQ(primary, "");
        const auto again = await(desk.clipboard.snapshot());
        ASSERT_EQ(again->items.size(), 1);
        EXPECT_EQ(again->items[0].representations.size(), 4);
    }
}

TEST(X11Paste, ATerminalThatPastesTheSelectionNeverGetsSomebodyElses)
{
    X11Desk desk;
    desk.display.run({"/bin/sh", "-c", "printf 'rm precious' | xclip -selection primary -i"});
    const TextEditor terminal(desk.display, Kind::xterm);
    desk.postPaste(kTerminal);
    desk.write("text"); // without a snapshot, as the second of two texts in a row
    desk.postPaste(kTerminal);
    runUntil([&] { return desk.wasFetchedByFocus(); });
    terminal.expectText("text");
    ASSERT_TRUE(await(desk.clipboard.restore({})));
    EXPECT_EQ(desk.display.run({"xclip", "-selection", "primary", "-o"}), "rm precious");
}

TEST(X11Paste, WhereNothingHasTheFocusNobodyHasTakenThePaste)
{
    X11Desk desk;
    XSetInputFocus(desk.forQuestions->display(), None, RevertToNone, CurrentTime);
    XSync(desk.forQuestions->display(), False);
    desk.write("text");
    EXPECT_EQ(desk.read("UTF8_STRING"), "text"); // by a clipboard manager, say
    ASSERT_FALSE(desk.fetches.empty());
    EXPECT_EQ(desk.fetches.back().reader, Reader::other);
}

/// What a clipboard manager does when it is asked to save all.
Task<void> takeOver(X11Connection& connection, X11Pasteboard& clipboard, XSelectionRequestEvent request)
{
    const auto all = co_await clipboard.snapshot();
    const auto taken = co_await clipboard.restore(all.value());
    EXPECT_TRUE(taken);
    XEvent done{};
    done.xselection.type = SelectionNotify;
    done.xselection.requestor = request.requestor;
    done.xselection.selection = request.selection;
    done.xselection.target = request.target;
    done.xselection.property = request.property;
    done.xselection.time = request.time;
    XSendEvent(connection.display(), request.requestor, False, NoEventMask, &done);
    XFlush(connection.display());
}

TEST(X11Paste, WhatTheProgramOwnsIsHandedToTheClipboardManagerAtItsEnd)
{
    X11Desk desk;
    const auto keeper = desk.connect();
    const auto manager = keeper->atom("CLIPBOARD_MANAGER");
    X11Pasteboard kept(*keeper, desk.clock, {});
    TaskScope keeping;
    const auto onRequest = keeper->event.subscribe([&](const XEvent& event) {
        if (event.type == SelectionRequest && event.xselectionrequest.selection == manager)
            keeping.start(takeOver(*keeper, kept, event.xselectionrequest));
    });

    auto ours = desk.connect();
    auto clipboard = std::make_unique<X11Pasteboard>(*ours, desk.clock, Logger());
    ASSERT_TRUE(await(clipboard->writeText("what was dictated", false)));
    await(clipboard->handOver()); // there is none yet
    const auto window = XCreateSimpleWindow(keeper->display(), keeper->root(), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(keeper->display(), manager, window, keeper->serverTime());
    XSync(keeper->display(), False);
    await(clipboard->handOver());
    clipboard.reset();
    ours.reset();
    EXPECT_EQ(desk.read("UTF8_STRING"), "what was dictated");
}

TEST(X11Paste, FiftyMegabytesComeBack)
{
    X11Desk desk;
    const auto big = noise(50'000'000);
    const auto file = desk.display.folder() / "big";
    writeFile(file, big);
    desk.display.run({"xclip", "-selection", "clipboard", "-t", "image/png", "-i", file.string()});
    const auto connection = desk.connect();
    FakeClock clock; // its patience with the owner does not end on a busy machine
    X11Pasteboard clipboard(*connection, clock, {});
    const auto start = desk.clock.instant();
    const auto before = await(clipboard.snapshot());
    std::printf("50 MB read in %.2f s\n", seconds(desk.clock.instant() - start));
    ASSERT_TRUE(before);
    EXPECT_TRUE(before->isComplete);
    desk.write("short");
    ASSERT_TRUE(await(clipboard.restore(*before)));

    // While a program takes them, everybody else on the event loop still has their turn.
    const auto out = desk.display.folder() / "out";
    auto reader = desk.display.start(
        {"/bin/sh", "-c",
         "xclip -selection clipboard -o -t image/png > " + out.string() + "; touch " + out.string() + ".done"});
    int turns = 0;
    runUntil([&] {
        ++turns;
        return std::filesystem::exists(out.string() + ".done");
    });
    EXPECT_GT(turns, 30);
    EXPECT_TRUE(readFile(out) == big);
}

TEST(X11Paste, ASilentOwnerCostsHalfASecond)
{
    X11Desk desk;
    const auto silent = desk.connect(); // nobody answers for its window
    const auto window = XCreateSimpleWindow(silent->display(), silent->root(), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(silent->display(), silent->atom("CLIPBOARD"), window, silent->serverTime());
    XSync(silent->display(), False);

    EXPECT_TRUE(keepsLimit(600ms, [&] {
        const auto snapshot = await(desk.clipboard.snapshot());
        EXPECT_TRUE(snapshot && !snapshot->isComplete);
    }));

    // Nor does it hold up anything afterwards.
    desk.write("new");
    EXPECT_EQ(desk.read("UTF8_STRING"), "new");
}

TEST(X11Paste, SaysWhoHasRead)
{
    X11Desk desk;
    const TextEditor editor(desk.display, Kind::mousepad);
    desk.write("secret text", true);
    EXPECT_EQ(desk.read("UTF8_STRING"), "secret text");
    EXPECT_EQ(desk.read("x-kde-passwordManagerHint"), "secret");
    EXPECT_NE(desk.read("TARGETS").find("org.nspasteboard.TransientType"), std::string::npos);
    for (const auto& fetch : desk.fetches)
        EXPECT_EQ(fetch.reader, Reader::other) << fetch.type;
    EXPECT_FALSE(desk.fetches.empty());

    // An application that hangs does not fetch, and that can be seen; when it comes round, it does.
    editor.signal(SIGSTOP);
    desk.postPaste(kCommand);
    await(sleepFor(desk.clock, std::chrono::milliseconds(300)));
    EXPECT_FALSE(desk.wasFetchedByFocus());
    editor.signal(SIGCONT);
    EXPECT_TRUE(runUntil([&] { return desk.wasFetchedByFocus(); }));
    editor.expectText("secret text");

    // What is put back is not what was written, so nobody is told of its readers.
    EXPECT_TRUE(await(desk.clipboard.restore({{{{{"STRING", bytes("old")}}}}})));
    desk.fetches.clear();
    EXPECT_EQ(desk.read("STRING"), "old");
    EXPECT_TRUE(desk.fetches.empty());
}

TEST(X11Paste, CountsEachChangeOnce)
{
    X11Desk desk;
    auto& clipboard = desk.clipboard;
    desk.write("one");
    const auto own = clipboard.changeCount();
    EXPECT_EQ(desk.read("UTF8_STRING"), "one"); // by now its echo has come
    drainMainThread();
    EXPECT_EQ(clipboard.changeCount(), own);

    desk.display.run({"/bin/sh", "-c", "printf two | xclip -selection clipboard -i"});
    EXPECT_TRUE(runUntil([&] { return clipboard.changeCount() == own + 1; }));
    // A change that was made before ours, and of which we are told only now, does not count on top of it.
    const auto other = desk.connect();
    const auto window = XCreateSimpleWindow(other->display(), other->root(), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(other->display(), other->atom("CLIPBOARD"), window, CurrentTime);
    XSync(other->display(), False);
    desk.write("four");
    const auto last = clipboard.changeCount();
    EXPECT_EQ(desk.read("UTF8_STRING"), "four");
    drainMainThread();
    EXPECT_EQ(clipboard.changeCount(), last);

    EXPECT_TRUE(await(clipboard.restore({})));
    const auto empty = await(clipboard.snapshot());
    EXPECT_TRUE(empty->items.empty());
    EXPECT_TRUE(empty->isComplete);
    EXPECT_EQ(clipboard.changeCount(), last + 1);
}

TEST(X11Paste, AStopEndsAReading)
{
    X11Desk desk;
    const auto silent = desk.connect();
    const auto window = XCreateSimpleWindow(silent->display(), silent->root(), 0, 0, 1, 1, 0, 0, 0);
    XSetSelectionOwner(silent->display(), silent->atom("CLIPBOARD"), window, silent->serverTime());
    XSync(silent->display(), False);
    const auto connection = desk.connect();
    FakeClock clock; // so that nothing but the stop can end it
    X11Pasteboard clipboard(*connection, clock, {});
    std::optional<Result<PasteboardSnapshot, PasteboardError>> result;
    TaskScope scope;
    scope.start(storeResult(clipboard.snapshot(), result));
    scope.requestStop();
    runUntil([&] { return scope.isEmpty(); });
    ASSERT_FALSE(*result);
    EXPECT_EQ(result->error().kind, PasteboardError::Kind::cancelled);
}

TEST(X11Paste, WithoutAServerEverythingFailsAndNothingHangs)
{
    X11Desk desk;
    const auto source = desk.keys.createSource(KeyEvents::SourceState::hidSystem);
    desk.display.kill();
    runUntil([&] { return desk.forClipboard->isLost() && desk.forKeys->isLost() && desk.forQuestions->isLost(); });
    EXPECT_EQ(await(desk.clipboard.writeText("text", false)).error().kind, PasteboardError::Kind::unavailable);
    EXPECT_EQ(await(desk.clipboard.snapshot()).error().kind, PasteboardError::Kind::unavailable);
    EXPECT_EQ(await(desk.clipboard.restore({})).error().kind, PasteboardError::Kind::unavailable);
    EXPECT_FALSE(source->post({{9, true, kCommand}}));
    EXPECT_FALSE(await(source->type("text")));
    EXPECT_EQ(desk.keys.createSource(KeyEvents::SourceState::hidSystem), nullptr);
    EXPECT_FALSE(await(desk.focus.focused()));
    EXPECT_FALSE(desk.layouts.current());
    EXPECT_FALSE(desk.layouts.select("us"));
}

} // namespace
