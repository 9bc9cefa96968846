#include "tests/app/ui/OverlayStage.h"

#include "core/session/TranscriptionSessionManager.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTranslator>

using namespace vocalith;
using namespace vocalith::test;
using namespace std::chrono_literals;

namespace {

using State = OverlayModel::State;
using Indicator = ProcessingIndicator::State;
using dictation_outcome::Delivered;
using dictation_outcome::Failed;

TEST(OverlayModelTest, FollowsADictation)
{
    OverlayStage stage;
    EXPECT_FALSE(stage.model.isVisible());
    stage.record();
    EXPECT_TRUE(stage.model.isVisible());
    EXPECT_EQ(stage.model.promptName(), QStringLiteral("Dictate"));
    for (const auto& [indicator, state] :
         {std::pair{Indicator::starting, State::recording}, std::pair{Indicator::transcribing, State::transcribing},
          std::pair{Indicator::processing, State::processing}, std::pair{Indicator::speaking, State::speaking}}) {
        stage.model.showIndicator(indicator);
        EXPECT_EQ(stage.model.state(), state);
    }
    stage.state.textEvent = {.final = "Good", .temporary = "morning"};
    stage.model.show(stage.state);
    EXPECT_EQ(stage.model.text() + stage.model.temporaryText(), QStringLiteral("Goodmorning"));
    EXPECT_EQ(stage.model.state(), State::speaking) << "a text says nothing about the state";
    stage.end(dictation_outcome::EndedEarly{});
    EXPECT_FALSE(stage.model.isVisible());
}

TEST(OverlayModelTest, WritesTimesAsPeopleDo)
{
    OverlayStage stage;
    for (const auto& [seconds, text] : {std::pair{0.0, "0:00"}, std::pair{9.9, "0:09"}, std::pair{61.0, "1:01"},
                                        std::pair{3599.0, "59:59"}, std::pair{3725.0, "1:02:05"}}) {
        stage.elapsedTime.set(seconds);
        EXPECT_EQ(stage.model.elapsed(), QString::fromLatin1(text));
    }
}

struct End {
    DictationOutcome outcome;
    State state;
    QString message;
    QString inDetail;
    std::chrono::milliseconds readable; ///< it must stay for so long
    std::chrono::milliseconds gone;     ///< and no longer than that
};

TEST(OverlayModelTest, ToldFailuresStayUntilTheyCanBeRead)
{
    Failed engine{.message = "Failed to recognize text", .detail = "The model is damaged. Install it again."};
    engine.historyEntry = Uuid::random();
    Failed withText = engine;
    withText.historyHasText = true;
    Failed file{.message = "The disk is full"};
    file.recording = "/tmp/a.wav";
    const std::vector<End> ends = {
        {engine, State::error, "Failed to recognize text", "Install it again. The recording is in the history", 4s,
         12s},
        {withText, State::error, "Failed to recognize text", "Your words are in the history.", 4s, 12s},
        {file, State::error, "The disk is full", "/tmp/a.wav", 4s, 12s},
        {Failed{.message = "No speech detected", .noSpeech = true}, State::error, "No speech detected",
         "microphone is chosen and not muted", 4s, 12s},
        {dictation_outcome::TooShort{0.3}, State::hint, "That was too short", "Speak before", 2s, 4s},
        {Delivered{{}, "text", TextDestination::clipboard}, State::hint, "Copied to the clipboard", "Paste it", 2s, 4s},
        {Delivered{{}, "text", TextDestination::nowhere}, State::hint, "Kept in the history", "", 2s, 4s}};
    for (const auto& end : ends) {
        OverlayStage stage;
        int flickers = 0;
        stage.record();
        QObject::connect(&stage.model, &OverlayModel::visibleChanged, [&] { ++flickers; });
        stage.end(end.outcome);
        EXPECT_EQ(stage.model.state(), end.state);
        EXPECT_EQ(stage.model.message(), end.message);
        EXPECT_TRUE(stage.model.detail().contains(end.inDetail)) << stage.model.detail().toStdString();
        stage.clock.advance(end.readable);
        EXPECT_TRUE(stage.model.isVisible());
        EXPECT_EQ(flickers, 0);
        stage.clock.advance(end.gone - end.readable);
        EXPECT_FALSE(stage.model.isVisible());
    }
}

/// Knows two sentences.
class GermanTranslator final : public QTranslator {
public:
    GermanTranslator() { QCoreApplication::installTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (std::string_view(context) != "Vocalith")
            return {};
        if (std::string_view(text) == userMessage(SessionError{SessionError::Kind::noSpeech, {}}))
            return QStringLiteral("Keine Sprache erkannt");
        return std::string_view(text) == "Your words are on the clipboard."
                   ? QStringLiteral("Der Text ist in der Zwischenablage.")
                   : QString();
    }
};

TEST(OverlayModelTest, FailuresAreToldInTheLanguageOfTheInterface)
{
    const GermanTranslator german;
    OverlayStage stage;
    stage.record();
    stage.end(Failed{.message = "No speech detected", .detail = "Your words are on the clipboard."});
    EXPECT_EQ(stage.model.message(), QStringLiteral("Keine Sprache erkannt"));
    EXPECT_EQ(stage.model.detail(), QStringLiteral("Der Text ist in der Zwischenablage."));
    stage.end(Failed{.message = "Größe: 5 µm", .detail = "as it is"});
    EXPECT_EQ(stage.model.message(), QStringLiteral("Größe: 5 µm")) << "a sentence that nobody has translated";
    EXPECT_EQ(stage.model.detail(), QStringLiteral("as it is"));
}

TEST(OverlayModelTest, ANewDictationTakesThePlaceOfAnOldFailure)
{
    OverlayStage stage;
    stage.record();
    stage.elapsedTime.set(12);
    stage.end(Failed{.message = "Failed to recognize text"});
    stage.record();
    EXPECT_EQ(stage.model.state(), State::recording);
    EXPECT_EQ(stage.model.message(), QString());
    EXPECT_EQ(stage.model.elapsed(), QStringLiteral("0:00"));
    stage.clock.advance(20s);
    EXPECT_TRUE(stage.model.isVisible()) << "the old failure's time is over, the dictation is not";
}

TEST(OverlayModelTest, NoticesThatNobodyElseShowsWaitForTheirTurn)
{
    OverlayStage stage;
    stage.model.showNotice("The settings could not be read. The defaults are used.");
    EXPECT_TRUE(stage.model.isVisible());
    EXPECT_EQ(stage.model.message(), QStringLiteral("The settings could not be read."));
    EXPECT_EQ(stage.model.detail(), QStringLiteral("The defaults are used."));
    stage.record();
    stage.model.showNotice("The application did not take the text.");
    EXPECT_EQ(stage.model.state(), State::recording) << "a notice does not disturb a dictation";
    stage.end(Delivered{});
    EXPECT_EQ(stage.model.message(), QStringLiteral("The application did not take the text."));
    EXPECT_TRUE(stage.model.isVisible());
    stage.clock.advance(12s);
    EXPECT_FALSE(stage.model.isVisible());
}

TEST(OverlayModelTest, QuestionsAreShownUntilTheyAreAnswered)
{
    OverlayStage stage;
    stage.record();
    stage.model.showQuestion({2, 3, "Which branch?"});
    EXPECT_EQ(stage.model.questionTitle(), QStringLiteral("Question 2/3"));
    EXPECT_EQ(stage.model.question(), QStringLiteral("Which branch?"));
    stage.end(dictation_outcome::EndedEarly{});
    stage.record();
    EXPECT_EQ(stage.model.question(), QString());

    AIConversation conversation;
    conversation.messages = {{Uuid::random(), AIMessageRole::assistant, "Shall I go on?", {}},
                             {Uuid::random(), AIMessageRole::user, "Tell me more", {}}};
    stage.state.conversation = conversation;
    stage.model.show(stage.state);
    EXPECT_EQ(stage.model.question(), QStringLiteral("Shall I go on?"));
}

TEST(OverlayModelTest, ListensToTheMeterOnlyWhileItRecords)
{
    OverlayStage stage;
    int drawn = 0;
    QObject::connect(&stage.model, &OverlayModel::levelsChanged, [&] { ++drawn; });
    stage.hear(0.3F);
    EXPECT_EQ(drawn, 0);
    stage.record();
    drawn = 0;
    stage.hear(0.4F);
    EXPECT_EQ(drawn, 1);
    EXPECT_FLOAT_EQ(stage.model.levels().back(), 0.41F);
    stage.model.showIndicator(Indicator::transcribing);
    stage.hear(0.5F);
    stage.end(dictation_outcome::Cancelled{});
    stage.hear(0.6F);
    EXPECT_EQ(drawn, 1);
    EXPECT_EQ(stage.clock.pendingTimers(), 0U);
}

} // namespace
