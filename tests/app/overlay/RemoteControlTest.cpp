#include "app/overlay/RemoteControl.h"

#include "tests/app/overlay/DictationStage.h"
#include "tests/support/FakeScreenLock.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Action = InstanceRequest::Action;

namespace {

AIPrompt promptNamed(const std::string& name)
{
    AIPrompt prompt;
    prompt.id = Uuid::random();
    prompt.name = name;
    return prompt;
}

class Remote : public testing::Test {
protected:
    Remote()
    {
        stage.numberedPrompts = {promptNamed("Clean up"), promptNamed("Letter")};
        stage.numberedPrompts[1].transcriptionModelID = PredefinedModelID::base;
        stage.loadConfiguration();
    }

    std::string ask(Action action, const std::string& argument = {})
    {
        const auto done = remote.carryOut({action, argument});
        return done ? "done" : done.error();
    }

    DictationStage stage;
    int presented = 0;
    FakeScreenLock screenLock;
    RemoteControl remote{stage.notifier, stage.overlay, stage.configuration, screenLock, [this] { ++presented; }};
};

TEST_F(Remote, DrivesOneDictationAfterTheOther)
{
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(ask(Action::start), "done");
        EXPECT_NE(ask(Action::start).find("running already"), std::string::npos);
        stage.speak(2s);
        EXPECT_EQ(ask(Action::stop), "done");
        EXPECT_NE(ask(Action::start).find("still being written down"), std::string::npos);
        EXPECT_TRUE(std::holds_alternative<dictation_outcome::Delivered>(stage.waitForOutcome()));
    }
    EXPECT_EQ(ask(Action::stop), "No dictation is running.");
    EXPECT_EQ(ask(Action::cancel), "No dictation is running.");

    EXPECT_EQ(ask(Action::toggle), "done");
    stage.speak(2s);
    EXPECT_EQ(ask(Action::cancel), "done");
    EXPECT_TRUE(std::holds_alternative<dictation_outcome::Cancelled>(stage.waitForOutcome()));
    EXPECT_EQ(stage.output.delivered.size(), 2u);
}

TEST_F(Remote, BeginsNothingWhileTheScreenIsLocked)
{
    screenLock.isLocked.set(true);
    const std::string refusal = "The screen is locked. Unlock it, then start the dictation again.";
    EXPECT_EQ(ask(Action::start), refusal);
    EXPECT_EQ(ask(Action::toggle), refusal);
    EXPECT_EQ(ask(Action::open, "vocalith://startSession"), refusal);
    EXPECT_EQ(stage.overlay.phase.get(), DictationPhase::idle);
    EXPECT_EQ(stage.input.captures().size(), 0u) << "the microphone was opened";

    screenLock.isLocked.set(false);
    EXPECT_EQ(ask(Action::toggle), "done");
    stage.speak(2s);
    screenLock.isLocked.set(true);
    EXPECT_EQ(ask(Action::toggle), "done") << "what runs can be ended";
    stage.waitForOutcome();
}

TEST_F(Remote, EndsWhatAShortcutHasStarted)
{
    stage.press(stage.promptShortcut);
    stage.speak(2s);
    EXPECT_EQ(ask(Action::toggle), "done");
    EXPECT_TRUE(std::holds_alternative<dictation_outcome::Delivered>(stage.waitForOutcome()));
}

TEST_F(Remote, ChoosesAPromptByItsName)
{
    EXPECT_EQ(ask(Action::start, "Poem"), R"(There is no prompt "Poem". There are: "Clean up", "Letter".)");
    EXPECT_EQ(ask(Action::start, "letter"), "done");
    ASSERT_FALSE(stage.display.prompts.empty());
    EXPECT_EQ(stage.display.prompts.back().name, "Letter");
    EXPECT_EQ(stage.engine.madeFor, std::vector{TranscriptionModelID(PredefinedModelID::base)});
    ask(Action::cancel);
    stage.waitForOutcome();
}

TEST_F(Remote, OpensLinksAndComesForward)
{
    EXPECT_EQ(ask(Action::present), "done");
    EXPECT_EQ(ask(Action::open, "vocalith://"), "done");
    EXPECT_EQ(presented, 2);
    EXPECT_NE(ask(Action::open, "vocalith://transcribeFile").find("vocalith transcribe"), std::string::npos);
    EXPECT_NE(ask(Action::open, "https://example.org").find("does not know"), std::string::npos);
    EXPECT_EQ(ask(Action::open, "VOCALITH://startsession"), "done");
    EXPECT_EQ(stage.overlay.phase.get(), DictationPhase::recording);
    ask(Action::cancel);
    stage.waitForOutcome();
}

TEST_F(Remote, ANumberChoosesAnotherPromptWhileTheUserSpeaks)
{
    stage.overlay.choosePrompt(1);
    EXPECT_TRUE(stage.display.prompts.empty()) << "nothing runs that it could be for";

    ask(Action::start);
    stage.speak(1s);
    std::ranges::reverse(stage.numberedPrompts);
    stage.loadConfiguration(); // the settings have changed; what the overlay shows has not
    for (const int number : {0, 3, 99, -1, 2})
        stage.overlay.choosePrompt(number);
    EXPECT_EQ(stage.display.prompts.back().name, "Letter");
    EXPECT_EQ(stage.display.prompts.size(), 2u);
    stage.speak(1s);
    stage.notifier.returnTriggered.emit();
    EXPECT_TRUE(std::holds_alternative<dictation_outcome::Delivered>(stage.waitForOutcome()));
    EXPECT_EQ(stage.engine.madeFor.back(), TranscriptionModelID(PredefinedModelID::base))
        << "the prompt's own model writes down all of it";
    EXPECT_EQ(stage.overlay.lastSuccessfulActivationMode(), OverlayActivationMode(stage.numberedPrompts[0]));
}

} // namespace
