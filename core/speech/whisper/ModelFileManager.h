#pragma once

#include "core/speech/TranscriptionService.h"
#include "models/TranscriptionModelID.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vocalith {

class VoiceModelCatalogue;

/// Finds model files in the models folder: those of the catalogue by their file names, and any other file "*.bin" there
/// as the user's own model, whose identifier is the file's name, with or without the extension; always with it where
/// the bare name is an entry of the catalogue. Owned by the composition, main thread; the calls look at the folder only
/// and never open a file.
class ModelFileManager {
public:
    ModelFileManager(std::filesystem::path modelsFolder, const VoiceModelCatalogue& catalogue);

    const std::filesystem::path& modelsFolder() const { return m_modelsFolder; }
    void setModelsFolder(std::filesystem::path folder) { m_modelsFolder = std::move(folder); }

    /// Where the model's file lies, present or not. Nothing for an identifier that cannot be a file's name in the
    /// models folder, and for a model of the catalogue that is no such file.
    std::optional<std::filesystem::path> expectedFile(const TranscriptionModelID& modelId) const;

    /// The model's file, or `modelNotFound`.
    Result<std::filesystem::path, TranscriptionError> locate(const TranscriptionModelID& modelId) const;

    /// Those of the catalogue in its order, then the user's own by name. A folder that cannot be read holds none.
    std::vector<TranscriptionModelID> presentModels() const;

private:
    struct CatalogueFile {
        TranscriptionModelID modelId;
        std::string fileName;
    };

    bool isOfCatalogue(const std::string& fileName) const;

    std::filesystem::path m_modelsFolder;
    std::vector<CatalogueFile> m_catalogue;
    std::set<std::string> m_takenNames; ///< the catalogue's identifiers that could be names of files
};

} // namespace vocalith
