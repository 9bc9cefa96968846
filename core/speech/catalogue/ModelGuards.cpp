#include "core/speech/catalogue/ModelGuards.h"

#include "core/speech/catalogue/VoiceModelCatalogue.h"

namespace vocalith {

namespace {

std::string filesMissingMessage(const ModelRefusal& refusal)
{
    const std::string folder =
        refusal.modelsFolder.empty() ? "the models folder" : "\"" + refusal.modelsFolder.string() + "\"";
    return "\"" + refusal.modelName + "\" is not on this computer. Download it, or place the file \"" +
           refusal.fileName + "\" in " + folder + ", then try again.";
}

} // namespace

PlatformTraits currentPlatformTraits()
{
#if defined(__x86_64__) || defined(__i386__)
    constexpr bool intel = true;
#else
    constexpr bool intel = false;
#endif
    return {.intelProcessor = intel, .supportsQwen3 = false, .supportsSpeechAnalyzer = false};
}

std::string userMessage(const ModelRefusal& refusal)
{
    using Kind = ModelRefusal::Kind;
    switch (refusal.kind) {
    case Kind::parakeetV2OnIntel:
        return "Parakeet V2 is not compatible with Intel Macs. Use Parakeet V3, Whisper, or online models instead.";
    case Kind::qwen3NeedsNewerPlatform: return "Qwen3-ASR requires macOS 15 or iOS 18";
    case Kind::speechAnalyzerNeedsNewerPlatform: return "Apple Speech Analyzer requires macOS 26 or iOS 26 or later";
    case Kind::filesMissing: return filesMissingMessage(refusal);
    }
    return {};
}

Result<void, ModelRefusal> checkModel(const VoiceModelMetadata& entry, const PlatformTraits& traits, bool filesPresent,
                                      const std::filesystem::path& modelsFolder)
{
    using Kind = ModelRefusal::Kind;
    const TranscriptionModelID& model = id(entry);
    ModelRefusal refusal{.kind = Kind::filesMissing,
                         .modelName = name(entry),
                         .fileName = modelFileName(entry).value_or(""),
                         .modelsFolder = modelsFolder};
    const auto refused = [&refusal](Kind kind) {
        refusal.kind = kind;
        return failure(refusal);
    };
    if (model == TranscriptionModelID(PredefinedModelID::parakeetTDT06V2) && traits.intelProcessor)
        return refused(Kind::parakeetV2OnIntel);
    const bool qwen3 = model == TranscriptionModelID(PredefinedModelID::qwen3ASR) ||
                       model == TranscriptionModelID(PredefinedModelID::qwen3ASRInt8);
    if (qwen3 && !traits.supportsQwen3)
        return refused(Kind::qwen3NeedsNewerPlatform);
    if (model == TranscriptionModelID(kSpeechAnalyzerID) && !traits.supportsSpeechAnalyzer)
        return refused(Kind::speechAnalyzerNeedsNewerPlatform);
    if (family(entry) == VoiceModelFamily::local && !filesPresent)
        return refused(Kind::filesMissing);
    return {};
}

} // namespace vocalith
