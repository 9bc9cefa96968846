#include "core/speech/whisper/WhisperTranscriptionService.h"

#include "core/speech/AudioPieces.h"
#include "core/speech/ProgressOnMainThread.h"
#include "core/speech/whisper/ModelFileManager.h"

#include <fmt/format.h>

namespace vocalith {
namespace {

using Kind = TranscriptionError::Kind;

/// The worker's part of one recognition: owns what it works on, since the request may end before it.
struct WhisperRun {
    std::shared_ptr<WarmWhisperModel> model;
    WhisperSelection selection;
    const PCMConverter& converter;
    std::filesystem::path recording;
    std::function<void(double)> progress;
    Logger logger;

    Result<TranscriptionData, TranscriptionError> operator()(const StopToken& stop) const
    {
        const auto loaded = model->load(selection);
        if (!loaded)
            return failure(loaded.error());
        TranscriptionData transcript{selection.modelId, {}};
        const auto decode = [&](std::span<const float> samples, double start, const auto& pieceProgress) {
            return decodePiece(**loaded, samples, start, pieceProgress, stop, transcript);
        };
        const auto recognized =
            recognizeInPieces(converter, recording, selection.source, decode, progress, logger, stop);
        if (!recognized)
            return failure(recognized.error());
        if (transcript.segments.empty())
            return failure(TranscriptionError{Kind::noSpeech, {}});
        return transcript;
    }

private:
    static Result<void, TranscriptionError> decodePiece(WhisperCPPDependencyProtocol& whisperCPP,
                                                        std::span<const float> samples, double start,
                                                        const std::function<void(double)>& pieceProgress,
                                                        const StopToken& stop, TranscriptionData& transcript)
    {
        const std::stop_callback onStop(stop, [&whisperCPP] { whisperCPP.cancel(); });
        auto decoded = whisperCPP.transcribe(samples, [&](int percent) {
            if (stop.stop_requested()) // a stop that came just before the decode began
                whisperCPP.cancel();
            pieceProgress(percent / 100.0);
        });
        if (!decoded)
            return failure(std::move(decoded.error()));
        for (auto& segment : decoded->segments) {
            segment.start += start;
            segment.end += start;
            transcript.segments.push_back(std::move(segment));
        }
        return {};
    }
};

} // namespace

WhisperTranscriptionService::WhisperTranscriptionService(const PersistentAppStorage& appStorage,
                                                         const ModelFileManager& modelFileManager,
                                                         const PCMConverter& converter,
                                                         WhisperCPPFactory& whisperCPPType, Clock& clock, Logger logger)
    : m_appStorage(appStorage), m_modelFileManager(modelFileManager), m_converter(converter), m_clock(clock),
      m_logger(logger), m_model(std::make_shared<WarmWhisperModel>(whisperCPPType, std::move(logger))),
      m_idle(clock, kIdleTime, [this] { m_worker.post([model = m_model] { model->release(); }); })
{}

Result<WhisperSelection, TranscriptionError> WhisperTranscriptionService::select(const Request& request) const
{
    auto file = m_modelFileManager.locate(request.modelId);
    if (!file)
        return failure(std::move(file.error()));
    WhisperSelection selection{*std::move(file), request.modelId, request.source, readWhisperSettings(m_appStorage)};
    if (request.options.language) {
        const auto language = parseWhisperLanguage(*request.options.language);
        if (!language)
            return failure(TranscriptionError{Kind::languageUnknown, *request.options.language});
        selection.settings.whisperLanguage = *language;
    }
    return selection;
}

Task<Result<void, TranscriptionError>> WhisperTranscriptionService::prepare(Request request)
{
    auto selection = select(request);
    if (!selection)
        co_return failure(std::move(selection.error()));
    IdleRelease::Use use(m_idle);
    auto job = [model = m_model, chosen = *std::move(selection)](const StopToken&) -> Result<void, TranscriptionError> {
        const auto loaded = model->load(chosen);
        if (!loaded)
            return failure(loaded.error());
        return {};
    };
    auto outcome = co_await m_worker.run(std::move(job));
    if (!outcome)
        co_return failure(TranscriptionError{Kind::cancelled, {}});
    if (!m_model->isLoaded())
        use.nothingHeld();
    co_return *std::move(outcome);
}

Task<Result<TranscriptionData, TranscriptionError>>
WhisperTranscriptionService::transcribe(Request request, std::filesystem::path recording,
                                        TranscriptionService::ProgressHandler progress)
{
    auto selection = select(request);
    if (!selection)
        co_return failure(std::move(selection.error()));
    IdleRelease::Use use(m_idle);
    const auto begin = m_clock.instant();
    const auto handler = std::make_shared<TranscriptionService::ProgressHandler>(std::move(progress));
    WhisperRun run{m_model, *std::move(selection), m_converter, std::move(recording), onMainThread(handler), m_logger};
    auto outcome = co_await m_worker.run(std::move(run));
    if (!outcome)
        co_return failure(TranscriptionError{Kind::cancelled, {}});
    if (!m_model->isLoaded())
        use.nothingHeld();
    if (outcome->has_value())
        m_logger.info(fmt::format("Full transcription completed in {:.2f} s", toSeconds(m_clock.instant() - begin)));
    co_return *std::move(outcome);
}

} // namespace vocalith
