#pragma once

#include "app/overlay/DictationMode.h"
#include "app/overlay/DictationRecording.h"
#include "app/overlay/EnginePreparation.h"
#include "app/overlay/UndeliveredText.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "base/TaskScope.h"
#include "core/audio/AudioRecordingManager.h"
#include "core/session/DictationConfiguration.h"
#include "core/session/KeyboardActivationState.h"
#include "core/session/OverlayDisplay.h"
#include "core/session/TranscriptionSessionManager.h"

#include <functional>
#include <optional>

namespace vocalith {

class Analytics;
class ConfigurationManager;
class HistoryService;
class Notices;
class Pasteboard;
class ShortcutUserFeedbackService;

/// Everything that the coordination of a dictation works with. All of it outlives the manager.
struct OverlayManagerServices {
    ShortcutNotifier& shortcutNotifier;
    AudioRecordingManager& audioRecordingManager;
    TranscriptionSessionManager& sessionManager;
    ConfigurationManager& configurationManager;
    ShortcutUserFeedbackService& shortcutFeedbackService;
    HistoryService& historyService;
    const Clock& clock;
    Analytics& analytics;
    Notices& alertService;
    OverlayDisplay& overlayDisplay;
    Pasteboard* pasteboard = nullptr; ///< for words that would be nowhere else; null where there is no desktop
};

/// Where a dictation stands, for those who show it or change what keys do while it runs.
enum class DictationPhase { idle, recording, processing };

/// Carries one dictation at a time from the activation signal to the delivered text: idle, recording, processing, idle.
/// Lives as long as the program; main thread. Cancellation from any state returns to idle and discards the recording;
/// any other failure after speech was captured keeps it, as an entry of the history where the user wants one. A
/// recording is removed only once its text is delivered and the history has no entry that uses it.
class OverlayManager {
public:
    /// A recording must be longer than this, in seconds.
    static constexpr double minimumRecordingDuration = 0.5;

    OverlayManager(OverlayManagerServices services, Logger logger);

    bool isShowingOverlay() const { return m_phase != Phase::idle; }
    /// Idle again once everything of a dictation is done, `dictationEnded` of the display included.
    Observable<DictationPhase> phase;

    /// Makes the running dictation one for the n-th prompt that the configuration had as it began, counted from 1. Of
    /// no effect while nothing is recorded, and with a number that no prompt has.
    void choosePrompt(int number);
    /// The mode of the last dictation that came to its end.
    const std::optional<OverlayActivationMode>& lastSuccessfulActivationMode() const
    {
        return m_lastSuccessfulActivationMode;
    }

    /// Ends the recording or the processing that runs, and keeps what was said, as a failure with this sentence does.
    /// Words that the history does not have go to the clipboard. Of no effect while nothing runs.
    void interrupt(std::string reason);
    /// Interrupts what runs; from now on nothing is begun.
    void close();
    /// Closes, and is done once all that ran has ended; old entries of the history stay until another time. To be
    /// awaited before destruction.
    Task<void> shutDown();

private:
    enum class Phase {
        idle,
        recording,
        processing,
        ending ///< what ran was asked to stop and is unwinding
    };

    void activationChanged(const KeyboardActivationState& state);
    void activated(const Uuid& shortcutID);
    void completed(const Uuid& shortcutID);
    void begin(const OverlayActivationModeWithShortcutIndex& activation);
    void setPhase(Phase phase);
    void finish();
    void cancel();
    void abort(dictation_outcome::Failed failed);
    void requestStop();

    Task<void> setUpRecording(RecordingRequest request);
    Task<void> prepareEngine();
    Task<void> completeDictation();
    Task<void> recognise();
    Task<void> untilStopped();
    Task<void> unwind(DictationOutcome outcome);
    Task<void> keep(std::string reason);
    Task<void> conclude(PipelineOutcome outcome);
    Task<void> fail(SessionError error);
    Task<void> endTooShort();
    Task<void> endFailed(dictation_outcome::Failed failed);
    Task<void> cleanUpHistory();

    void inputEnded(const Result<void, AudioInputError>& reason);
    void recordingFailed(const AudioRecordingFailure& error);
    CompletionRequest completionRequest() const;
    void end(const DictationOutcome& outcome);

    OverlayManagerServices m_services;
    const Logger m_logger;

    Phase m_phase = Phase::idle;
    OverlayState m_overlayState;
    DictationMode m_mode;
    DictationRecording m_recording;
    EnginePreparation m_engine;
    UndeliveredText m_undelivered;
    std::optional<OverlayActivationMode> m_lastSuccessfulActivationMode;
    bool m_isClosed = false;

    TaskScope m_recordingSetupTask;
    TaskScope m_stateHandlingTask;
    TaskScope m_completionTask;
    TaskScope m_endingTask;  ///< keeps what ran and was ended, or throws it away
    TaskScope m_cleanUpTask; ///< of the history; it can be stopped at any time

    Subscription m_activation;
    Subscription m_escape;
    Subscription m_return;
    Subscription m_inputEnded;
    Subscription m_textEvents;
};

} // namespace vocalith
