#pragma once

#include "core/speech/TranscriptionService.h"
#include "core/speech/catalogue/EngineRoute.h"
#include "core/speech/whisper/WhisperTranscriptionService.h"

namespace vocalith {

/// One dictation or file with an on-device model: a light object in front of the engine that stays. Made by
/// `TranscriptionServiceProvider`; main thread; cancellation is the engine's.
class LocalAudioTranscriptionService final : public TranscriptionService {
public:
    /// The service for an on-device route of `entry`; `unavailable` for a model whose runtime this program has not.
    static Result<std::unique_ptr<TranscriptionService>, TranscriptionError>
    create(const EngineRoute& route, const VoiceModelMetadata& entry, WhisperTranscriptionService& whisper,
           TranscriptionSource source, TranscriptionOptions options);

    LocalAudioTranscriptionService(WhisperTranscriptionService& whisper, WhisperTranscriptionService::Request request);

    TranscriptionModelID modelId() const override { return m_request.modelId; }
    Task<Result<void, TranscriptionError>> start() override;
    Task<Result<TranscriptionData, TranscriptionError>> transcribe(std::filesystem::path recording,
                                                                   ProgressHandler progress) override;

private:
    WhisperTranscriptionService& m_whisper;
    WhisperTranscriptionService::Request m_request;
};

} // namespace vocalith
