#pragma once

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
};

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
    /// The mode of the last dictation that came to its end.
    const std::optional<OverlayActivationMode>& lastSuccessfulActivationMode() const
    {
        return m_lastSuccessfulActivationMode;
    }

    /// Cancels what runs, as Escape does, and is done once all of it has ended. To be awaited before destruction.
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
    void finish();
    void cancel();
    void abort(dictation_outcome::Failed failed);
    void requestStop();

    Task<void> setUpRecording(RecordingRequest request);
    Task<void> prepareEngine();
    Task<void> completeDictation();
    Task<void> unwind(DictationOutcome outcome);
    Task<void> conclude(PipelineOutcome outcome);
    Task<void> fail(SessionError error);
    Task<void> endTooShort();
    Task<void> endFailed(dictation_outcome::Failed failed);
    Task<void> cleanUpHistory();

    void inputEnded(const Result<void, AudioInputError>& reason);
    void recordingFailed(const AudioRecordingFailure& error);
    CompletionRequest completionRequest() const;
    void end(const DictationOutcome& outcome);
    bool isLongEnough() const;
    void removeRecording();

    OverlayManagerServices m_services;
    const Logger m_logger;

    Phase m_phase = Phase::idle;
    OverlayState m_overlayState;
    OverlayActivationMode m_activationMode;
    Date m_creationDate; ///< of the dictation
    std::optional<OverlayActivationMode> m_lastSuccessfulActivationMode;
    std::optional<FinishedRecording> m_recording;
    std::optional<SessionError> m_engineFailure;
    std::optional<AudioInputError> m_interruption; ///< of the recording's input, wholly or in part

    TaskScope m_recordingSetupTask;
    TaskScope m_stateHandlingTask;
    TaskScope m_completionTask;
    TaskScope m_cleanUpTask;

    Subscription m_activation;
    Subscription m_escape;
    Subscription m_inputEnded;
    Subscription m_textEvents;
};

} // namespace vocalith
