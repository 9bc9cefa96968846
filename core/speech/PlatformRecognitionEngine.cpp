#include "core/speech/PlatformRecognitionEngine.h"

#include "core/speech/AudioPieces.h"
#include "core/speech/ProgressOnMainThread.h"
#include "core/speech/SpanSegments.h"
#include "models/WhisperLanguage.h"
#include "ports/SpeechRecognizer.h"

#include <fmt/format.h>

#include <iterator>

namespace vocalith {
namespace {

using Kind = TranscriptionError::Kind;

TranscriptionError recognitionFailed(const SpeechRecognizerError& error)
{
    switch (error.kind) {
    case SpeechRecognizerError::Kind::modelMissing:
    case SpeechRecognizerError::Kind::languageUnsupported: return {Kind::unavailable, userMessage(error)};
    case SpeechRecognizerError::Kind::failed: return {Kind::failed, userMessage(error)};
    case SpeechRecognizerError::Kind::cancelled: return {Kind::cancelled, {}};
    }
    return {};
}

/// The code of a language that was given as code or name; what is neither goes to the recogniser, which refuses it.
std::string languageCode(const TranscriptionOptions& options)
{
    const auto asked = options.language.value_or("auto");
    const auto known = parseWhisperLanguage(asked);
    return known ? std::string(rawValue(*known)) : asked;
}

/// The worker's part of one recognition: owns what it works on, since the request may end before it.
struct PlatformRun {
    SpeechRecognizer& recognizer;
    const PCMConverter& converter;
    PlatformRecognitionEngine::Request request;
    std::filesystem::path recording;
    std::function<void(double)> progress;
    Logger logger;

    Result<TranscriptionData, TranscriptionError> operator()(const StopToken& stop) const
    {
        if (const auto prepared = recognizer.prepare(); !prepared)
            return failure(recognitionFailed(prepared.error()));
        TranscriptionData transcript{request.modelId, {}};
        const auto language = languageCode(request.options);
        const auto recognizePiece = [&](std::span<const float> samples, double start,
                                        const auto& pieceProgress) -> Result<void, TranscriptionError> {
            const auto spans = recognizer.recognize(samples, language, pieceProgress, stop);
            if (!spans)
                return failure(recognitionFailed(spans.error()));
            auto segments = segmentsOf(*spans, start);
            std::move(segments.begin(), segments.end(), std::back_inserter(transcript.segments));
            return {};
        };
        const auto recognized =
            recognizeInPieces(converter, recording, request.source, recognizePiece, progress, logger, stop);
        if (!recognized)
            return failure(recognized.error());
        if (transcript.segments.empty())
            return failure(TranscriptionError{Kind::noSpeech, {}});
        return transcript;
    }
};

} // namespace

PlatformRecognitionEngine::PlatformRecognitionEngine(SpeechRecognizer& recognizer, const PCMConverter& converter,
                                                     Clock& clock, Logger logger)
    : m_recognizer(recognizer), m_converter(converter), m_clock(clock), m_logger(std::move(logger)),
      m_idle(clock, kIdleTime, [this] { m_worker.post([&recognizer = m_recognizer] { recognizer.release(); }); })
{}

Task<Result<void, TranscriptionError>> PlatformRecognitionEngine::prepare()
{
    IdleRelease::Use use(m_idle);
    auto job = [&recognizer = m_recognizer](const StopToken&) { return recognizer.prepare(); };
    const auto outcome = co_await m_worker.run(std::move(job));
    if (!outcome)
        co_return failure(TranscriptionError{Kind::cancelled, {}});
    if (*outcome)
        co_return Result<void, TranscriptionError>{};
    use.nothingHeld();
    co_return failure(recognitionFailed(outcome->error()));
}

Task<Result<TranscriptionData, TranscriptionError>>
PlatformRecognitionEngine::transcribe(Request request, std::filesystem::path recording,
                                      TranscriptionService::ProgressHandler progress)
{
    const IdleRelease::Use use(m_idle);
    const auto begin = m_clock.instant();
    const auto handler = std::make_shared<TranscriptionService::ProgressHandler>(std::move(progress));
    PlatformRun run{m_recognizer,         m_converter,           std::move(request),
                    std::move(recording), onMainThread(handler), m_logger};
    auto outcome = co_await m_worker.run(std::move(run));
    if (!outcome)
        co_return failure(TranscriptionError{Kind::cancelled, {}});
    if (outcome->has_value())
        m_logger.info(fmt::format("Full transcription completed in {:.2f} s", toSeconds(m_clock.instant() - begin)));
    co_return *std::move(outcome);
}

} // namespace vocalith
