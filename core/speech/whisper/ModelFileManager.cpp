#include "core/speech/whisper/ModelFileManager.h"

#include "core/speech/catalogue/VoiceModelCatalogue.h"

#include <algorithm>

namespace vocalith {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kExtension = ".bin";

bool isFile(const fs::path& path)
{
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

/// The identifier may come from a settings file or a command line, and must not lead out of the folder.
bool isPlainName(const std::string& name)
{
    return !name.empty() && name.front() != '.' &&
           name.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos;
}

std::vector<std::string> userModels(const fs::path& folder)
{
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == kExtension && isFile(entry->path()))
            names.push_back(entry->path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

ModelFileManager::ModelFileManager(fs::path modelsFolder, const VoiceModelCatalogue& catalogue)
    : m_modelsFolder(std::move(modelsFolder))
{
    for (const auto& entry : catalogue.entries()) {
        if (const auto fileName = modelFileName(entry); fileName && isWhisperModel(entry))
            m_catalogue.push_back({id(entry), *fileName});
        if (const auto* name = std::get_if<std::string>(&id(entry)))
            m_takenNames.insert(*name);
    }
}

std::optional<fs::path> ModelFileManager::expectedFile(const TranscriptionModelID& modelId) const
{
    const auto found = std::find_if(m_catalogue.begin(), m_catalogue.end(),
                                    [&](const CatalogueFile& model) { return model.modelId == modelId; });
    if (found != m_catalogue.end())
        return m_modelsFolder / found->fileName;
    const auto* name = std::get_if<std::string>(&modelId);
    if (!name || !isPlainName(*name))
        return std::nullopt;
    return m_modelsFolder / (name->ends_with(kExtension) ? *name : *name + std::string(kExtension));
}

Result<fs::path, TranscriptionError> ModelFileManager::locate(const TranscriptionModelID& modelId) const
{
    auto file = expectedFile(modelId);
    if (!file || !isFile(*file))
        return failure(TranscriptionError{TranscriptionError::Kind::modelNotFound, toString(modelId)});
    return *std::move(file);
}

std::vector<TranscriptionModelID> ModelFileManager::presentModels() const
{
    std::vector<TranscriptionModelID> models;
    for (const auto& model : m_catalogue) {
        if (isFile(m_modelsFolder / model.fileName))
            models.push_back(model.modelId);
    }
    for (auto& name : userModels(m_modelsFolder)) {
        if (!isPlainName(name) || isOfCatalogue(name + std::string(kExtension)))
            continue;
        models.emplace_back(m_takenNames.contains(name) ? name + std::string(kExtension) : name);
    }
    return models;
}

bool ModelFileManager::isOfCatalogue(const std::string& fileName) const
{
    return std::any_of(m_catalogue.begin(), m_catalogue.end(),
                       [&](const CatalogueFile& model) { return model.fileName == fileName; });
}

} // namespace vocalith
