#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/app/desktop/ResidentProgram.h"
#include "tests/support/MainLoop.h"
#include "tests/support/SessionBus.h"
#include "tests/support/StatusTray.h"
#include "tests/support/SwayCompositor.h"
#include "tests/support/TextEditor.h"
#include "tests/support/XDisplay.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

constexpr const char* kSentence = "hello world";
constexpr const char* kPrecious = "what the user had copied before";

/// A user at an X desktop.
struct XDesktop {
    XDisplay display{XDisplay::Options{.hasWindowManager = true, .hasAccessibility = true}};
    ChildProcess clipboardOwner;

    /// Another program has put that on the clipboard.
    void copy(const std::string& text)
    {
        const auto file = display.folder() / "copied";
        writeFile(file, text);
        clipboardOwner = display.start({"xclip", "-quiet", "-selection", "clipboard", "-in", file.string()});
        runUntil([&] { return clipboard() == text; });
    }

    std::string clipboard() const
    {
        const auto output = display.folder() / "clipboard";
        ChildProcess({"xclip", "-selection", "clipboard", "-out"}, display.environment(), output).wait();
        return readFile(output);
    }

    void holdShortcut() const { display.run({"xdotool", "keydown", "ctrl", "keydown", "alt", "keydown", "space"}); }

    void letGo() const { display.run({"xdotool", "keyup", "space", "keyup", "alt", "keyup", "ctrl"}); }
};

class Desktop : public testing::TestWithParam<TextEditor::Kind> {};

TEST_P(Desktop, WhatIsSpokenWhileTheShortcutIsHeldStandsAtTheCaret)
{
    XDesktop desktop;
    ResidentProgram program(desktop.display.environment());
    program.start();
    const TextEditor editor(desktop.display, GetParam());
    const auto focused = desktop.display.focusedClass();
    desktop.copy(kPrecious);

    desktop.holdShortcut();
    program.speak(kSentence);
    EXPECT_EQ(desktop.display.focusedClass(), focused) << "the overlay took the focus";
    desktop.letGo();
    const auto first = program.lastText();
    EXPECT_NE(first.find("hello"), std::string::npos) << first;
    editor.expectText(first + " ");
    EXPECT_TRUE(runUntil([&] { return desktop.clipboard() == kPrecious; })) << desktop.clipboard();

    // Another one right behind it, by command.
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    EXPECT_EQ(program.command({"stop"}), "") << program.log();
    const auto second = program.lastText(2);
    editor.expectText(first + " " + second + " ");
    program.terminate();
}

INSTANTIATE_TEST_SUITE_P(Editors, Desktop, testing::Values(TextEditor::Kind::mousepad, TextEditor::Kind::featherpad),
                         [](const auto& editor) { return nameOf(editor.param); });

TEST(DesktopProgram, TheReturnThatEndsADictationIsOursAndTheOneThatSendsItsTextIsNot)
{
    const XDesktop desktop;
    ResidentProgram program(desktop.display.environment(), [](PersistentAppStorage& storage) {
        auto prompt = storage.mainPrompt.get();
        prompt.mode = ActionMode::pasteAndSend;
        storage.mainPrompt.set(prompt);
    });
    program.start();
    const TextEditor editor(desktop.display, TextEditor::Kind::mousepad);
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    desktop.display.press("Return");
    editor.expectText(program.lastText() + " \n");
    program.terminate();
}

TEST(DesktopProgram, EscapeThrowsADictationAwayAndBelongsToTheOthersOtherwise)
{
    const XDesktop desktop;
    ResidentProgram program(desktop.display.environment());
    program.start();
    const TextEditor editor(desktop.display, TextEditor::Kind::mousepad, "as it was");
    desktop.holdShortcut();
    program.speak(kSentence);
    desktop.display.press("Escape");
    EXPECT_TRUE(runUntil([&] { return program.audio.recordings() == 0; }));
    desktop.letGo();
    EXPECT_NE(program.command({"cancel"}).find("No dictation is running."), std::string::npos);
    editor.expectText("as it was");
    program.terminate();
}

TEST(DesktopProgram, IsEndedInTheMiddleAndTheRecordingIsInTheHistory)
{
    const XDesktop desktop;
    ResidentProgram program(desktop.display.environment());
    program.start();
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    program.terminate();
    const auto history = program.command({"history", "list"});
    EXPECT_NE(history.find("Failed: Vocalith was ended"), std::string::npos) << history << program.log();
    EXPECT_EQ(program.audio.recordings(), 0);
}

TEST(DesktopProgram, ASecondStartBringsTheFirstOneForward)
{
    const XDesktop desktop;
    ResidentProgram program(desktop.display.environment());
    program.start();
    EXPECT_NE(program.command({"run"}).find("is running already"), std::string::npos);
    EXPECT_TRUE(runUntil([&] { return desktop.display.focusedClass() == "vocalith"; }));
    program.terminate();
}

TEST(DesktopProgram, HasAMenuAmongTheStatusIcons)
{
    const XDesktop desktop;
    const StatusTray tray(desktop.display.busAddress());
    ResidentProgram program(desktop.display.environment());
    program.start();
    runUntil([&] { return tray.icons() == 1; });
    EXPECT_FALSE(tray.isEnabled("Last Text Again")) << "there is none yet";
    const TextEditor editor(desktop.display, TextEditor::Kind::mousepad);
    tray.click("Start Dictation");
    program.speak(kSentence);
    tray.click("Stop Dictation");
    const auto text = program.lastText();
    editor.expectText(text + " ");
    EXPECT_TRUE(runUntil([&] { return tray.isEnabled("Last Text Again"); }));
    tray.click("Last Text Again");
    editor.expectText(text + " " + text);
    EXPECT_NE(program.command({"run"}).find("is running already"), std::string::npos);
    EXPECT_EQ(tray.icons(), 1u) << "a second one showed itself";
    tray.click("Quit");
    EXPECT_TRUE(runUntil([&] { return !tray.menu(); }));
}

TEST(DesktopProgram, OnWaylandTheTextIsPastedAndSentWithoutAnyWindowOfOurs)
{
    const SwayCompositor compositor;
    const SessionBus bus;
    const auto environment = changed(compositor.environment(), {"DBUS_SESSION_BUS_ADDRESS=" + bus.address()});
    ResidentProgram program(environment, [](PersistentAppStorage& storage) {
        auto prompt = storage.mainPrompt.get();
        prompt.mode = ActionMode::pasteAndSend;
        storage.mainPrompt.set(prompt);
    });
    const auto report = program.command({"doctor"});
    EXPECT_NE(report.find("limited  Global shortcuts"), std::string::npos) << "its own key bindings serve: " << report;
    EXPECT_EQ(report.find("\nmissing"), std::string::npos) << report;
    program.start();
    const auto terminal = compositor.startTerminal();
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    EXPECT_EQ(program.command({"stop"}), "");
    const auto text = program.lastText();
    EXPECT_TRUE(runUntil([&] { return compositor.typed() == text + " \n"; })) << compositor.typed() << program.log();
    EXPECT_EQ(program.log().find("The shortcut is Return"), std::string::npos)
        << "keys that nobody could lend were asked for";
    program.terminate();
}

} // namespace
