#include "app/ui/overlay/OverlayModel.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ranges>
#include <utility>

namespace vocalith {
namespace {

using namespace std::chrono_literals;

/// Seventeen pictures a second are enough for bars, and cost half of what one for each reading does.
constexpr int kReadingsForAPicture = 2;
constexpr Duration kHintTime = 2500ms;
constexpr Duration kLeastReadingTime = 4s;
constexpr Duration kMostReadingTime = 12s;
constexpr Duration kReadingTimePerCharacter = 55ms;

QString translated(const char* text)
{
    return QCoreApplication::translate("Vocalith", text);
}

/// A sentence that comes from elsewhere, where it is marked for translation.
QString translated(const std::string& text)
{
    return translated(text.c_str());
}

Duration readingTime(qsizetype characters)
{
    return std::min<Duration>(kLeastReadingTime + kReadingTimePerCharacter * characters, kMostReadingTime);
}

QString detailOf(const dictation_outcome::Failed& failed)
{
    QStringList sentences;
    if (!failed.detail.empty())
        sentences += translated(failed.detail);
    else if (failed.noSpeech)
        sentences += translated("Check that the right microphone is chosen and not muted.");
    if (failed.historyHasText)
        sentences += translated("Your words are in the history.");
    else if (failed.historyEntry)
        sentences += translated("The recording is in the history and can be tried again there.");
    else if (failed.recording)
        sentences +=
            translated("The recording was kept as %1.").arg(QString::fromStdString(failed.recording->string()));
    return sentences.join(QLatin1Char(' '));
}

std::optional<TextDestination> destinationOf(const DictationOutcome& outcome)
{
    const auto* delivered = std::get_if<dictation_outcome::Delivered>(&outcome);
    return delivered ? delivered->destination : std::nullopt;
}

/// What the model asks or answers last.
QString lastAnswer(const AIConversation& conversation)
{
    for (const auto& message : std::views::reverse(conversation.messages)) {
        const auto* text = std::get_if<std::string>(&message.content);
        if (text && message.role == AIMessageRole::assistant)
            return QString::fromStdString(*text);
    }
    return {};
}

} // namespace

OverlayModel::OverlayModel(Observable<std::vector<float>>& levels, Observable<double>& elapsedTime, Clock& clock)
    : m_levelSource(levels), m_clock(clock), m_levels(levels.get().size())
{
    m_elapsedSubscription = elapsedTime.subscribe([this](double seconds) {
        m_elapsedSeconds = static_cast<int>(seconds);
        Q_EMIT elapsedChanged();
    });
}

void OverlayModel::begin()
{
    m_isDictating = true;
    m_hiding.reset();
    m_state = State::recording;
    m_progress = 0;
    m_elapsedSeconds = 0;
    m_message.clear();
    m_detail.clear();
    std::ranges::fill(m_levels, 0.0F);
    m_skippedReadings = 0;
    m_levelSubscription = m_levelSource.subscribe([this](const std::vector<float>& levels) {
        m_levels = levels;
        if (++m_skippedReadings < kReadingsForAPicture)
            return;
        m_skippedReadings = 0;
        Q_EMIT levelsChanged();
    });
    Q_EMIT elapsedChanged();
    Q_EMIT levelsChanged();
}

void OverlayModel::show(const OverlayVisibilityState& state)
{
    const auto* visible = std::get_if<OverlayState>(&state);
    if (!visible)
        return hideSoon();
    if (!m_isDictating)
        begin();
    m_text = QString::fromStdString(visible->textEvent.final.value_or(std::string()));
    m_temporaryText = QString::fromStdString(visible->textEvent.temporary.value_or(std::string()));
    m_isLoading = visible->textEvent.isLoading;
    if (visible->conversation)
        m_question = lastAnswer(*visible->conversation);
    Q_EMIT changed();
    setVisible(true);
}

void OverlayModel::showPrompt(const PromptChoice& choice)
{
    m_promptName = QString::fromStdString(choice.name);
    m_numberedPrompts.clear();
    for (const auto& name : choice.numbered)
        m_numberedPrompts += QString::fromStdString(name);
    Q_EMIT changed();
}

void OverlayModel::showQuestion(OverlayQuestion question)
{
    m_question = QString::fromStdString(question.text);
    m_questionTitle = translated("Question ") + QString::number(question.index);
    if (question.total > 1)
        m_questionTitle += QLatin1Char('/') + QString::number(question.total);
    Q_EMIT changed();
}

void OverlayModel::showIndicator(ProcessingIndicator::State indicator)
{
    switch (indicator) {
    case ProcessingIndicator::State::starting: m_state = State::recording; break;
    case ProcessingIndicator::State::transcribing: m_state = State::transcribing; break;
    case ProcessingIndicator::State::processing: m_state = State::processing; break;
    case ProcessingIndicator::State::speaking: m_state = State::speaking; break;
    }
    if (m_state != State::recording)
        m_levelSubscription.reset();
    Q_EMIT changed();
}

void OverlayModel::showProgress(double progress)
{
    // The scene is drawn anew for what can be seen, not for each step of the recogniser.
    const double shown = std::floor(std::clamp(progress, 0.0, 1.0) * 100) / 100;
    if (shown == m_progress)
        return;
    m_progress = shown;
    Q_EMIT changed();
}

void OverlayModel::dictationEnded(const DictationOutcome& outcome)
{
    const auto destination = destinationOf(outcome);
    const auto* failed = std::get_if<dictation_outcome::Failed>(&outcome);
    if (failed)
        showFailure(*failed);
    else if (std::holds_alternative<dictation_outcome::TooShort>(outcome))
        showHint(translated("That was too short"),
                 translated("Speak before you let go of the keys, or press them again to stop."));
    else if (destination == TextDestination::clipboard)
        showHint(translated("Copied to the clipboard"), translated("Paste it where you want it."));
    else if (destination == TextDestination::nowhere)
        showHint(translated("Kept in the history"), {});
    else if (const auto* early = std::get_if<dictation_outcome::EndedEarly>(&outcome); early && !early->reason.empty())
        showHint(QString::fromStdString(early->reason), {});
    else
        hideSoon();
    Q_EMIT changed();
}

void OverlayModel::showHint(const QString& message, const QString& detail)
{
    m_isDictating = false;
    m_levelSubscription.reset();
    m_state = State::hint;
    m_message = message;
    m_detail = detail;
    setVisible(true);
    keepFor(kHintTime);
}

void OverlayModel::showFailure(const dictation_outcome::Failed& failed)
{
    m_isDictating = false;
    m_levelSubscription.reset();
    m_state = State::error;
    m_message = translated(failed.message);
    m_detail = detailOf(failed);
    setVisible(true);
    keepFor(readingTime(m_message.size() + m_detail.size()));
}

/// The end of a dictation is told in two steps, and the second may leave something to read.
void OverlayModel::hideSoon()
{
    m_isDictating = false;
    m_levelSubscription.reset();
    keepFor(0ms);
}

void OverlayModel::keepFor(Duration time)
{
    m_hiding = m_clock.after(time, [this] {
        m_question.clear();
        m_questionTitle.clear();
        setVisible(false);
        showNextNotice();
    });
}

void OverlayModel::showNotice(const std::string& text)
{
    m_notices.push_back(QString::fromStdString(text));
    if (!m_isVisible)
        showNextNotice();
}

void OverlayModel::showNextNotice()
{
    if (m_notices.empty())
        return;
    const auto text = std::exchange(m_notices.front(), {});
    m_notices.pop_front();
    const auto end = text.indexOf(QLatin1String(". "));
    showHint(end < 0 ? text : text.left(end + 1), end < 0 ? QString() : text.mid(end + 2));
    keepFor(readingTime(text.size()));
    Q_EMIT changed();
}

void OverlayModel::setVisible(bool visible)
{
    if (std::exchange(m_isVisible, visible) != visible)
        Q_EMIT visibleChanged();
}

QString OverlayModel::stateName() const
{
    switch (m_state) {
    case State::recording: return QStringLiteral("recording");
    case State::transcribing: return QStringLiteral("transcribing");
    case State::processing: return QStringLiteral("processing");
    case State::speaking: return QStringLiteral("speaking");
    case State::error: return QStringLiteral("error");
    case State::hint: return QStringLiteral("hint");
    }
    return {};
}

QString OverlayModel::elapsed() const
{
    const int minutes = m_elapsedSeconds / 60;
    const QString seconds = QString::number(m_elapsedSeconds % 60).rightJustified(2, QLatin1Char('0'));
    if (minutes < 60)
        return QStringLiteral("%1:%2").arg(minutes).arg(seconds);
    return QStringLiteral("%1:%2:%3").arg(minutes / 60).arg(minutes % 60, 2, 10, QLatin1Char('0')).arg(seconds);
}

} // namespace vocalith
