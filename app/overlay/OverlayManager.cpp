#include "app/overlay/OverlayManager.h"

#include "core/session/ConfigurationManager.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "core/storage/history/HistoryService.h"
#include "ports/Analytics.h"
#include "ports/Notices.h"

#include <system_error>

namespace vocalith {
namespace {

std::string describe(const OverlayActivationMode& mode)
{
    const auto* prompt = std::get_if<AIPrompt>(&mode);
    return prompt ? "aiPrompt(" + prompt->name + ")" : "voiceJournal";
}

bool isPermissionDenied(const AudioRecordingFailure& error)
{
    return error.input && error.input->kind == AudioInputError::Kind::permissionDenied;
}

std::filesystem::path fileOf(const FinishedRecording& recording)
{
    return filePath(recording.audioFile.fileBookmark).value_or(std::filesystem::path());
}

} // namespace

OverlayManager::OverlayManager(OverlayManagerServices services, Logger logger)
    : m_services(services), m_logger(std::move(logger))
{
    m_activation = m_services.shortcutNotifier.state.subscribe([this](const auto& state) { activationChanged(state); });
    m_escape = m_services.shortcutNotifier.escapeTriggered.subscribe([this] { cancel(); });
    m_inputEnded = m_services.audioRecordingManager.ended.subscribe([this](const auto& reason) { inputEnded(reason); });
    m_textEvents = m_services.sessionManager.textEvent().subscribe([this](const TranscriptionState& event) {
        if (m_phase != Phase::recording && m_phase != Phase::processing)
            return;
        m_overlayState.textEvent = event;
        m_services.overlayDisplay.show(m_overlayState);
    });
}

Task<void> OverlayManager::shutDown()
{
    if (m_phase != Phase::idle)
        cancel();
    co_await m_recordingSetupTask.untilEmpty();
    co_await m_stateHandlingTask.untilEmpty();
    co_await m_completionTask.untilEmpty();
    co_await m_cleanUpTask.untilEmpty();
}

void OverlayManager::activationChanged(const KeyboardActivationState& state)
{
    if (const auto* start = std::get_if<keyboard_activation::Activated>(&state))
        activated(start->shortcutID);
    else if (const auto* finish = std::get_if<keyboard_activation::Completed>(&state))
        completed(finish->shortcutID);
}

void OverlayManager::activated(const Uuid& shortcutID)
{
    if (m_phase == Phase::recording) {
        m_logger.info("Already recording");
        return;
    }
    if (m_phase != Phase::idle) {
        m_logger.info("Overlay manager will ignore shortcut state update, already processing recorging");
        return;
    }
    if (!m_services.configurationManager.configuration()) {
        m_logger.error("Configuration not loaded");
        m_services.analytics.event("overlay_config_not_loaded");
        return;
    }
    const auto activation = m_services.configurationManager.activation(shortcutID);
    if (!activation) {
        m_logger.error("Invalid shortcut id: " + shortcutID.toString());
        return;
    }
    begin(*activation);
}

void OverlayManager::completed(const Uuid& shortcutID)
{
    if (!m_services.configurationManager.activation(shortcutID))
        m_logger.error("Invalid shortcut id: " + shortcutID.toString());
    else if (m_phase == Phase::recording)
        finish();
    else if (m_phase != Phase::idle)
        m_logger.info("Overlay manager will ignore shortcut state update, already processing recorging");
}

void OverlayManager::begin(const OverlayActivationModeWithShortcutIndex& activation)
{
    const auto& configuration = *m_services.configurationManager.configuration();
    m_phase = Phase::recording;
    m_overlayState = {Uuid::random(), {}, std::nullopt};
    m_activationMode = activation.mode;
    m_creationDate = m_services.clock.now();
    m_engineFailure.reset();
    m_interruption.reset();
    m_recording.reset();

    // The microphone comes before everything else: people begin to speak as they press.
    RecordingRequest request{m_overlayState.sessionID, configuration.recordingMode};
    request.deviceId = configuration.microphoneId;
    m_recordingSetupTask.start(setUpRecording(request));
    if (m_phase != Phase::recording)
        return;

    m_logger.info("New overlay state: " + m_overlayState.sessionID.toString());
    m_services.overlayDisplay.show(m_overlayState);
    m_services.overlayDisplay.showIndicator(ProcessingIndicator::State::starting);
    m_logger.info("New activation mode: " + describe(m_activationMode));
    m_services.shortcutFeedbackService.recordingStarted();
    m_stateHandlingTask.start(prepareEngine());
}

Task<void> OverlayManager::setUpRecording(RecordingRequest request)
{
    const auto started = co_await m_services.audioRecordingManager.start(request);
    if (!started && m_phase != Phase::ending)
        recordingFailed(started.error());
}

void OverlayManager::recordingFailed(const AudioRecordingFailure& error)
{
    if (isPermissionDenied(error))
        m_services.analytics.event("overlay_error_mic_permission");
    abort({.message = userMessage(error)});
}

Task<void> OverlayManager::prepareEngine()
{
    const auto& configuration = *m_services.configurationManager.configuration();
    const auto* prompt = std::get_if<AIPrompt>(&m_activationMode);
    const bool promptChooses = prompt && prompt->transcriptionModelID;
    const TranscriptionModelID model = promptChooses ? *prompt->transcriptionModelID : configuration.defaultModel;
    m_logger.info((promptChooses ? "Starting transcription with the prompt's model: "
                                 : "Starting transcription with default model: ") +
                  toString(model));

    const auto engine = m_services.sessionManager.setEngine(model, TranscriptionSource::dictation);
    if (!engine) {
        m_engineFailure = SessionError{SessionError::Kind::engine, engine.error()};
    } else {
        const auto started = co_await m_services.sessionManager.start();
        if (!started && started.error().kind != SessionError::Kind::cancelled)
            m_engineFailure = started.error();
    }
    // Without an engine there is no use in speaking on; what was said until now is kept.
    if (m_engineFailure && m_phase == Phase::recording)
        finish();
}

void OverlayManager::inputEnded(const Result<void, AudioInputError>& reason)
{
    if (m_phase != Phase::recording)
        return;
    if (!reason)
        m_interruption = reason.error();
    finish();
}

void OverlayManager::finish()
{
    m_phase = Phase::processing;
    m_services.overlayDisplay.showIndicator(ProcessingIndicator::State::transcribing);
    m_completionTask.start(completeDictation());
}

Task<void> OverlayManager::completeDictation()
{
    co_await m_recordingSetupTask.untilEmpty();
    auto stopped = co_await m_services.audioRecordingManager.stop();
    if (stopped)
        m_recording = std::move(*stopped);
    if (m_phase != Phase::processing)
        co_return;
    m_services.shortcutFeedbackService.recordingEnded(isLongEnough());
    if (m_recording && m_recording->interruption)
        m_interruption = m_recording->interruption;
    if (m_interruption && isLongEnough())
        m_services.alertService.show(userMessage(*m_interruption));

    co_await m_stateHandlingTask.untilEmpty(); // the model may still be loading
    if (m_phase != Phase::processing)
        co_return;
    if (m_engineFailure) {
        const auto reason = *m_engineFailure;
        co_await fail(reason);
    } else if (!m_recording && !m_interruption) {
        end(dictation_outcome::Failed{.message = userMessage(stopped.error())});
    } else if (!isLongEnough()) {
        co_await endTooShort();
    } else {
        auto request = completionRequest();
        auto outcome = co_await m_services.sessionManager.complete(std::move(request));
        if (m_phase != Phase::processing)
            co_return;
        if (outcome) {
            auto done = std::move(*outcome);
            co_await conclude(std::move(done));
        } else {
            const auto reason = outcome.error();
            co_await fail(reason);
        }
    }
}

Task<void> OverlayManager::endTooShort()
{
    if (m_interruption) { // its sentence promises that what there is was kept
        dictation_outcome::Failed failed{.message = userMessage(*m_interruption)};
        co_await endFailed(std::move(failed));
        co_return;
    }
    const double elapsed = m_recording->elapsedTime;
    removeRecording();
    end(dictation_outcome::TooShort{elapsed});
}

CompletionRequest OverlayManager::completionRequest() const
{
    auto& display = m_services.overlayDisplay;
    return {m_overlayState.sessionID,
            m_recording->audioFile,
            m_activationMode,
            m_creationDate,
            [&display](ProcessingIndicator::State state) { display.showIndicator(state); },
            [&display](double progress) { display.showProgress(progress); }};
}

Task<void> OverlayManager::conclude(PipelineOutcome outcome)
{
    const auto& entry = outcome.context.historyEntry;
    if (outcome.end == PipelineOutcome::End::failed) {
        dictation_outcome::Failed failed{.message = outcome.failure->message, .text = outcome.context.transcript};
        failed.historyHasText = entry.has_value();
        if (entry)
            failed.historyEntry = entry->id;
        co_await endFailed(std::move(failed));
        co_return;
    }
    m_lastSuccessfulActivationMode = m_activationMode;
    if (!entry) {
        removeRecording();
        if (m_services.historyService.isEnabled())
            m_services.alertService.show("The history could not be written, so this dictation is not in it.");
    }
    if (outcome.end == PipelineOutcome::End::early)
        end(dictation_outcome::EndedEarly{});
    else
        end(dictation_outcome::Delivered{std::move(outcome.context.dictationResult.transcriptionData),
                                         std::move(outcome.context.transcript)});
}

Task<void> OverlayManager::fail(SessionError error)
{
    const bool noSpeech = error.kind == SessionError::Kind::noSpeech;
    const bool engine = error.kind == SessionError::Kind::engine;
    if (engine)
        m_services.analytics.event("overlay_transcription_error");
    dictation_outcome::Failed failed{.message = userMessage(error), .noSpeech = noSpeech};
    if (engine)
        failed.detail = userMessage(error.cause);
    m_logger.error(failed.message + (failed.detail.empty() ? "" : ": " + failed.detail));
    if (!isLongEnough()) {
        removeRecording();
        m_recording.reset();
    }
    co_await endFailed(std::move(failed));
}

/// Keeps what was recorded: in the history, or else as the file that it is. An entry that has the words already stays
/// as it is.
Task<void> OverlayManager::endFailed(dictation_outcome::Failed failed)
{
    m_phase = Phase::ending; // what is being kept is not to be thrown away by a late Escape
    if (m_recording) {
        failed.recording = fileOf(*m_recording);
        if (!failed.historyEntry && m_services.historyService.isEnabled()) {
            const HistoryEntry::DictationEntry failure =
                HistoryEntry::FailureData{m_recording->audioFile, failed.message};
            const HistoryEntry entry{m_overlayState.sessionID, m_creationDate, failure};
            const auto kept = co_await m_services.historyService.upsert(entry);
            if (kept)
                failed.historyEntry = entry.id;
        }
    }
    end(failed);
}

void OverlayManager::cancel()
{
    if (m_phase == Phase::ending)
        return;
    if (m_phase == Phase::idle) {
        m_cleanUpTask.requestStop(); // old entries can go another time
        return;
    }
    requestStop();
    m_cleanUpTask.start(unwind(dictation_outcome::Cancelled{}));
}

void OverlayManager::abort(dictation_outcome::Failed failed)
{
    m_logger.error(failed.message);
    requestStop();
    m_cleanUpTask.start(unwind(std::move(failed)));
}

void OverlayManager::requestStop()
{
    m_phase = Phase::ending;
    m_recordingSetupTask.requestStop();
    m_stateHandlingTask.requestStop();
    m_completionTask.requestStop();
}

Task<void> OverlayManager::unwind(DictationOutcome outcome)
{
    co_await m_recordingSetupTask.untilEmpty();
    co_await m_stateHandlingTask.untilEmpty();
    co_await m_completionTask.untilEmpty();
    co_await m_services.audioRecordingManager.cancel();
    removeRecording();
    end(outcome);
}

void OverlayManager::end(const DictationOutcome& outcome)
{
    m_services.sessionManager.releaseEngine();
    m_services.audioRecordingManager.settle();
    m_recording.reset();
    m_phase = Phase::idle;
    m_services.overlayDisplay.show(OverlayHidden{});
    m_services.overlayDisplay.dictationEnded(outcome);
    m_cleanUpTask.start(cleanUpHistory());
}

Task<void> OverlayManager::cleanUpHistory()
{
    co_await m_services.historyService.cleanUpWhenDue();
}

bool OverlayManager::isLongEnough() const
{
    return m_recording && m_recording->elapsedTime > minimumRecordingDuration;
}

void OverlayManager::removeRecording()
{
    if (!m_recording)
        return;
    std::error_code error;
    std::filesystem::remove(fileOf(*m_recording), error);
    if (error)
        m_logger.warning("Cannot remove the recording " + fileOf(*m_recording).string() + ": " + error.message());
}

} // namespace vocalith
