#include "app/overlay/OverlayManager.h"

#include "core/session/ConfigurationManager.h"
#include "core/session/ShortcutUserFeedbackService.h"
#include "core/storage/history/HistoryService.h"
#include "ports/Analytics.h"
#include "ports/Notices.h"

#include <QtGlobal>

namespace vocalith {
namespace {

bool isPermissionDenied(const AudioRecordingFailure& error)
{
    return error.input && error.input->kind == AudioInputError::Kind::permissionDenied;
}

} // namespace

OverlayManager::OverlayManager(OverlayManagerServices services, Logger logger)
    : m_services(services), m_logger(std::move(logger)), m_mode(services.configurationManager),
      m_recording(services.audioRecordingManager, services.historyService, minimumRecordingDuration, m_logger),
      m_engine(services.sessionManager, m_mode, m_logger), m_undelivered(services.pasteboard, m_logger)
{
    m_activation = m_services.shortcutNotifier.state.subscribe([this](const auto& state) { activationChanged(state); });
    m_escape = m_services.shortcutNotifier.escapeTriggered.subscribe([this] { cancel(); });
    m_return = m_services.shortcutNotifier.returnTriggered.subscribe([this] {
        if (m_phase == Phase::recording)
            finish();
    });
    m_inputEnded = m_services.audioRecordingManager.ended.subscribe([this](const auto& reason) { inputEnded(reason); });
    m_textEvents = m_services.sessionManager.textEvent().subscribe([this](const TranscriptionState& event) {
        if (m_phase != Phase::recording && m_phase != Phase::processing)
            return;
        m_overlayState.textEvent = event;
        m_services.overlayDisplay.show(m_overlayState);
    });
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
    if (m_isClosed) {
        m_logger.info("No dictation begins any more, the program ends");
        return;
    }
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
    // Also for a shortcut that the settings have lost meanwhile: nobody else would end the recording.
    if (m_phase == Phase::recording)
        finish();
    else if (!m_services.configurationManager.activation(shortcutID))
        m_logger.error("Invalid shortcut id: " + shortcutID.toString());
    else if (m_phase != Phase::idle)
        m_logger.info("Overlay manager will ignore shortcut state update, already processing recorging");
}

void OverlayManager::begin(const OverlayActivationModeWithShortcutIndex& activation)
{
    const auto& configuration = *m_services.configurationManager.configuration();
    m_phase = Phase::recording;
    m_overlayState = {Uuid::random(), {}, std::nullopt};
    m_undelivered.forget();
    m_mode.begin(activation.mode);
    m_recording.begin(m_overlayState.sessionID, m_services.clock.now());
    m_engine.begin();

    // The microphone comes before everything else: people begin to speak as they press.
    RecordingRequest request{m_overlayState.sessionID, configuration.recordingMode};
    request.deviceId = configuration.microphoneId;
    m_recordingSetupTask.start(setUpRecording(request));
    if (m_phase != Phase::recording)
        return;

    m_logger.info("New overlay state: " + m_overlayState.sessionID.toString());
    m_services.overlayDisplay.showPrompt(m_mode.choice());
    m_services.overlayDisplay.show(m_overlayState);
    m_services.overlayDisplay.showIndicator(ProcessingIndicator::State::starting);
    m_logger.info("New activation mode: " + m_mode.describe());
    m_services.shortcutFeedbackService.recordingStarted(configuration.recordingMode);
    m_stateHandlingTask.start(prepareEngine());
    if (m_phase == Phase::recording)
        setPhase(m_phase); // last: whoever is told may end it
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

void OverlayManager::choosePrompt(int number)
{
    const auto* prompt = m_phase == Phase::recording ? m_mode.choose(number) : nullptr;
    if (!prompt)
        return;
    m_services.sessionManager.changePrompt(prompt->id);
    m_services.overlayDisplay.showPrompt(m_mode.choice());
}

Task<void> OverlayManager::prepareEngine()
{
    co_await m_engine.prepare();
    // Without an engine there is no use in speaking on; what was said until now is kept.
    if (m_engine.failure() && m_phase == Phase::recording)
        finish();
}

void OverlayManager::inputEnded(const Result<void, AudioInputError>& reason)
{
    if (m_phase != Phase::recording)
        return;
    if (!reason)
        m_recording.interrupted(reason.error());
    finish();
}

void OverlayManager::setPhase(Phase newPhase)
{
    m_phase = newPhase;
    switch (newPhase) {
    case Phase::idle: phase.set(DictationPhase::idle); break;
    case Phase::recording: phase.set(DictationPhase::recording); break;
    case Phase::processing:
    case Phase::ending: phase.set(DictationPhase::processing); break;
    }
}

void OverlayManager::finish()
{
    setPhase(Phase::processing);
    m_services.overlayDisplay.showIndicator(ProcessingIndicator::State::transcribing);
    m_completionTask.start(completeDictation());
}

Task<void> OverlayManager::completeDictation()
{
    co_await m_recordingSetupTask.untilEmpty();
    const auto stopped = co_await m_recording.stop();
    if (m_phase != Phase::processing)
        co_return;
    m_services.shortcutFeedbackService.recordingEnded(m_recording.isLongEnough());
    if (m_recording.interruption() && m_recording.isLongEnough())
        m_services.alertService.show(userMessage(*m_recording.interruption()));

    co_await m_stateHandlingTask.untilEmpty(); // the model may still be loading
    if (m_phase != Phase::processing)
        co_return;
    if (!m_engine.isForMode()) { // another prompt was chosen, with its own model
        co_await m_engine.prepare();
        if (m_phase != Phase::processing)
            co_return;
    }
    if (m_engine.failure()) {
        const auto reason = *m_engine.failure();
        co_await fail(reason);
    } else if (!m_recording.exists() && !m_recording.interruption()) {
        end(dictation_outcome::Failed{.message = userMessage(stopped.error())});
    } else if (!m_recording.isLongEnough()) {
        co_await endTooShort();
    } else {
        co_await recognise();
    }
}

Task<void> OverlayManager::recognise()
{
    auto request = completionRequest();
    auto outcome = co_await m_services.sessionManager.complete(std::move(request));
    if (m_phase != Phase::processing) {
        if (outcome && !m_isClosed) // what this program has put on the clipboard ends with it
            m_undelivered.take(outcome->context);
        co_return;
    }
    if (outcome) {
        auto done = std::move(*outcome);
        co_await conclude(std::move(done));
    } else {
        const auto reason = outcome.error();
        co_await fail(reason);
    }
}

Task<void> OverlayManager::endTooShort()
{
    if (m_recording.interruption()) { // its sentence promises that what there is was kept
        dictation_outcome::Failed failed{.message = userMessage(*m_recording.interruption())};
        co_await endFailed(std::move(failed));
        co_return;
    }
    const double elapsed = m_recording.elapsedTime();
    m_recording.remove();
    end(dictation_outcome::TooShort{elapsed});
}

CompletionRequest OverlayManager::completionRequest() const
{
    auto& display = m_services.overlayDisplay;
    return {m_overlayState.sessionID,
            m_recording.audioFile(),
            m_mode.get(),
            m_recording.creationDate(),
            [&display](ProcessingIndicator::State state) { display.showIndicator(state); },
            [&display](double progress) { display.showProgress(progress); }};
}

Task<void> OverlayManager::conclude(PipelineOutcome outcome)
{
    const auto& entry = outcome.context.historyEntry;
    const bool hasEndedInFailure = outcome.context.hasEndedInFailure;
    // Without an entry the words would be gone with what has failed.
    if (outcome.end == PipelineOutcome::End::failed || (hasEndedInFailure && !entry)) {
        dictation_outcome::Failed failed{.message =
                                             hasEndedInFailure ? outcome.context.endReason : outcome.failure->message,
                                         .text = outcome.context.transcript};
        failed.historyHasText = entry.has_value();
        if (entry)
            failed.historyEntry = entry->id;
        co_await endFailed(std::move(failed));
        co_return;
    }
    m_lastSuccessfulActivationMode = m_mode.get();
    if (!entry) {
        m_recording.remove();
        if (m_services.historyService.isEnabled())
            m_services.alertService.show("The history could not be written, so this dictation is not in it.");
    }
    if (hasEndedInFailure)
        m_services.alertService.show(outcome.context.endReason);
    if (outcome.end == PipelineOutcome::End::early || outcome.context.transcript.empty())
        end(dictation_outcome::EndedEarly{std::move(outcome.context.endReason), hasEndedInFailure});
    else
        end(dictation_outcome::Delivered{std::move(outcome.context.dictationResult.transcriptionData),
                                         std::move(outcome.context.transcript), outcome.context.destination});
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
    if (!m_recording.isLongEnough())
        m_recording.remove();
    co_await endFailed(std::move(failed));
}

Task<void> OverlayManager::endFailed(dictation_outcome::Failed failed)
{
    setPhase(Phase::ending); // what is being kept is not to be thrown away by a late Escape
    auto kept = co_await m_recording.keep(std::move(failed));
    end(std::move(kept));
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
    m_endingTask.start(unwind(dictation_outcome::Cancelled{}));
}

void OverlayManager::abort(dictation_outcome::Failed failed)
{
    m_logger.error(failed.message);
    requestStop();
    m_endingTask.start(unwind(std::move(failed)));
}

void OverlayManager::interrupt(std::string reason)
{
    if (m_phase != Phase::recording && m_phase != Phase::processing)
        return;
    m_logger.info("The dictation is interrupted: " + reason);
    requestStop();
    m_endingTask.start(keep(std::move(reason)));
}

void OverlayManager::close()
{
    m_isClosed = true;
    m_cleanUpTask.requestStop(); // old entries can go another time
    interrupt(QT_TRANSLATE_NOOP("Vocalith", "Vocalith was ended before the text was delivered."));
}

Task<void> OverlayManager::shutDown()
{
    close();
    co_await untilStopped();
    co_await m_endingTask.untilEmpty();
    co_await m_cleanUpTask.untilEmpty();
}

void OverlayManager::requestStop()
{
    setPhase(Phase::ending);
    m_services.shortcutFeedbackService.recordingEnded(false);
    m_recordingSetupTask.requestStop();
    m_stateHandlingTask.requestStop();
    m_completionTask.requestStop();
}

Task<void> OverlayManager::untilStopped()
{
    co_await m_recordingSetupTask.untilEmpty();
    co_await m_stateHandlingTask.untilEmpty();
    co_await m_completionTask.untilEmpty();
}

Task<void> OverlayManager::unwind(DictationOutcome outcome)
{
    co_await untilStopped();
    co_await m_services.audioRecordingManager.cancel();
    m_recording.remove();
    end(outcome);
}

Task<void> OverlayManager::keep(std::string reason)
{
    co_await untilStopped();
    co_await m_recording.stop();
    if (!m_recording.isLongEnough()) {
        m_recording.remove();
        end(dictation_outcome::Cancelled{});
        co_return;
    }
    auto failed = co_await m_recording.failureOf(std::move(reason));
    auto rescued = co_await m_undelivered.rescue(std::move(failed));
    co_await endFailed(std::move(rescued));
}

void OverlayManager::end(const DictationOutcome& outcome)
{
    m_services.sessionManager.releaseEngine();
    m_recording.letGo();
    m_phase = Phase::idle;
    m_services.overlayDisplay.show(OverlayHidden{});
    m_services.overlayDisplay.dictationEnded(outcome);
    if (!m_isClosed)
        m_cleanUpTask.start(cleanUpHistory());
    setPhase(m_phase); // last: whoever is told may begin another dictation
}

Task<void> OverlayManager::cleanUpHistory()
{
    co_await m_services.historyService.cleanUpWhenDue();
}

} // namespace vocalith
