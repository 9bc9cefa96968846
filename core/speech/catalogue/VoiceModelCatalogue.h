#pragma once

#include "core/speech/catalogue/VoiceModelMetadata.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vocalith {

// The entries that are identified by a plain text. They come before a user's model file of the same name, which can
// still be chosen by its name with ".bin".
inline constexpr const char* kSpeechTranscriberID = "appleSpeechTranscriber";
inline constexpr const char* kSpeechAnalyzerID = "appleSpeechAnalyzer";
inline constexpr const char* kMistralID = "mistral";
inline constexpr const char* kVolcengineID = "volcengine";
inline constexpr const char* kCartesiaID = "cartesia";

/// All the voice models that the user can choose from, besides model files of their own. Made once by the composition;
/// never changes, so any thread may read it.
class VoiceModelCatalogue {
public:
    VoiceModelCatalogue();

    /// On-device models, online models, the platform's recognisers, own-key providers; in the order they are shown.
    const std::vector<VoiceModelMetadata>& entries() const { return m_entries; }
    std::vector<VoiceModelMetadata> entries(VoiceModelFamily ofFamily) const;
    /// `all` lists every entry.
    std::vector<VoiceModelMetadata> entries(VoiceModelCategory category) const;

    /// The entry of that identity, or nullptr: then it names a model file of the user.
    const VoiceModelMetadata* find(const TranscriptionModelID& modelId) const;

    /// The entry of that identity. What the catalogue does not know is a model file that the user placed in the models
    /// folder, identified by its file name with or without ".bin"; with the file's size the entry shows it.
    VoiceModelMetadata entry(const TranscriptionModelID& modelId,
                             std::optional<std::uint64_t> userFileSize = std::nullopt) const;

private:
    std::vector<VoiceModelMetadata> m_entries;
};

} // namespace vocalith
