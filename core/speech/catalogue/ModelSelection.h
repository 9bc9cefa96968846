#pragma once

#include "base/Result.h"
#include "core/speech/catalogue/ModelGuards.h"
#include "core/storage/settings/Setting.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace vocalith {

class VoiceModelCatalogue;

/// The user's choice of a voice model, for dictations or for files: one object a setting. Owned by the composition,
/// main thread. A model that cannot be used here is refused, and the choice stays as it was.
class ModelSelection {
public:
    struct ModelFiles {
        bool present = false;
        std::filesystem::path folder;
    };
    /// Looks for the files of an on-device entry.
    using FindFiles = std::function<ModelFiles(const VoiceModelMetadata& entry)>;
    using StoredModel = Setting<std::optional<TranscriptionModelID>>;

    /// The catalogue and the setting outlive this.
    ModelSelection(const VoiceModelCatalogue& catalogue, StoredModel& stored, PlatformTraits traits,
                   FindFiles findFiles);

    /// Nothing until a model was chosen.
    const std::optional<TranscriptionModelID>& selected() const { return m_stored.get(); }

    Result<void, ModelRefusal> select(const TranscriptionModelID& model);

    /// Whether the model can be used now: its files may have gone since it was selected.
    Result<void, ModelRefusal> check(const TranscriptionModelID& model) const;

private:
    const VoiceModelCatalogue& m_catalogue;
    StoredModel& m_stored;
    PlatformTraits m_traits;
    FindFiles m_findFiles;
};

} // namespace vocalith
