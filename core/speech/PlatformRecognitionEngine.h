#pragma once

#include "base/Log.h"
#include "base/Worker.h"
#include "core/speech/IdleRelease.h"
#include "core/speech/TranscriptionService.h"
#include "models/TranscriptionSource.h"

namespace vocalith {

class PCMConverter;
class SpeechRecognizer;

/// Recognises recordings with the platform's own recogniser: one long-lived service, owned by the composition and used
/// on the main thread, which does its work on a worker thread of its own, one request after the other. What the
/// recogniser has loaded is freed after five minutes without a request. A request that is asked to stop ends at once.
class PlatformRecognitionEngine {
public:
    static constexpr Duration kIdleTime = std::chrono::minutes(5);

    struct Request {
        TranscriptionModelID modelId;
        TranscriptionSource source = TranscriptionSource::dictation;
        TranscriptionOptions options{};
    };

    /// The references outlive the service.
    PlatformRecognitionEngine(SpeechRecognizer& recognizer, const PCMConverter& converter, Clock& clock, Logger logger);

    Task<Result<void, TranscriptionError>> prepare();
    /// Recognises an audio or video file. A transcript without any text is the error `noSpeech`.
    Task<Result<TranscriptionData, TranscriptionError>> transcribe(Request request, std::filesystem::path recording,
                                                                   TranscriptionService::ProgressHandler progress);

private:
    SpeechRecognizer& m_recognizer;
    const PCMConverter& m_converter;
    Clock& m_clock;
    Logger m_logger;
    IdleRelease m_idle;
    Worker m_worker; // last: its jobs use what stands above
};

} // namespace vocalith
