#pragma once

#include "app/cli/models/ModelsCommand.h"
#include "core/speech/catalogue/ModelGuards.h"
#include "models/TranscriptionModelID.h"
#include "models/TranscriptionSource.h"
#include "ports/Diagnostics.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vocalith {

class ModelFileManager;
class PersistentAppStorage;
class SpeechRecognizer;
class VoiceModelCatalogue;

/// The voice models as one look at their folder has found them.
struct ModelSurvey {
    std::vector<ModelRow> rows;        ///< every model, in the order of the catalogue, then the user's own files
    TranscriptionModelID defaultModel; ///< that serves when none is named
};

/// What can be said about the voice models on this machine. Each call that says so looks at their folder once. Main
/// thread.
class ModelReport final : public Diagnostics {
public:
    ModelReport(const VoiceModelCatalogue& catalogue, const ModelFileManager& files, const SpeechRecognizer& recogniser,
                const PersistentAppStorage& appStorage, PlatformTraits traits);

    ModelSurvey survey() const;
    std::vector<ModelRow> rows() const { return survey().rows; }
    /// The model that serves when none is named: the one in the settings, else the best that is there.
    TranscriptionModelID defaultModel(TranscriptionSource source) const;
    /// The model that `text` names: an identifier of the list, in any case, or a model file's name with or without
    /// ".bin".
    TranscriptionModelID named(const std::string& text) const;

    Task<std::vector<Finding>> examine() override;

private:
    using Present = std::vector<TranscriptionModelID>;

    TranscriptionModelID defaultModel(TranscriptionSource source, const Present& present) const;
    TranscriptionModelID named(const std::string& text, const Present& present) const;
    ModelRow row(const VoiceModelMetadata& entry, const std::set<TranscriptionModelID>& present) const;
    std::optional<std::uint64_t> sizeOf(const TranscriptionModelID& model) const;
    std::string stateOf(const VoiceModelMetadata& entry, bool isPresent) const;

    const VoiceModelCatalogue& m_catalogue;
    const ModelFileManager& m_files;
    const SpeechRecognizer& m_recogniser;
    const PersistentAppStorage& m_appStorage;
    const PlatformTraits m_traits;
};

} // namespace vocalith
