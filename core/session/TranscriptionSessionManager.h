#pragma once

#include "base/Log.h"
#include "base/Observable.h"
#include "core/pipeline/TranscriptProcessingService.h"
#include "core/speech/TranscriptionService.h"
#include "models/AudioFile.h"
#include "models/TranscriptionSource.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace vocalith {

class PersistentAppStorage;

/// Why the recognition side of a dictation failed.
struct SessionError {
    enum class Kind { serviceNotInitialized, serviceNotConfigured, noSpeech, engine, cancelled };
    Kind kind = Kind::engine;
    TranscriptionError cause; ///< of `engine`
    bool operator==(const SessionError&) const = default;
};

/// The text that is shown to the user.
std::string userMessage(const SessionError& error);

/// A file whose audio is transcribed in place of the microphone's.
struct FileTranscriptionRequest {
    std::filesystem::path url;
    bool operator==(const FileTranscriptionRequest&) const = default;
};

/// What a finished recording brings to its completion.
struct CompletionRequest {
    Uuid sessionID;
    AudioFile audioFile;
    OverlayActivationMode activationMode;
    Date creationDate; ///< of the dictation, under which the history keeps it
    std::function<void(ProcessingIndicator::State)> transitionToState;
    std::function<void(double)> showProgress; ///< of the recognition, 0..1
};

/// The recognition side of a dictation: holds the engine of the chosen voice model, publishes its text events and, on
/// completion, hands the transcript to the pipeline. Lives as long as the program; main thread. Its tasks end with
/// `cancelled` when they are asked to stop, and must have ended before the engine is replaced.
class TranscriptionSessionManager {
public:
    using EngineFactory = std::function<Result<std::unique_ptr<TranscriptionService>, TranscriptionError>(
        const TranscriptionModelID&, TranscriptionSource)>;

    TranscriptionSessionManager(EngineFactory engines, TranscriptProcessingService& pipeline,
                                PersistentAppStorage& appStorage, Logger logger);

    /// Takes the engine of `model` for the next run.
    Result<void, TranscriptionError> setEngine(const TranscriptionModelID& model, TranscriptionSource source);
    /// Lets go of the engine; what it has loaded stays warm behind it.
    void releaseEngine();

    /// Prepares the engine while the user speaks.
    Task<Result<void, SessionError>> start();
    /// Recognises the recording and runs the pipeline over its text.
    Task<Result<PipelineOutcome, SessionError>> complete(CompletionRequest request);
    /// Recognises a file, without the pipeline.
    Task<Result<TranscriptionData, SessionError>> transcribeFile(FileTranscriptionRequest request,
                                                                 std::function<void(double)> progress);

    /// The latest text event of the engine.
    Observable<TranscriptionState>& textEvent() { return m_textEvent; }
    bool isProcessingPrompt() const { return m_isProcessingPrompt; }

    /// The prompt that is chosen for the next dictation; stays chosen across restarts.
    std::optional<Uuid> selectedPromptID() const;
    void changePrompt(std::optional<Uuid> promptID);

private:
    Task<Result<TranscriptionData, SessionError>> recognize(std::filesystem::path recording,
                                                            std::function<void(double)> progress);
    Task<PipelineOutcome> process(TranscriptProcessingContext context);

    const EngineFactory m_engines;
    TranscriptProcessingService& m_pipeline;
    PersistentAppStorage& m_appStorage;
    const Logger m_logger;

    std::unique_ptr<TranscriptionService> m_service;
    Subscription m_serviceEvents;
    Observable<TranscriptionState> m_textEvent;
    bool m_isProcessingPrompt = false;
    std::optional<FileTranscriptionRequest> m_fileTranscriptionRequest;
};

} // namespace vocalith
