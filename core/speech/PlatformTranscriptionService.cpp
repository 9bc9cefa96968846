#include "core/speech/PlatformTranscriptionService.h"

namespace vocalith {

PlatformTranscriptionService::PlatformTranscriptionService(PlatformRecognitionEngine& engine,
                                                           PlatformRecognitionEngine::Request request)
    : m_engine(engine), m_request(std::move(request))
{}

Task<Result<void, TranscriptionError>> PlatformTranscriptionService::start()
{
    announceLoading(true);
    const auto prepared = co_await m_engine.prepare();
    announceLoading(false);
    co_return prepared;
}

Task<Result<TranscriptionData, TranscriptionError>>
PlatformTranscriptionService::transcribe(std::filesystem::path recording, ProgressHandler progress)
{
    auto transcript = co_await m_engine.transcribe(m_request, std::move(recording), std::move(progress));
    if (transcript)
        announceFinal(*transcript);
    co_return transcript;
}

} // namespace vocalith
