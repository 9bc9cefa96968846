#include "core/speech/catalogue/CatalogueTables_p.h"
#include "core/speech/catalogue/VoiceModelCatalogue.h"

namespace vocalith::catalogue {

std::vector<AppleTranscriptionModelMetadata> platformModels()
{
    const VoiceModelAttribute nothingToDownload{"checkmark.circle", "No download"};
    return {
        {.id = kSpeechTranscriberID,
         .title = "Apple Speech Recognition",
         .description =
             "**The speech recogniser of this computer.** Works at once and offline, without a download. Writes "
             "plain words without punctuation.",
         .attributes = {nothingToDownload, languageChip(kEnglishOnly)},
         .categories = categoriesOf(VoiceModelCategory::localModels, kCaptions),
         .metrics = ModelMetrics{2, 8},
         .providerType = AIProviderType::apple},
        {.id = kSpeechAnalyzerID,
         .title = "Apple Speech Analyzer",
         .description = "**The newest speech recogniser of the platform**, made for long recordings. Works offline.",
         .attributes = {nothingToDownload, languageChip(kMultilingual)},
         .categories = categoriesOf(VoiceModelCategory::localModels, kPunctuation | kCaptions),
         .metrics = ModelMetrics{8, 8},
         .providerType = AIProviderType::apple},
    };
}

} // namespace vocalith::catalogue
