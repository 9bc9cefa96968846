#include "core/speech/LocalAudioTranscriptionService.h"

namespace vocalith {

Result<std::unique_ptr<TranscriptionService>, TranscriptionError>
LocalAudioTranscriptionService::create(const EngineRoute& route, const VoiceModelMetadata& entry,
                                       WhisperTranscriptionService& whisper, TranscriptionSource source,
                                       TranscriptionOptions options)
{
    if (const auto* local = std::get_if<LocalWhisperRoute>(&route)) {
        return std::make_unique<LocalAudioTranscriptionService>(
            whisper, WhisperTranscriptionService::Request{local->model, source, std::move(options)});
    }
    const bool isQwen3 = std::holds_alternative<LocalQwen3Route>(route);
    return failure(TranscriptionError{TranscriptionError::Kind::unavailable,
                                      "\"" + name(entry) + "\" cannot be used: this version has no " +
                                          (isQwen3 ? "Qwen3-ASR" : "Parakeet") +
                                          " runtime. Choose a Whisper model instead."});
}

LocalAudioTranscriptionService::LocalAudioTranscriptionService(WhisperTranscriptionService& whisper,
                                                               WhisperTranscriptionService::Request request)
    : m_whisper(whisper), m_request(std::move(request))
{}

Task<Result<void, TranscriptionError>> LocalAudioTranscriptionService::start()
{
    announceLoading(true);
    const auto prepared = co_await m_whisper.prepare(m_request);
    announceLoading(false);
    co_return prepared;
}

Task<Result<TranscriptionData, TranscriptionError>>
LocalAudioTranscriptionService::transcribe(std::filesystem::path recording, ProgressHandler progress)
{
    auto transcript = co_await m_whisper.transcribe(m_request, std::move(recording), std::move(progress));
    if (transcript)
        announceFinal(*transcript);
    co_return transcript;
}

} // namespace vocalith
