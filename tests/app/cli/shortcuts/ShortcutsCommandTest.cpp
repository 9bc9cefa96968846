#include "app/cli/shortcuts/ShortcutsCommand.h"

#include "app/cli/CommandLine.h"
#include "app/cli/ExitCode.h"
#include "app/cli/terminal/Terminal.h"
#include "core/storage/settings/PersistentAppStorage.h"
#include "models/KeyboardShortcutText.h"
#include "tests/support/FakeClock.h"
#include "tests/support/RecordedLog.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;

namespace {

class ShortcutsOnTheCommandLine : public testing::Test {
protected:
    ShortcutsOnTheCommandLine()
    {
        AIPrompt letter;
        letter.id = Uuid::random();
        letter.shortcut.id = Uuid::random();
        letter.name = "Letter";
        storage.aiPrompts.set({letter});
    }

    /// What the command says, with its exit code where that is not 0.
    std::string type(std::vector<const char*> words)
    {
        words.insert(words.begin(), {"vocalith", "shortcuts"});
        const auto command = parseCommandLine(static_cast<int>(words.size()), words.data());
        if (!command)
            return "wrong usage";
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Terminal terminal;
        const int code = ShortcutsCommand(storage, terminal).run(std::get<ShortcutsOptions>(*command));
        const auto out = testing::internal::GetCapturedStdout();
        return out + testing::internal::GetCapturedStderr() + (code == exitSuccess ? "" : "failed");
    }

    TemporaryFolder folder;
    FakeClock clock;
    RecordedLog log;
    PersistentAppStorage storage{folder / "settings.json", clock, log.logger()};
};

TEST_F(ShortcutsOnTheCommandLine, AreSetChangedAndCleared)
{
    EXPECT_EQ(type({"set", "main", "ctrl+alt+space", "--mode", "pushtotalk"}), "main: Ctrl+Alt+Space (pushToTalk)\n");
    EXPECT_EQ(type({"set", "letter", "Ctrl+Super"}), "Letter: Ctrl+Super (automatic)\n");
    EXPECT_EQ(type({"set", "main", "--mode", "doubleTap"}), "main: Ctrl+Alt+Space (doubleTap)\n");
    EXPECT_EQ(type({"clear", "letter"}), "Letter: no keys\n");
    EXPECT_EQ(type({"set", "journal", "F9"}), "journal: F9 (automatic)\n");
    EXPECT_EQ(type({}), "main     Ctrl+Alt+Space        doubleTap\n"
                        "Letter   none                  automatic\n"
                        "journal  F9                    automatic\n");
    EXPECT_EQ(storage.mainPrompt.get().shortcut.keys, parseKeys("Ctrl+Alt+Space"));
}

TEST_F(ShortcutsOnTheCommandLine, TakeModifierKeysAsTheyAreWritten)
{
    for (const std::string keys : {"Ctrl", "Alt", "Shift", "Super", "Alt+Shift", "Ctrl+Alt", "Fn"})
        EXPECT_EQ(type({"set", "main", keys.c_str()}), "main: " + keys + " (automatic)\n");
}

TEST_F(ShortcutsOnTheCommandLine, RefuseWhatTheWindowRefusesAndLeaveTheRestAsItWas)
{
    type({"set", "main", "F8"});
    const struct {
        std::vector<const char*> words;
        const char* part;
    } kCases[] = {
        {{"set", "journal", "F8"}, "already used by the app"},
        {{"set", "main", "a"}, "at least one modifier key"},
        {{"set", "main", "Escape"}, "Error: Escape cannot be a shortcut."},
        {{"set", "main", "Foo+x"}, "\"Foo+x\" are no keys"},
        {{"set", "letr", "F7"}, "Did you mean \"Letter\"?"},
        {{"set", "main"}, "Say which keys"},
        {{"clear", "poem"}, "no shortcut \"poem\""},
        {{"set", "main", "--mode", "held"}, "wrong usage"},
    };
    for (const auto& [words, part] : kCases) {
        const auto said = type(words);
        EXPECT_NE(said.find(part), std::string::npos) << part;
        EXPECT_TRUE(said.ends_with("failed") || said == "wrong usage") << said;
    }
    EXPECT_EQ(storage.mainPrompt.get().shortcut.keys, parseKeys("F8"));
    EXPECT_NE(type({"set", "main", "Alt+Tab"}).find("already used by the system"), std::string::npos);
    EXPECT_EQ(storage.mainPrompt.get().shortcut.keys, parseKeys("Alt+Tab")) << "a warning, no refusal";
}

} // namespace
