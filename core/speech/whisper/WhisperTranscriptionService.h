#pragma once

#include "base/Worker.h"
#include "core/speech/IdleRelease.h"
#include "core/speech/whisper/WarmWhisperModel.h"

namespace vocalith {

class ModelFileManager;
class PCMConverter;
class PersistentAppStorage;

/// Recognises recordings with whisper model files: one long-lived service, owned by the composition and used on the
/// main thread, which does its work on a worker thread of its own, one request after the other. It keeps the model of
/// the last request loaded, replaces it when the model, a setting or the source changes, and frees it after five
/// minutes without a request. A request that is asked to stop ends at once with `cancelled`; the library returns to the
/// worker a little later, and the next request waits there for it.
class WhisperTranscriptionService {
public:
    static constexpr Duration kIdleTime = std::chrono::minutes(5);

    struct Request {
        TranscriptionModelID modelId;
        TranscriptionSource source = TranscriptionSource::dictation;
        TranscriptionOptions options{};
    };

    /// The references outlive the service.
    WhisperTranscriptionService(const PersistentAppStorage& appStorage, const ModelFileManager& modelFileManager,
                                const PCMConverter& converter, WhisperCPPFactory& whisperCPPType, Clock& clock,
                                Logger logger);

    /// Loads the request's model, unless it is loaded.
    Task<Result<void, TranscriptionError>> prepare(Request request);
    /// Recognises an audio or video file. A transcript without any text is the error `noSpeech`.
    Task<Result<TranscriptionData, TranscriptionError>> transcribe(Request request, std::filesystem::path recording,
                                                                   TranscriptionService::ProgressHandler progress);

private:
    Result<WhisperSelection, TranscriptionError> select(const Request& request) const;

    const PersistentAppStorage& m_appStorage;
    const ModelFileManager& m_modelFileManager;
    const PCMConverter& m_converter;
    Clock& m_clock;
    Logger m_logger;
    std::shared_ptr<WarmWhisperModel> m_model;
    IdleRelease m_idle;
    Worker m_worker; // last: its jobs use what stands above
};

} // namespace vocalith
