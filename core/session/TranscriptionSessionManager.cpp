#include "core/session/TranscriptionSessionManager.h"

#include "base/Text.h"
#include "core/storage/settings/PersistentAppStorage.h"

#include <QtGlobal>

namespace vocalith {
namespace {

SessionError sessionError(TranscriptionError cause)
{
    using Cause = TranscriptionError::Kind;
    switch (cause.kind) {
    case Cause::noSpeech: return {SessionError::Kind::noSpeech, std::move(cause)};
    case Cause::cancelled: return {SessionError::Kind::cancelled, std::move(cause)};
    default: return {SessionError::Kind::engine, std::move(cause)};
    }
}

} // namespace

std::string userMessage(const SessionError& error)
{
    using Kind = SessionError::Kind;
    switch (error.kind) {
    case Kind::serviceNotInitialized: return QT_TRANSLATE_NOOP("Vocalith", "Transcription service was not initialized");
    case Kind::serviceNotConfigured: return QT_TRANSLATE_NOOP("Vocalith", "Service not configured");
    case Kind::noSpeech: return QT_TRANSLATE_NOOP("Vocalith", "No speech detected");
    case Kind::engine: return QT_TRANSLATE_NOOP("Vocalith", "Failed to recognize text");
    case Kind::cancelled: return QT_TRANSLATE_NOOP("Vocalith", "Cancelled");
    }
    return {};
}

TranscriptionSessionManager::TranscriptionSessionManager(EngineFactory engines, TranscriptProcessingService& pipeline,
                                                         PersistentAppStorage& appStorage, Logger logger)
    : m_engines(std::move(engines)), m_pipeline(pipeline), m_appStorage(appStorage), m_logger(std::move(logger))
{}

Result<void, TranscriptionError> TranscriptionSessionManager::setEngine(const TranscriptionModelID& model,
                                                                        TranscriptionSource source)
{
    releaseEngine();
    auto engine = m_engines(model, source);
    if (!engine)
        return failure(std::move(engine.error()));
    m_service = std::move(*engine);
    m_serviceEvents = m_service->textEvents().subscribe([this](const auto& event) { m_textEvent.set(event); });
    return {};
}

void TranscriptionSessionManager::releaseEngine()
{
    m_serviceEvents.reset();
    m_service.reset();
    m_textEvent.set({});
}

Task<Result<void, SessionError>> TranscriptionSessionManager::start()
{
    if (!m_service)
        co_return failure(SessionError{SessionError::Kind::serviceNotConfigured, {}});
    auto started = co_await m_service->start();
    co_return started.map_error(sessionError);
}

Task<Result<PipelineOutcome, SessionError>> TranscriptionSessionManager::complete(CompletionRequest request)
{
    request.transitionToState(ProcessingIndicator::State::transcribing);
    const auto recording = filePath(request.audioFile.fileBookmark).value_or(std::filesystem::path());
    auto recognized = co_await recognize(recording, request.showProgress);
    if (!recognized)
        co_return failure(std::move(recognized.error()));
    request.transitionToState(ProcessingIndicator::State::processing);

    TranscriptProcessingContext context;
    context.sessionID = request.sessionID;
    context.transcript = trimmed(plainText(*recognized));
    context.dictationResult = DictationResult{request.sessionID, request.audioFile, std::move(*recognized)};
    context.activationMode = std::move(request.activationMode);
    context.creationDate = request.creationDate;
    context.transitionToState = request.transitionToState;
    co_return co_await process(std::move(context));
}

Task<PipelineOutcome> TranscriptionSessionManager::process(TranscriptProcessingContext context)
{
    m_isProcessingPrompt = true;
    auto outcome = co_await m_pipeline.run(std::move(context));
    m_isProcessingPrompt = false;
    co_return outcome;
}

Task<Result<TranscriptionData, SessionError>>
TranscriptionSessionManager::transcribeFile(FileTranscriptionRequest request, std::function<void(double)> progress)
{
    m_fileTranscriptionRequest = std::move(request);
    auto recognized = co_await recognize(m_fileTranscriptionRequest->url, std::move(progress));
    m_fileTranscriptionRequest.reset();
    co_return recognized;
}

Task<Result<TranscriptionData, SessionError>>
TranscriptionSessionManager::recognize(std::filesystem::path recording, std::function<void(double)> progress)
{
    if (!m_service)
        co_return failure(SessionError{SessionError::Kind::serviceNotInitialized, {}});
    auto transcribed = co_await m_service->transcribe(std::move(recording), std::move(progress));
    if (!transcribed)
        co_return failure(sessionError(std::move(transcribed.error())));
    if (trimmed(plainText(*transcribed)).empty())
        co_return failure(SessionError{SessionError::Kind::noSpeech, {}});
    co_return std::move(*transcribed);
}

std::optional<Uuid> TranscriptionSessionManager::selectedPromptID() const
{
    return m_appStorage.storedPromptID.get();
}

void TranscriptionSessionManager::changePrompt(std::optional<Uuid> promptID)
{
    m_logger.info("Changing prompt id to " + (promptID ? promptID->toString() : std::string("none")));
    m_appStorage.storedPromptID.set(promptID);
}

} // namespace vocalith
