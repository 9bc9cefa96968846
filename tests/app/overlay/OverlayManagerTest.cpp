#include "tests/app/overlay/DictationStage.h"

#include <gtest/gtest.h>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;
using Indicator = ProcessingIndicator::State;

namespace {

class Dictation : public testing::Test {
protected:
    Dictation() { stage.loadConfiguration(); }

    void dictate(std::chrono::milliseconds length)
    {
        stage.press(stage.journalShortcut);
        stage.speak(length);
        stage.release(stage.journalShortcut);
        stage.waitForOutcome();
    }

    template <class Outcome>
    const Outcome* outcome() const
    {
        return std::get_if<Outcome>(&stage.display.outcomes.back());
    }

    DictationStage stage;
};

TEST_F(Dictation, RunsFromTheShortcutToTheDeliveredText)
{
    stage.engine.text = " hello world\n";
    dictate(2s);
    ASSERT_TRUE(outcome<dictation_outcome::Delivered>());
    EXPECT_EQ(stage.output.delivered, std::vector<std::string>{"hello world "});
    EXPECT_EQ(stage.display.indicators, (std::vector{Indicator::starting, Indicator::transcribing,
                                                     Indicator::transcribing, Indicator::processing}));
    EXPECT_FALSE(stage.display.isVisible());
    EXPECT_EQ(stage.engine.starts, 1) << "the model is loaded while the user speaks";
    EXPECT_EQ(stage.overlay.lastSuccessfulActivationMode(), OverlayActivationMode(VoiceJournal{}));
    EXPECT_EQ(stage.input.aliveStreams(), 0u);
    EXPECT_EQ(stage.clock.pendingTimers(), 0u);
}

TEST_F(Dictation, AMinimumRecordingIsLongerThanHalfASecond)
{
    dictate(500ms);
    EXPECT_TRUE(outcome<dictation_outcome::TooShort>());
    EXPECT_EQ(stage.sounds.played, 0);
    EXPECT_EQ(stage.sounds.restored, 1);
    EXPECT_EQ(stage.recordingsOnDisk(), 0u);

    stage.release(Uuid{}); // so that the state changes again
    dictate(510ms);
    EXPECT_TRUE(outcome<dictation_outcome::Delivered>());
    EXPECT_EQ(stage.sounds.played, 1);
}

TEST_F(Dictation, AnEndSoundThatCannotBePlayedCostsOnlyTheSound)
{
    stage.sounds.error = "no such device";
    dictate(1s);
    EXPECT_TRUE(outcome<dictation_outcome::Delivered>());
    EXPECT_TRUE(stage.log.has("🔊 Could not play boop sound: no such device"));
}

TEST_F(Dictation, WithoutTextItFailsAndKeepsTheRecording)
{
    for (const std::string text : {"", " \n\t ", "\u00A0\u3000"}) {
        stage.engine.text = text;
        stage.release(Uuid{});
        dictate(1s);
        const auto* failed = outcome<dictation_outcome::Failed>();
        ASSERT_TRUE(failed);
        EXPECT_EQ(failed->message, "No speech detected");
        EXPECT_TRUE(failed->recording && std::filesystem::exists(*failed->recording));
    }
    EXPECT_TRUE(stage.output.delivered.empty());
}

TEST_F(Dictation, OnlyOneRunsAtATime)
{
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    stage.press(stage.promptShortcut);
    EXPECT_TRUE(stage.log.has("Already recording"));

    stage.engine.holdsTranscription = true;
    stage.release(stage.journalShortcut);
    drainMainThread();
    const auto before = stage.input.requests().size();
    stage.press(stage.promptShortcut);
    EXPECT_TRUE(stage.log.has("Overlay manager will ignore shortcut state update, already processing recorging"));
    EXPECT_EQ(stage.input.requests().size(), before);
    stage.escape();
    stage.waitForOutcome();
}

TEST_F(Dictation, IgnoresShortcutsThatItDoesNotKnow)
{
    const Uuid unknown = Uuid::random();
    stage.press(unknown);
    EXPECT_TRUE(stage.log.has("Invalid shortcut id: " + unknown.toString()));
    EXPECT_FALSE(stage.overlay.isShowingOverlay());
}

TEST(DictationWithoutConfiguration, DoesNotStart)
{
    DictationStage stage;
    stage.press(stage.journalShortcut);
    EXPECT_TRUE(stage.log.has("Configuration not loaded"));
    EXPECT_EQ(stage.analytics.names(), std::vector<std::string>{"overlay_config_not_loaded"});
    EXPECT_TRUE(stage.input.requests().empty());
}

TEST_F(Dictation, EscapeReturnsToIdleFromEveryStateAndInsertsNothing)
{
    const std::vector<std::function<void()>> states = {
        [this] { // the audio server has not answered yet
            stage.input.holdOpens();
            stage.press(stage.journalShortcut);
        },
        [this] { // recording, the model still loads
            stage.engine.holdsStart = true;
            stage.press(stage.journalShortcut);
            stage.speak(1s);
        },
        [this] { // transcribing
            stage.engine.holdsStart = false;
            stage.engine.holdsTranscription = true;
            stage.press(stage.journalShortcut);
            stage.speak(1s);
            stage.release(stage.journalShortcut);
            drainMainThread();
        },
        [this] { // the pipeline runs
            stage.engine.holdsTranscription = false;
            stage.output.holds = true;
            stage.press(stage.journalShortcut);
            stage.speak(1s);
            stage.release(stage.journalShortcut);
            runUntil([this] { return stage.output.asked > 0; });
        },
    };
    for (const auto& reach : states) {
        reach();
        EXPECT_TRUE(stage.overlay.isShowingOverlay());
        stage.escape();
        stage.escape(); // an impatient second one changes nothing
        stage.waitForOutcome();
        EXPECT_TRUE(outcome<dictation_outcome::Cancelled>());
        EXPECT_FALSE(stage.overlay.isShowingOverlay());
        EXPECT_EQ(stage.recordingsOnDisk(), 0u);
        EXPECT_EQ(stage.input.aliveStreams(), 0u);
        stage.input.releaseOpens();
        stage.release(Uuid{});
    }
    EXPECT_TRUE(stage.output.delivered.empty());
    stage.output.holds = false;
    dictate(1s);
    EXPECT_TRUE(outcome<dictation_outcome::Delivered>());
}

TEST_F(Dictation, AnEngineThatFailsKeepsTheWordsOnDisk)
{
    stage.engine.transcribeError = TranscriptionError{TranscriptionError::Kind::decodeFailed, "-7"};
    dictate(2s);
    const auto* failed = outcome<dictation_outcome::Failed>();
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->message, "Failed to recognize text");
    EXPECT_EQ(failed->detail, "Whisper error code -7");
    EXPECT_TRUE(failed->recording && std::filesystem::exists(*failed->recording));
    EXPECT_EQ(stage.analytics.names(), std::vector<std::string>{"overlay_transcription_error"});
}

TEST_F(Dictation, AModelThatCannotBeLoadedEndsTheRecordingAtOnce)
{
    stage.engine.factoryError = TranscriptionError{TranscriptionError::Kind::modelNotFound, "tiny"};
    stage.press(stage.journalShortcut);
    stage.waitForOutcome();
    const auto* failed = outcome<dictation_outcome::Failed>();
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->detail, "Model not found: tiny");
    EXPECT_FALSE(failed->recording) << "nothing was said yet";
    EXPECT_EQ(stage.recordingsOnDisk(), 0u);
}

TEST_F(Dictation, AMicrophoneThatCannotBeOpenedSaysWhy)
{
    stage.input.setError(AudioInputError{AudioInputError::Kind::permissionDenied, "refused"});
    stage.press(stage.journalShortcut);
    stage.waitForOutcome();
    const auto* failed = outcome<dictation_outcome::Failed>();
    ASSERT_TRUE(failed);
    EXPECT_NE(failed->message.find("Allow microphone access"), std::string::npos);
    EXPECT_EQ(stage.analytics.names(), std::vector<std::string>{"overlay_error_mic_permission"});
    EXPECT_EQ(stage.recordingsOnDisk(), 0u);
}

TEST_F(Dictation, AMicrophoneThatGoesAwayEndsItNormallyWithANotice)
{
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    stage.input.capture()->fail({AudioInputError::Kind::deviceLost, "unplugged"});
    stage.waitForOutcome();
    EXPECT_TRUE(outcome<dictation_outcome::Delivered>());
    EXPECT_EQ(stage.notices.shown.size(), 1u);
    EXPECT_EQ(stage.output.delivered.size(), 1u);
}

TEST_F(Dictation, AMicrophoneThatGoesAwayAtOnceIsAFailureAndNoShortTap)
{
    stage.press(stage.journalShortcut);
    stage.speak(100ms);
    stage.input.capture()->fail({AudioInputError::Kind::deviceLost, "unplugged"});
    stage.waitForOutcome();
    const auto* failed = outcome<dictation_outcome::Failed>();
    ASSERT_TRUE(failed);
    EXPECT_NE(failed->message.find("disconnected"), std::string::npos);
    EXPECT_TRUE(stage.notices.shown.empty()) << "one sentence is enough";
    EXPECT_TRUE(failed->recording && std::filesystem::exists(*failed->recording)) << "the sentence says so";
}

TEST_F(Dictation, TheRecordingCanBeRecoveredUntilItsTextIsDelivered)
{
    stage.engine.holdsTranscription = true;
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    stage.release(stage.journalShortcut);
    runUntil([this] { return !stage.engine.transcribed.empty(); });
    const auto info = stage.storage.crashRecoveryInfo.get();
    ASSERT_TRUE(info) << "killed now, the words would be gone";
    EXPECT_TRUE(std::filesystem::exists(info->recordingFilePath));
    stage.escape();
    stage.waitForOutcome();
    EXPECT_FALSE(stage.storage.crashRecoveryInfo.get());
}

TEST_F(Dictation, TextThatNoOutputTakesIsHandedToTheDisplayAndTheRecordingKept)
{
    stage.output.error = TextOutputError{"The pipe is closed.", ""};
    dictate(1s);
    const auto* failed = outcome<dictation_outcome::Failed>();
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->text, "hello world ");
    EXPECT_TRUE(failed->recording && std::filesystem::exists(*failed->recording));
}

TEST(DictationWithAPrompt, ThePromptsModelComesBeforeTheDefaultOne)
{
    DictationStage stage;
    stage.prompt.transcriptionModelID = TranscriptionModelID(std::string("my-model"));
    stage.loadConfiguration();
    for (const auto& shortcut : {stage.promptShortcut, stage.journalShortcut}) {
        stage.press(shortcut);
        stage.speak(1s);
        stage.release(shortcut);
        stage.waitForOutcome();
    }
    EXPECT_EQ(stage.engine.madeFor,
              (std::vector<TranscriptionModelID>{std::string("my-model"), PredefinedModelID::tiny}));
    EXPECT_TRUE(stage.log.has("Starting transcription with default model: tiny"));
}

TEST_F(Dictation, TextEventsOfTheEngineReachTheOverlayWhileItIsUp)
{
    stage.press(stage.journalShortcut);
    stage.speak(1s);
    ASSERT_TRUE(stage.engine.textEvents);
    TranscriptionState state;
    state.temporary = "hel";
    stage.engine.textEvents->emit(state);
    ASSERT_TRUE(stage.display.isVisible());
    EXPECT_EQ(std::get<OverlayState>(stage.display.states.back()).textEvent.temporary, "hel");
    stage.escape();
    stage.waitForOutcome();
}

} // namespace
