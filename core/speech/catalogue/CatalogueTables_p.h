#pragma once

#include "core/speech/catalogue/VoiceModelMetadata.h"

#include <string_view>

/// The rows that `VoiceModelCatalogue` is made of, one function a family, and what the tables share.
namespace vocalith::catalogue {

std::vector<LocalTranscriptionModelMetadata> localModels();
std::vector<OnlineTranscriptionModelMetadata> onlineModels();
std::vector<AppleTranscriptionModelMetadata> platformModels();
std::vector<BYOKVoiceModelMetadata> ownKeyProviders();

/// The entry of a model file that the user placed in the models folder; its identifier is the file's name, with or
/// without ".bin".
LocalTranscriptionModelMetadata userModel(const std::string& identifier, std::optional<std::uint64_t> sizeInBytes);

/// The name in the models folder, unique among all entries; nothing for a model that does not run here.
std::optional<std::string> localFileName(PredefinedModelID id);
/// Always the name of a ".bin" file in the models folder itself, whatever the identifier holds.
std::string userModelFileName(const std::string& identifier);

/// What a model is good at, for the filter chips.
enum Strength : unsigned { kFast = 1, kAccurate = 2, kPunctuation = 4, kCaptions = 8 };
/// `all`, the family's own category, then those of the strengths.
std::vector<VoiceModelCategory> categoriesOf(VoiceModelCategory familyCategory, unsigned strengths);

inline constexpr const char* kEnglishOnly = "English only";
inline constexpr const char* kMultilingual = "Multilingual";
inline VoiceModelAttribute languageChip(const char* languages)
{
    return {"globe", languages};
}

inline std::optional<std::string> textOrNone(const char* text)
{
    return text ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace vocalith::catalogue
