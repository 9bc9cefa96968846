#pragma once

#include "app/cli/ModelsCommand.h"
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

/// What can be said about the voice models on this machine. Main thread.
class ModelReport final : public Diagnostics {
public:
    ModelReport(const VoiceModelCatalogue& catalogue, const ModelFileManager& files, const SpeechRecognizer& recogniser,
                const PersistentAppStorage& appStorage, PlatformTraits traits);

    /// Every model, in the order of the catalogue, then the user's own files.
    std::vector<ModelRow> rows() const;
    /// The model that serves when none is named: the one in the settings, else the best that is there.
    TranscriptionModelID defaultModel(TranscriptionSource source) const;
    /// The model that `text` names: an identifier of the list, in any case, or a model file's name with or without
    /// ".bin".
    TranscriptionModelID named(const std::string& text) const;

    Task<std::vector<Finding>> examine() override;

private:
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
