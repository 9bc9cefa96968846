#pragma once

#include "core/speech/PlatformRecognitionEngine.h"

namespace vocalith {

/// One dictation or file with the platform's recogniser: a light object in front of the engine that stays. Made by
/// `TranscriptionServiceProvider`; main thread; cancellation is the engine's.
class PlatformTranscriptionService final : public TranscriptionService {
public:
    PlatformTranscriptionService(PlatformRecognitionEngine& engine, PlatformRecognitionEngine::Request request);

    TranscriptionModelID modelId() const override { return m_request.modelId; }
    Task<Result<void, TranscriptionError>> start() override;
    Task<Result<TranscriptionData, TranscriptionError>> transcribe(std::filesystem::path recording,
                                                                   ProgressHandler progress) override;

private:
    PlatformRecognitionEngine& m_engine;
    PlatformRecognitionEngine::Request m_request;
};

} // namespace vocalith
