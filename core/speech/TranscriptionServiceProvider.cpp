#include "core/speech/TranscriptionServiceProvider.h"

#include "core/speech/LocalAudioTranscriptionService.h"
#include "core/speech/PlatformTranscriptionService.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"
#include "core/speech/whisper/ModelFileManager.h"

namespace vocalith {
namespace {

using Kind = TranscriptionError::Kind;

TranscriptionError unavailable(std::string sentence)
{
    return {Kind::unavailable, std::move(sentence)};
}

} // namespace

TranscriptionServiceProvider::TranscriptionServiceProvider(const VoiceModelCatalogue& catalogue,
                                                           const ModelFileManager& modelFileManager,
                                                           PlatformTraits traits, WhisperTranscriptionService& whisper,
                                                           PlatformRecognitionEngine& platform)
    : m_catalogue(catalogue), m_modelFileManager(modelFileManager), m_traits(traits), m_whisper(whisper),
      m_platform(platform)
{}

Result<std::unique_ptr<TranscriptionService>, TranscriptionError>
TranscriptionServiceProvider::service(const TranscriptionModelID& modelId, TranscriptionSource source,
                                      TranscriptionOptions options) const
{
    const auto entry = m_catalogue.entry(modelId);
    if (auto checked = check(entry, modelId); !checked)
        return failure(std::move(checked.error()));
    const auto route = engineRoute(entry, {});
    if (!route)
        return failure(unavailable(userMessage(route.error())));
    if (std::holds_alternative<PlatformRoute>(*route)) {
        return std::make_unique<PlatformTranscriptionService>(
            m_platform, PlatformRecognitionEngine::Request{modelId, source, std::move(options)});
    }
    if (std::holds_alternative<OnlineFileRoute>(*route) || std::holds_alternative<OnlineStreamingRoute>(*route)) {
        return failure(unavailable("\"" + name(entry) +
                                   "\" is an online model, which this version cannot use. Choose a model that runs on "
                                   "this computer."));
    }
    return LocalAudioTranscriptionService::create(*route, entry, m_whisper, source, std::move(options));
}

Result<void, TranscriptionError> TranscriptionServiceProvider::check(const VoiceModelMetadata& entry,
                                                                     const TranscriptionModelID& modelId) const
{
    auto file = m_modelFileManager.locate(modelId);
    if (!file && !m_catalogue.find(modelId))
        return failure(std::move(file.error()));
    const auto checked = checkModel(entry, m_traits, true);
    if (!checked)
        return failure(unavailable(userMessage(checked.error())));
    // The other runtimes' files do not matter as long as there is no runtime.
    if (!file && isWhisperModel(entry))
        return failure(std::move(file.error()));
    return {};
}

} // namespace vocalith
