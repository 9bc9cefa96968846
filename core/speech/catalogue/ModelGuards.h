#pragma once

#include "base/Result.h"
#include "core/speech/catalogue/VoiceModelMetadata.h"

#include <filesystem>
#include <string>

namespace vocalith {

/// What the machine and its platform offer to the models that need something special.
struct PlatformTraits {
    bool intelProcessor = false;
    bool supportsQwen3 = false;
    bool supportsSpeechAnalyzer = false;
    bool operator==(const PlatformTraits&) const = default;
};

PlatformTraits currentPlatformTraits();

/// Why a model cannot be used here.
struct ModelRefusal {
    enum class Kind { parakeetV2OnIntel, qwen3NeedsNewerPlatform, speechAnalyzerNeedsNewerPlatform, filesMissing };
    Kind kind = Kind::filesMissing;
    std::string modelName;
    std::string fileName;               ///< what is missing
    std::filesystem::path modelsFolder; ///< where it belongs; empty when that is not known
    bool operator==(const ModelRefusal&) const = default;
};

/// The sentence that is shown to the user.
std::string userMessage(const ModelRefusal& refusal);

/// Whether the entry can be used: asked when it is selected and again when a session starts. `filesPresent` counts for
/// on-device entries only; `modelsFolder` goes into the refusal, for its text.
Result<void, ModelRefusal> checkModel(const VoiceModelMetadata& entry, const PlatformTraits& traits, bool filesPresent,
                                      const std::filesystem::path& modelsFolder = {});

} // namespace vocalith
