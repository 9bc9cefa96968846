#include "core/speech/catalogue/DefaultModelChoice.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace vocalith {

namespace {

/// The smaller, the better.
auto rank(const VoiceModelMetadata& entry)
{
    const auto& model = std::get<LocalTranscriptionModelMetadata>(entry);
    const int accuracy = model.metrics ? model.metrics->accuracy : 0;
    return std::tuple(-accuracy, isEnglishOnly(entry), model.sizeInBytes, model.id);
}

} // namespace

TranscriptionModelID dictationModel(const VoiceModelCatalogue& catalogue,
                                    const std::optional<TranscriptionModelID>& selection,
                                    const std::set<TranscriptionModelID>& present, const PlatformTraits& traits)
{
    if (selection && checkModel(catalogue.entry(*selection), traits, present.contains(*selection)))
        return *selection;
    std::vector<VoiceModelMetadata> candidates;
    for (const TranscriptionModelID& model : present) {
        if (VoiceModelMetadata entry = catalogue.entry(model); isWhisperModel(entry))
            candidates.push_back(std::move(entry));
    }
    const auto best = std::ranges::min_element(candidates, {}, rank);
    return best == candidates.end() ? TranscriptionModelID(kSpeechTranscriberID) : id(*best);
}

} // namespace vocalith
