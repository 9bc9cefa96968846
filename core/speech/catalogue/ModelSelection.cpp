#include "core/speech/catalogue/ModelSelection.h"

#include "core/speech/catalogue/VoiceModelCatalogue.h"

#include <utility>

namespace vocalith {

ModelSelection::ModelSelection(const VoiceModelCatalogue& catalogue, StoredModel& stored, PlatformTraits traits,
                               FindFiles findFiles)
    : m_catalogue(catalogue), m_stored(stored), m_traits(traits), m_findFiles(std::move(findFiles))
{}

Result<void, ModelRefusal> ModelSelection::select(const TranscriptionModelID& model)
{
    auto allowed = check(model);
    if (allowed)
        m_stored.set(model);
    return allowed;
}

Result<void, ModelRefusal> ModelSelection::check(const TranscriptionModelID& model) const
{
    const VoiceModelMetadata entry = m_catalogue.entry(model);
    const ModelFiles files = family(entry) == VoiceModelFamily::local ? m_findFiles(entry) : ModelFiles{};
    return checkModel(entry, m_traits, files.present, files.folder);
}

} // namespace vocalith
