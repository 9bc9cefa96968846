#pragma once

#include "base/Clock.h"
#include "base/Observable.h"
#include "core/session/OverlayDisplay.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

/// One of the questions that an agent has asked.
struct OverlayQuestion {
    int index = 1; ///< from 1
    int total = 1;
    std::string text;
    bool operator==(const OverlayQuestion&) const = default;
};

/// What the overlay's scene shows, in the scene's own terms. The composition owns it; main thread. It stays visible for
/// some seconds after a dictation that failed, so that the user can read why, and takes part in nothing while hidden.
class OverlayModel final : public QObject, public OverlayDisplay {
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY visibleChanged)
    Q_PROPERTY(QString state READ stateName NOTIFY changed)
    Q_PROPERTY(bool loading READ isLoading NOTIFY changed)
    Q_PROPERTY(QString elapsed READ elapsed NOTIFY elapsedChanged)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(QString temporaryText READ temporaryText NOTIFY changed)
    Q_PROPERTY(QString promptName READ promptName NOTIFY changed)
    Q_PROPERTY(QStringList numberedPrompts READ numberedPrompts NOTIFY changed)
    Q_PROPERTY(QString questionTitle READ questionTitle NOTIFY changed)
    Q_PROPERTY(QString question READ question NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QString detail READ detail NOTIFY changed)
    Q_PROPERTY(double progress READ progress NOTIFY changed)

public:
    /// `hint` is no failure: it tells how the shortcut is used, or where a text is that was not inserted.
    enum class State { recording, transcribing, processing, speaking, error, hint };

    /// `levels` are the last readings of the meter, 0...1, the newest at the end; `elapsedTime` is in seconds.
    OverlayModel(Observable<std::vector<float>>& levels, Observable<double>& elapsedTime, Clock& clock);

    void show(const OverlayVisibilityState& state) override;
    void showPrompt(const PromptChoice& choice) override;
    void showIndicator(ProcessingIndicator::State indicator) override;
    void showProgress(double progress) override;
    void dictationEnded(const DictationOutcome& outcome) override;
    /// The dictation answers a question; it holds until the dictation ends.
    void showQuestion(OverlayQuestion question);
    /// Something that is to be told apart from dictations, and that nobody else shows. It waits for the end of the
    /// dictation and of what is shown already. The first sentence is the message, the rest its detail.
    void showNotice(const std::string& text);

    bool isVisible() const { return m_isVisible; }
    State state() const { return m_state; }
    QString stateName() const; ///< the name of the enumerator
    bool isLoading() const { return m_isLoading; }
    const std::vector<float>& levels() const { return m_levels; }
    QString elapsed() const; ///< "0:07", "1:02:05"
    QString text() const { return m_text; }
    QString temporaryText() const { return m_temporaryText; }
    QString promptName() const { return m_promptName; }
    QStringList numberedPrompts() const { return m_numberedPrompts; }
    QString questionTitle() const { return m_questionTitle; }
    QString question() const { return m_question; }
    QString message() const { return m_message; }
    QString detail() const { return m_detail; }
    double progress() const { return m_progress; } ///< 0...1

Q_SIGNALS:
    void visibleChanged();
    void changed();
    void elapsedChanged();
    void levelsChanged();

private:
    void begin();
    void setVisible(bool visible);
    void hideSoon();
    void showNextNotice();
    void keepFor(Duration time);
    void showFailure(const dictation_outcome::Failed& failed);
    void showHint(const QString& message, const QString& detail);

    Observable<std::vector<float>>& m_levelSource;
    Clock& m_clock;

    bool m_isVisible = false;
    bool m_isDictating = false;
    State m_state = State::recording;
    bool m_isLoading = false;
    std::vector<float> m_levels;
    int m_skippedReadings = 0;
    int m_elapsedSeconds = 0;
    QString m_text;
    QString m_temporaryText;
    QString m_promptName;
    QStringList m_numberedPrompts;
    QString m_questionTitle;
    QString m_question;
    QString m_message;
    QString m_detail;
    double m_progress = 0;

    std::deque<QString> m_notices;
    Timer m_hiding;
    Subscription m_levelSubscription;
    Subscription m_elapsedSubscription;
};

} // namespace vocalith
