#include "core/storage/settings/PersistentAppStorage.h"
#include "tests/app/desktop/ResidentProgram.h"
#include "tests/support/MainLoop.h"
#include "tests/support/TextEditor.h"
#include "tests/support/XDisplay.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
namespace fs = std::filesystem;

namespace {

constexpr const char* kSentence = "hello world";

/// What the user has set up to be done with a text, in the program as it runs.
class SpokenRules : public testing::Test {
protected:
    XDisplay m_display{XDisplay::Options{.hasWindowManager = true, .hasAccessibility = true}};
};

TEST_F(SpokenRules, ReplacementsAndScriptsHaveWorkedOnWhatStandsAtTheCaret)
{
    ResidentProgram program(m_display.environment(), [](PersistentAppStorage& storage) {
        storage.wordReplacements.set({{Uuid::random(), "hello", "price: $5,", false, WordReplacementTiming::beforeAI},
                                      {Uuid::random(), "(PRICE)", "$1 ($5)", true, WordReplacementTiming::afterAI}});
        auto prompt = storage.mainPrompt.get();
        prompt.preAIPromptScript = "cat; echo; echo from the script";
        storage.mainPrompt.set(prompt);
    });
    program.start();
    const TextEditor editor(m_display, TextEditor::Kind::mousepad);
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    EXPECT_EQ(program.command({"stop"}), "") << program.log();
    std::string text;
    const auto isDelivered = [&] { // at first it is there as recognised, then as the steps before the AI have left it
        text = program.lastText();
        return text.find("price ($5): $5,") != std::string::npos && text.ends_with("\nfrom the script");
    };
    EXPECT_TRUE(runUntil(isDelivered)) << text;
    editor.expectText(text + " ");
    program.terminate();
}

TEST_F(SpokenRules, ACommandIsCarriedOutInPlaceOfBeingTyped)
{
    const TemporaryFolder folder;
    ResidentProgram program(m_display.environment(), [](PersistentAppStorage& storage) {
        storage.enableQuickCommands.set(true);
        storage.quickCommands.set(
            {{Uuid::random(), {"hello"}, quick_command_action::RunShortcut{"leave a note"}, true}});
    });
    const auto automation = program.home() / "shortcuts" / "leave a note.sh";
    const auto note = folder / "note";
    fs::create_directories(automation.parent_path());
    writeFile(automation, "#!/bin/sh\necho done > " + note.string() + "\n");
    fs::permissions(automation, fs::perms::owner_all);
    program.start();
    const TextEditor editor(m_display, TextEditor::Kind::mousepad, "as it was");
    EXPECT_EQ(program.command({"start"}), "");
    program.speak(kSentence);
    EXPECT_EQ(program.command({"stop"}), "") << program.log();
    EXPECT_TRUE(runUntil([&] { return fs::exists(note) && readFile(note) == "done\n"; })) << program.log();
    EXPECT_NE(program.lastText().find("hello"), std::string::npos) << "the words are in the history all the same";
    EXPECT_NE(program.command({"cancel"}).find("No dictation is running."), std::string::npos);
    editor.expectText("as it was");
    program.terminate();
}

} // namespace
