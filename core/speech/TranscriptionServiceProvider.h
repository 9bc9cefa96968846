#pragma once

#include "core/speech/TranscriptionService.h"
#include "core/speech/catalogue/ModelGuards.h"
#include "models/TranscriptionSource.h"

#include <memory>

namespace vocalith {

class ModelFileManager;
class PlatformRecognitionEngine;
class VoiceModelCatalogue;
class WhisperTranscriptionService;

/// Makes the engine that the catalogue names for a voice model. Owned by the composition, main thread; what it is given
/// outlives it and the engines that it makes.
class TranscriptionServiceProvider {
public:
    TranscriptionServiceProvider(const VoiceModelCatalogue& catalogue, const ModelFileManager& modelFileManager,
                                 PlatformTraits traits, WhisperTranscriptionService& whisper,
                                 PlatformRecognitionEngine& platform);

    /// `modelNotFound` for a model that neither the catalogue nor the models folder knows, `unavailable` for one that
    /// cannot be used here and now.
    Result<std::unique_ptr<TranscriptionService>, TranscriptionError>
    service(const TranscriptionModelID& modelId, TranscriptionSource source, TranscriptionOptions options = {}) const;

private:
    Result<void, TranscriptionError> check(const VoiceModelMetadata& entry, const TranscriptionModelID& modelId) const;

    const VoiceModelCatalogue& m_catalogue;
    const ModelFileManager& m_modelFileManager;
    PlatformTraits m_traits;
    WhisperTranscriptionService& m_whisper;
    PlatformRecognitionEngine& m_platform;
};

} // namespace vocalith
