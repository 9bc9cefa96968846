#pragma once

#include "base/Clock.h"
#include "base/Observable.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace vocalith {

class KeyboardShortcutRecordingService;
class PersistentAppStorage;

/// Listens to the microphone without keeping anything of it.
struct MicrophoneCheck {
    std::function<void()> start;
    std::function<void()> stop;
    Observable<float> level;         ///< 0...1
    Observable<std::string> problem; ///< why nothing is heard and what to do about it; empty while all is well
};

/// What the first start asks of the user: a shortcut, a microphone that hears something, and a first try. Lives as long
/// as its window; main thread. It listens on the page of the microphone only.
class FirstStartModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(int page READ page WRITE setPage NOTIFY pageChanged)
    Q_PROPERTY(QString shortcut READ shortcut NOTIFY changed)
    Q_PROPERTY(bool recordingShortcut READ isRecordingShortcut NOTIFY changed)
    Q_PROPERTY(QString shortcutError READ shortcutError NOTIFY changed)
    Q_PROPERTY(double level READ level NOTIFY levelChanged)
    Q_PROPERTY(bool heard READ hasHeard NOTIFY changed)
    Q_PROPERTY(QString microphoneProblem READ microphoneProblem NOTIFY changed)

public:
    enum Page { shortcutPage, microphonePage, tryPage, pageCount };

    FirstStartModel(KeyboardShortcutRecordingService& recorder, MicrophoneCheck& microphone,
                    PersistentAppStorage& storage, Clock& clock);
    ~FirstStartModel() override;

    int page() const { return m_page; }
    void setPage(int page);
    QString shortcut() const; ///< "Ctrl+Alt+Space"; empty when there is none
    bool isRecordingShortcut() const;
    QString shortcutError() const;
    double level() const { return m_level; }
    bool hasHeard() const { return m_hasHeard; }
    QString microphoneProblem() const;

    Q_INVOKABLE void recordShortcut();
    Q_INVOKABLE void stopRecordingShortcut();
    /// The user is through with it, or wants none of it: it is not shown again.
    Q_INVOKABLE void finish();

    /// A text that was dictated while the window has the focus. False on the pages that have no place for it.
    bool insert(const std::string& text);
    /// A key of the window; `scanCode` as X11 and Wayland give it. True when the key was for the shortcut.
    bool handleKey(std::uint32_t scanCode, Qt::KeyboardModifiers modifiers, bool isDown);

Q_SIGNALS:
    void pageChanged();
    void changed();
    void levelChanged();
    void dictated(const QString& text);
    void finished();

private:
    void listen(bool wanted);
    void heard(float level);

    KeyboardShortcutRecordingService& m_recorder;
    MicrophoneCheck& m_microphone;
    PersistentAppStorage& m_storage;
    Clock& m_clock;
    int m_page = shortcutPage;
    bool m_isListening = false;
    double m_level = 0;
    bool m_hasHeard = false;
    bool m_isSilent = false;
    Timer m_patience;
    std::vector<Subscription> m_subscriptions;
};

} // namespace vocalith
