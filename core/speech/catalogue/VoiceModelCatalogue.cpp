#include "core/speech/catalogue/VoiceModelCatalogue.h"

#include "core/speech/catalogue/CatalogueTables_p.h"

#include <algorithm>
#include <iterator>

namespace vocalith {

namespace catalogue {

std::vector<VoiceModelCategory> categoriesOf(VoiceModelCategory familyCategory, unsigned strengths)
{
    std::vector<VoiceModelCategory> categories{VoiceModelCategory::all, familyCategory};
    if (strengths & kFast)
        categories.push_back(VoiceModelCategory::mostFast);
    if (strengths & kAccurate)
        categories.push_back(VoiceModelCategory::mostAccurate);
    if (strengths & kPunctuation)
        categories.push_back(VoiceModelCategory::punctuationSupport);
    if (strengths & kCaptions)
        categories.push_back(VoiceModelCategory::captionSupport);
    return categories;
}

} // namespace catalogue

VoiceModelCatalogue::VoiceModelCatalogue()
{
    const auto add = [this](auto models) {
        m_entries.insert(m_entries.end(), std::make_move_iterator(models.begin()),
                         std::make_move_iterator(models.end()));
    };
    add(catalogue::localModels());
    add(catalogue::onlineModels());
    add(catalogue::platformModels());
    add(catalogue::ownKeyProviders());
}

std::vector<VoiceModelMetadata> VoiceModelCatalogue::entries(VoiceModelFamily ofFamily) const
{
    std::vector<VoiceModelMetadata> chosen;
    std::ranges::copy_if(m_entries, std::back_inserter(chosen),
                         [ofFamily](const auto& entry) { return family(entry) == ofFamily; });
    return chosen;
}

std::vector<VoiceModelMetadata> VoiceModelCatalogue::entries(VoiceModelCategory category) const
{
    std::vector<VoiceModelMetadata> chosen;
    std::ranges::copy_if(m_entries, std::back_inserter(chosen), [category](const auto& entry) {
        return std::ranges::find(categories(entry), category) != categories(entry).end();
    });
    return chosen;
}

const VoiceModelMetadata* VoiceModelCatalogue::find(const TranscriptionModelID& modelId) const
{
    const auto found =
        std::ranges::find_if(m_entries, [&modelId](const auto& candidate) { return id(candidate) == modelId; });
    return found == m_entries.end() ? nullptr : &*found;
}

VoiceModelMetadata VoiceModelCatalogue::entry(const TranscriptionModelID& modelId,
                                              std::optional<std::uint64_t> userFileSize) const
{
    if (const auto* known = find(modelId))
        return *known;
    return catalogue::userModel(toString(modelId), userFileSize);
}

} // namespace vocalith
